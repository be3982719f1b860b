#include "programs/Program.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <jack/jack.h>
#include <memory>
#include <unistd.h>
#include <utility>

// Behind GoogleTest, since its macros take common names.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

constexpr const char* title = "Sondrava2.0 - alpha";

/// The program and its driver module in a folder of their own, with a home beside it.
class Installation {
public:
    Installation() {
        for (const char* name : {"sondrava", "libaam.so"})
            std::filesystem::copy_file(std::string(SONDRAVA_BIN "/") + name, folder.file(name));
        setenv("HOME", folder.file("home").c_str(), 1);
        set("");
    }
    /// The settings: the last project or, without one, the demo song, and what else is given.
    void set(const std::string& more) const {
        writeFile(settings(), "[options]\nstartwith=2\n" + more);
    }
    std::string program() const { return folder.file("sondrava"); }
    std::string settings() const { return folder.file("Sondrava.ini"); }

private:
    const TempFolder folder;
};

/// A rectangle of the window, from its left or, if negative, right edge.
struct Area {
    int x, y, width, height;
};
constexpr Area masterMeter = {-211, 68, 202, 13};
constexpr Area position = {303, 51, 148, 48};
constexpr Area wholeBar = {0, 46, 700, 56};

/// An X server without a window manager, and what a user sees of the program on it.
class Desk {
public:
    Desk() {
        waitFor([&] { return server.out().find('\n') != std::string::npos || !server.running(); });
        const std::string name = ":" + server.out().substr(0, server.out().find('\n'));
        setenv("DISPLAY", name.c_str(), 1);
        display = XOpenDisplay(name.c_str());
    }
    ~Desk() {
        if (display) XCloseDisplay(display);
    }
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    /// Waits for the window, drawn and with the focus.
    bool findWindow() {
        if (!display || !waitFor([&] { return (window = search()) != 0; })) return false;
        XSetInputFocus(display, window, RevertToPointerRoot, CurrentTime);
        XSync(display, False);
        return waitFor([&] { return colours(wholeBar) > 4; }) && waitSteady();
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
    Window search() const {
        Window root = DefaultRootWindow(display), parent = 0, *children = nullptr, found = 0;
        unsigned count = 0;
        XQueryTree(display, root, &root, &parent, &children, &count);
        for (unsigned i = 0; i < count; i++) {
            char* name = nullptr;
            XWindowAttributes all;
            const bool named = XFetchName(display, children[i], &name) && name;
            if (named && std::string(name).starts_with(title) &&
                XGetWindowAttributes(display, children[i], &all) && all.map_state == IsViewable)
                found = children[i];
            if (name) XFree(name);
        }
        if (children) XFree(children);
        return found;
    }
    /// The first pictures of the window come in pieces.
    bool waitSteady() const {
        auto last = look(wholeBar);
        int same = 0;
        return waitFor([&] {
            auto now = look(wholeBar);
            same = now == last ? same + 1 : 0;
            last = std::move(now);
            return same > 50;
        });
    }
    size_t colours(const Area& area) const {
        std::vector<unsigned long> pixels = look(area);
        std::sort(pixels.begin(), pixels.end());
        return size_t(std::unique(pixels.begin(), pixels.end()) - pixels.begin());
    }

    Program server{
        {"Xvfb", "-displayfd", "1", "-screen", "0", "1200x800x24", "-nolisten", "tcp", "-noreset"}};
    Display* display = nullptr;
    Window window = 0;
};

/// A JACK server that waits for its clients, so that a busy machine makes no holes by itself.
class PatientServer {
public:
    PatientServer() {
        setenv("JACK_DEFAULT_SERVER", name.c_str(), 1);
        jack_set_error_function([](const char*) {});
        jack_set_info_function([](const char*) {});
        child = std::make_unique<Child>(
            std::vector<std::string>{"jackd", "-S", "-t", "10000", "-r", "-n", name, "-d", "dummy",
                                     "-r", "44100", "-p", "256", "-C", "2", "-P", "2"});
        up = waitFor([] {
            jack_client_t* client = jack_client_open("probe", JackNoStartServer, nullptr);
            if (client) jack_client_close(client);
            return client != nullptr;
        });
    }
    bool up = false;

private:
    const std::string name = "sondrava-programs-" + std::to_string(getpid());
    std::unique_ptr<Child> child;
};

/// Listens to what arrives at the server's speakers.
class Listener {
public:
    explicit Listener(size_t frames) : heard(frames) {
        client = jack_client_open("listener", JackNoStartServer, nullptr);
        port = jack_port_register(client, "in", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
        const auto block = [](jack_nframes_t n, void* self) {
            static_cast<Listener*>(self)->take(n);
            return 0;
        };
        jack_set_process_callback(client, block, this);
        jack_activate(client);
    }
    ~Listener() { jack_client_close(client); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// Joins whatever plays into the first speaker.
    bool join() const {
        jack_port_t* speaker = jack_port_by_name(client, "system:playback_1");
        const char** sources = jack_port_get_all_connections(client, speaker);
        if (!sources) return false;
        const bool joined = jack_connect(client, sources[0], jack_port_name(port)) == 0;
        jack_free(sources);
        return joined;
    }
    jack_nframes_t blockFrames() const { return jack_get_buffer_size(client); }
    bool full() const { return used >= heard.size(); }
    std::vector<float> heard; ///< from the first sound on

private:
    void take(jack_nframes_t n) {
        const auto* in = static_cast<const float*>(jack_port_get_buffer(port, n));
        for (jack_nframes_t i = 0; i < n && used < heard.size(); i++)
            if (used > 0 || in[i] != 0.0f) heard[used++] = in[i];
    }
    std::atomic<size_t> used{0};
    jack_client_t* client;
    jack_port_t* port;
};

} // namespace

/// The keys of the transport reach the engine, and what it does reaches the window.
TEST(WindowProgram, PlaysRewindsAndKeepsItsPlace) {
    const Installation installed;
    Desk desk;
    Program program({installed.program()});
    ASSERT_TRUE(desk.findWindow()) << program.err();
    const auto silence = desk.look(masterMeter), start = desk.look(position);
    desk.key("space");
    EXPECT_TRUE(waitFor([&] { return desk.look(masterMeter) != silence; })) << "nothing sounds";
    EXPECT_TRUE(waitFor([&] { return desk.look(position) != start; })) << "it stands still";
    desk.key("space");
    desk.key("Home");
    EXPECT_TRUE(waitFor([&] { return desk.look(position) == start; })) << "not at the start";
    EXPECT_TRUE(program.running());
    desk.closeWindow();
    EXPECT_EQ(program.wait(), 0) << program.err();
    EXPECT_EQ(program.err(), "");
    const std::string ini = contentOf(installed.settings());
    for (const char* line : {"[editor]", "left=100", "top=100", "width=960", "height=640"})
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

/// Five seconds of the demo song arrive at a JACK server without a hole that the song has not.
TEST(WindowProgram, PlaysIntoJack) {
    constexpr int rate = 44100, seconds = 5;
    const TempFolder folder;
    // The song is 116 beats a minute fast: six seconds of it.
    const std::string length = std::to_string(6 * 116 * 16);
    Program render({SONDRAVA_BIN "/sondrava-render", "--demo", "--bits", "32", "--length", length,
                    folder.file("demo.wav")});
    ASSERT_EQ(render.wait(), 0) << render.err();
    const size_t longest = longestSilence(Wav(folder.file("demo.wav")).left);

    const PatientServer jack;
    ASSERT_TRUE(jack.up) << "jackd does not answer";
    for (unsigned block : {128u, 1024u}) {
        const Installation installed;
        installed.set("[audio]\nbuffersize=" + std::to_string(block) + "\nsamplerate=44100\n");
        Desk desk;
        Program program({installed.program()});
        ASSERT_TRUE(desk.findWindow()) << program.err();
        Listener listener(size_t(rate) * seconds);
        ASSERT_TRUE(waitFor([&] { return listener.join(); })) << "it plays into no speaker";
        desk.key("space");
        ASSERT_TRUE(waitFor([&] { return listener.full(); })) << "no sound";
        EXPECT_EQ(listener.blockFrames(), block);
        EXPECT_LE(longestSilence(listener.heard), longest) << block << " frames";
        const float loudest = *std::max_element(listener.heard.begin(), listener.heard.end());
        EXPECT_GT(loudest, 0.01f) << block;
        desk.closeWindow();
        EXPECT_EQ(program.wait(), 0);
    }
}
