#include "MainFixture.h"

#include "engine/CUndo.h"
#include "gui/controls/CEdit.h"
#include "gui/controls/CValue.h"
#include "shell/Rooms.h"
#include "surfaces/OscPort.h"

#include <arpa/inet.h>
#include <cmath>
#include <limits>
#include <map>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// A datagram socket of this machine, as a program that does not keep to the protocol has it.
class Socket {
public:
    Socket() : fd(socket(AF_INET, SOCK_DGRAM, 0)) {}
    ~Socket() { close(fd); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    /// A port that is free once this object is gone.
    int takePort() {
        at.sin_addr.s_addr = htonl(INADDR_ANY);
        socklen_t size = sizeof at;
        EXPECT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&at), size), 0);
        EXPECT_EQ(getsockname(fd, reinterpret_cast<sockaddr*>(&at), &size), 0);
        return ntohs(at.sin_port);
    }
    void send(int port, const std::string& bytes) {
        at.sin_port = htons(uint16_t(port));
        at.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        sendto(fd, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&at), sizeof at);
    }

private:
    int fd;
    sockaddr_in at{AF_INET, 0, {}, {}};
};

int freePort() {
    return Socket().takePort();
}

class OscTest : public MainWinTest {
protected:
    void SetUp() override {
        MainWinTest::SetUp();
        start();
        ASSERT_TRUE(load(kindDemo));
        osc = std::make_unique<Osc>(
            host.get(), Osc::Ways{[] { return static_cast<CComp*>(nullptr); },
                                  [this](const std::string& name) { actions.push_back(name); }});
    }
    COutputChannel* strip(int i) { return surfaceStrips(host.get())[size_t(i)].channel; }
    /// What an idle pass tells.
    std::map<std::string, OscValue> tells() {
        std::map<std::string, OscValue> all;
        osc->idle([&](const std::string& path, const OscValue& value) { all[path] = value; });
        return all;
    }
    std::unique_ptr<Osc> osc;
    std::vector<std::string> actions;
};

} // namespace

/// Each address sets what it is called after, a turn is one step of Undo, and nonsense nothing.
TEST_F(OscTest, MessagesSetWhatTheySay) {
    COutputChannel* kit = strip(0);
    const float before = kit->vol;
    for (int i = 0; i <= 50; i++) osc->receive("/strip/1/volume", {i / 100.0});
    EXPECT_EQ(kit->vol, 0.5f);
    osc->receive("/strip/1/pan", {-2.0});
    EXPECT_EQ(kit->pan, -1.0f) << "at its end";
    ASSERT_TRUE(pumpUntil([this] { return host->undoIndex >= 1; }));
    key("ctrl+z");
    ASSERT_TRUE(pumpUntil([&] { return kit->pan == 0.0f; }));
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return kit->vol == before; })) << "one step for all of the turn";
    osc->receive("/strip/2/mute", {1});
    osc->receive("/strip/3/solo", {});
    osc->receive("/strip/2/select", {1});
    osc->receive("/strip/1/arm", {1});
    osc->receive("/main/param/2", {1.0});
    osc->receive("/tempo", {93.0});
    osc->receive("/position", {8.0});
    osc->receive("/action/undo", {1});
    osc->receive("/action/redo", {0});
    EXPECT_TRUE(strip(1)->mute && strip(2)->solo);
    EXPECT_EQ(seq()->selection.tracks.getFirst(), seq()->getProg()->tracks.items(1));
    EXPECT_TRUE(seq()->getProg()->tracks.items(0)->track->recArm);
    EXPECT_EQ(host->getAudioOut()->output()->pan, 1.0f);
    EXPECT_TRUE(pumpUntil([this] { return seq()->getPos() == 7680.0; }));
    EXPECT_EQ(actions, std::vector<std::string>{"undo"}) << "and not where a button is let go";
    osc->receive("/play", {0});
    EXPECT_FALSE(host->playing);
    osc->receive("/play", {1});
    EXPECT_TRUE(pumpUntil([this] { return host->playing != 0; }));
    const int changes = int(host->changes);
    for (const char* path :
         {"", "/", "strip", "/strip", "/strip/0/volume", "/strip/99/mute", "/strip/1e9/mute",
          "/strip/1/param/999", "/strip/-1/pan", "/param/x", "/nothing/at/all"})
        osc->receive(path, {1});
    osc->receive("/strip/1/volume", {std::numeric_limits<double>::quiet_NaN()});
    EXPECT_EQ(int(host->changes), changes);
}

/// All is told once, then what changes, but not to the hand that has just moved it.
TEST_F(OscTest, ChangesAreTold) {
    std::map<std::string, OscValue> all = tells(), more = tells();
    EXPECT_LE(all.size(), Osc::mostTold);
    all.merge(more);
    EXPECT_EQ(all["/strip/1/name"], OscValue("Kit"));
    EXPECT_EQ(all["/strip/1/volume"], OscValue(strip(0)->vol.load()));
    EXPECT_EQ(all["/strips"], OscValue(int(surfaceStrips(host.get()).size())));
    EXPECT_TRUE(tells().empty());
    strip(1)->toggleMute();
    EXPECT_EQ(tells(), (std::map<std::string, OscValue>{{"/strip/2/mute", 1}}));
    osc->receive("/strip/1/volume", {0.25});
    EXPECT_FALSE(tells().contains("/strip/1/volume"));
    EXPECT_TRUE(pumpUntil([this] { return tells().contains("/strip/1/volume"); })) << "later";
    osc->receive("/refresh", {});
    EXPECT_GT(tells().size(), 50u);
}

/// Ports that the window is told carry it by UDP, beside packets that are none; what floods is
/// dropped and holds up nothing.
TEST_F(OscTest, GoesOverTheNetwork) {
    const int in = freePort(), out = freePort();
    OscPort device;
    ASSERT_TRUE(device.listen(out));
    ASSERT_TRUE(device.sendTo(("127.0.0.1:" + std::to_string(in)).c_str()));
    for (const char* bad : {"a.host:9", "127.0.0.1", "127.0.0.1:0", ":9000", "1.2.3.4:99999"})
        EXPECT_FALSE(OscPort().sendTo(bad)) << bad;
    SurfacesRoom& room = win->rooms->surfaces;
    EXPECT_TRUE(room.setOscPort(in).empty());
    EXPECT_FALSE(room.setOscPort(out).empty()) << "another program has it";
    EXPECT_TRUE(room.setOscPort(in).empty());
    EXPECT_TRUE(room.setOscTarget(("localhost:" + std::to_string(out)).c_str()).empty());
    Socket junk;
    for (const char* bytes : {"", "x", "/strip/1/volume", "#bundle", "/a\0\0,ffff"})
        junk.send(in, bytes);
    for (int i = 0; i < 5000; i++) device.send("/main/volume", float(i) / 5000.0f);
    device.send("/strip/1/volume", 0.75f);
    std::map<std::string, double> heard;
    EXPECT_TRUE(pumpUntil([&] {
        device.send("/strip/1/volume", 0.75f);
        device.serve([&](const std::string& path, const std::vector<double>& numbers) {
            if (!numbers.empty()) heard[path] = numbers[0];
        });
        return strip(0)->vol == 0.75f && heard.contains("/main/meter") && heard.contains("/tempo");
    }));
}
