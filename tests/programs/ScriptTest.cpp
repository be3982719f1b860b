#include "programs/Program.h"
#include "support/Places.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

/// A script of the repository in a tree of its own, where nothing has to be built. It sees the
/// machine's programs, but mawk as its awk.
class Checkout {
public:
    explicit Checkout(const std::string& script) : name(script) {
        fs::copy_file(sourceFile(script), folder.file(script));
        addScript("cmake/install-packages", "exit 0");
        addScript("bin/cmake", "exit 0");
        fs::create_symlink("/usr/bin/mawk", folder.file("bin/awk"));
    }
    void addScript(const std::string& path, const std::string& lines) const {
        fs::create_directories(folder.path / fs::path(path).parent_path());
        writeFile(folder.file(path), "#!/bin/sh\n" + lines + "\n");
        fs::permissions(folder.file(path), fs::perms::owner_all);
    }
    std::vector<std::string> command() const {
        return {"env", "-u", "DISPLAY", "PATH=" + folder.file("bin") + ":/usr/bin:/bin",
                folder.file(name)};
    }
    std::string file(const std::string& path) const { return folder.file(path); }

private:
    const TempFolder folder;
    const std::string name;
};

} // namespace

/// Without a display the demo song is rendered (here its first bars), and a line tells how it went.
TEST(Scripts, RunRendersWithoutDisplay) {
    const Checkout tree("run");
    tree.addScript("build/release/bin/sondrava-render",
                   "exec " + builtFile("bin/sondrava-render") + " --length 7680 \"$@\"");
    Program run(tree.command());
    EXPECT_EQ(run.wait(), 0) << run.err();
    EXPECT_EQ(run.err(), "");
    const Wav song(tree.file("demosong.wav"));
    float seconds = 0.0f, level = 0.0f;
    int speed = 0;
    const std::string out = run.out();
    const size_t line = out.find("demosong.wav:");
    ASSERT_NE(line, std::string::npos) << out;
    EXPECT_EQ(std::sscanf(out.c_str() + line,
                          "demosong.wav: %f s, peak %f dBFS, rendered %d times faster", &seconds,
                          &level, &speed),
              3)
        << out;
    EXPECT_NEAR(double(seconds), double(song.frames) / song.rate, 0.05);
    EXPECT_NEAR(double(level), 20 * std::log10(song.peak), 0.06);
    EXPECT_GT(speed, 0);
}

/// A program that the system cannot load ends the tests before the first has run.
TEST(Scripts, TestStopsAtProgramThatDoesNotStart) {
    const Checkout tree("test");
    const std::string passes = "echo '[  PASSED  ] 2 tests.'\n[ \"$1\" = --gtest_list_tests ] || "
                               "touch " +
                               tree.file("ran");
    tree.addScript("build/debug/tests/a_tests", passes);
    tree.addScript("build/debug/tests/b_tests", "echo cannot load >&2\nexit 127");
    Program broken(tree.command());
    EXPECT_EQ(broken.wait(), 1);
    EXPECT_NE(broken.err().find("b_tests does not start:\ncannot load"), std::string::npos)
        << broken.err();
    EXPECT_FALSE(fs::exists(tree.file("ran")));
    tree.addScript("build/debug/tests/b_tests", passes);
    Program whole(tree.command());
    EXPECT_EQ(whole.wait(), 0) << whole.err();
    EXPECT_NE(whole.out().find("4 passed, 0 failed"), std::string::npos) << whole.out();
}
