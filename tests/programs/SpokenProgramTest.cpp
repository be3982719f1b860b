#include "programs/Installation.h"
#include "support/Places.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

/// A session bus with the switch for assistive technology on it.
class Session {
public:
    Session() {
        comes([this] { return bus.out().find('\n') != std::string::npos || !bus.running(); });
        address.emplace("DBUS_SESSION_BUS_ADDRESS", bus.out().substr(0, bus.out().find('\n')));
        launcher.emplace(std::vector<std::string>{"/usr/libexec/at-spi-bus-launcher",
                                                  "--launch-immediately", "--a11y=1"});
    }

    ~Session() {
        launcher->signal(SIGTERM); // it then ends the bus that it has started
        launcher->wait();
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

private:
    Program bus{{"dbus-daemon", "--session", "--nofork", "--print-address"}};
    std::optional<Variable> address;
    std::optional<Program> launcher;
};

} // namespace

/// A song is made, recorded, mixed, saved and exported by what a screen reader can see and do. Run
/// by
/// `./test --spoken`: it takes a desktop's own servers and some twenty seconds.
TEST(SpokenProgram, DISABLED_MakesASongWithoutKeysOrPointer) {
    const Session session;
    const ScreenServer screen;
    const Installation installed;
    Program program({installed.program()});
    Program user(
        {"/usr/bin/python3", sourceFile("tests/programs/make_song.py"), installed.file("")});
    EXPECT_EQ(user.wait(), 0) << user.out() << user.err();
    EXPECT_NE(user.out().find("done"), std::string::npos) << user.out();
    EXPECT_EQ(program.wait(), 0) << program.err();
    EXPECT_GT(std::filesystem::file_size(installed.file("spoken.qv")), 0U);
    const Wav song(installed.file("spoken.wav"));
    EXPECT_GT(song.frames, 0);
}
