#include "programs/Installation.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <set>
#include <utility>

// Behind GoogleTest, since its macros take common names.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

constexpr const char* title = "Sondrava2.0 - alpha";

/// A rectangle of the window, from its left or, if negative, right edge.
struct Area {
    int x, y, width, height;
};
constexpr Area masterMeter = {-211, 68, 202, 13};
constexpr Area position = {303, 51, 148, 48};
constexpr Area wholeBar = {0, 46, 700, 56};

/// What a user sees of the program on a screen.
class Desk {
public:
    Desk() { display = XOpenDisplay(nullptr); }
    ~Desk() {
        if (display) XCloseDisplay(display);
    }
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    /// Waits for the window, drawn and with the focus. Its first pictures come in pieces.
    bool findWindow() {
        Program search({"xdotool", "search", "--sync", "--onlyvisible", "--name", title});
        if (!display || search.wait() != 0) return false;
        window = std::stoul(search.out());
        XSetInputFocus(display, window, RevertToPointerRoot, CurrentTime);
        XSync(display, False);
        std::vector<unsigned long> last;
        int same = 0;
        return comes([&] {
            auto now = look(wholeBar);
            same = now == last && std::set(now.begin(), now.end()).size() > 4 ? same + 1 : 0;
            last = std::move(now);
            return same > 50;
        });
    }
    static void key(const char* name) { EXPECT_EQ(runCommand({"xdotool", "key", name}), 0); }
    void closeWindow() const {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
        event.xclient.format = 32;
        event.xclient.data.l[0] = long(XInternAtom(display, "WM_DELETE_WINDOW", False));
        XSendEvent(display, window, False, NoEventMask, &event);
        XSync(display, False);
    }
    /// The pixels of a part of the window.
    std::vector<unsigned long> look(const Area& area) const {
        XWindowAttributes all;
        XGetWindowAttributes(display, window, &all);
        const int x = area.x < 0 ? all.width + area.x : area.x;
        XImage* image = XGetImage(display, window, x, area.y, unsigned(area.width),
                                  unsigned(area.height), AllPlanes, ZPixmap);
        std::vector<unsigned long> pixels;
        for (int i = 0; image && i < area.width * area.height; i++)
            pixels.push_back(XGetPixel(image, i % area.width, i / area.width));
        if (image) XDestroyImage(image);
        return pixels;
    }

private:
    const ScreenServer screen;
    Display* display = nullptr;
    Window window = 0;
};

} // namespace

/// The keys of the transport reach the engine, and what it does reaches the window, which begins in
/// the middle four fifths of the screen.
TEST(WindowProgram, PlaysRewindsAndKeepsItsPlace) {
    const Installation installed;
    Desk desk;
    Program program({installed.program()});
    ASSERT_TRUE(desk.findWindow()) << program.err();
    const auto silence = desk.look(masterMeter), start = desk.look(position);
    desk.key("space");
    EXPECT_TRUE(comes([&] { return desk.look(masterMeter) != silence; })) << "nothing sounds";
    EXPECT_TRUE(comes([&] { return desk.look(position) != start; })) << "it stands still";
    desk.key("space");
    desk.key("Home");
    EXPECT_TRUE(comes([&] { return desk.look(position) == start; })) << "not at the start";
    EXPECT_TRUE(program.running());
    const std::string loaded = contentOf("/proc/" + std::to_string(program.id()) + "/maps");
    EXPECT_EQ(loaded.find("libatk"), std::string::npos) << "nobody listens to it";
    desk.closeWindow();
    EXPECT_EQ(program.wait(), 0) << program.err();
    EXPECT_EQ(program.err(), "");
    const std::string ini = contentOf(installed.settings());
    for (const char* line : {"[editor]", "left=120", "top=80", "width=960", "height=640"})
        EXPECT_NE(ini.find(line), std::string::npos) << line << " in\n" << ini;
}

TEST(WindowProgram, SaysThatThereIsNoDisplay) {
    const Installation installed;
    unsetenv("DISPLAY");
    Program program({installed.program()});
    EXPECT_EQ(program.wait(), 1);
    const std::string line = program.err();
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
    EXPECT_NE(line.find("display"), std::string::npos) << line;
    EXPECT_EQ(contentOf(installed.settings()), "[options]\nstartwith=2\n");
}

/// What needs no window opens none.
TEST(WindowProgram, AnswersOnTheTerminal) {
    const Installation installed;
    unsetenv("DISPLAY");
    Program version({installed.program(), "--version"}),
        strange({installed.program(), "--strange"});
    EXPECT_EQ(version.wait(), 0);
    EXPECT_EQ(version.out().rfind("Sondrava ", 0), 0u) << version.out();
    EXPECT_EQ(strange.wait(), 1);
    EXPECT_EQ(strange.err(), "sondrava: unknown option --strange\n");
}

/// With a JACK server the song goes to its first speaker, in blocks as long as the settings say.
TEST(WindowProgram, PlaysIntoJack) {
    const JackServer jack;
    const Installation installed;
    installed.set("[audio]\nbuffersize=128\nsamplerate=44100\n");
    Desk desk;
    Program program({installed.program()});
    ASSERT_TRUE(desk.findWindow()) << program.err();
    const auto silence = desk.look(masterMeter);
    desk.key("space");
    EXPECT_TRUE(comes([&] { return desk.look(masterMeter) != silence; })) << "nothing sounds";
    Program speaker({"jack_lsp", "-c", "system:playback_1"}), block({"jack_bufsize"});
    EXPECT_EQ(speaker.wait() + block.wait(), 0);
    EXPECT_NE(speaker.out().find("\n   "), std::string::npos) << "nothing is joined to it";
    EXPECT_EQ(block.out(), "128\n");
    desk.closeWindow();
    EXPECT_EQ(program.wait(), 0);
}
