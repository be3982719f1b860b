#include "TestServer.h"

#include "base/CStringList.h"
#include "base/Process.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/Fonts.h"
#include "gui/Scale.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <sstream>

extern char** environ;

std::unique_ptr<TestServer> GuiTest::server;

TestServer::TestServer(const std::vector<std::string>& options) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    std::vector<std::string> words = {"Xvfb", "-displayfd", "3", "-nolisten", "tcp", "-noreset"};
    words.insert(words.end(), options.begin(), options.end());
    if (std::find(words.begin(), words.end(), "-screen") == words.end())
        words.insert(words.end(), {"-screen", "0", "800x600x24"});
    std::vector<char*> argv;
    for (std::string& w : words) argv.push_back(w.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], 3);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    if (posix_spawnp(&pid, "Xvfb", &actions, nullptr, argv.data(), environ) != 0) pid = 0;
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    char number[16] = {};
    size_t have = 0;
    ssize_t got = 0;
    while (have < sizeof number - 1 && (got = read(ends[0], number + have, 1)) > 0)
        if (number[have++] == '\n') break;
    close(ends[0]);
    if (pid && have > 1) display = ":" + std::string(number, have - 1);
}

TestServer::~TestServer() {
    if (pid) ::kill(pid, SIGTERM);
    if (pid) waitpid(pid, nullptr, 0);
}

void TestServer::kill() {
    ::kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    pid = 0;
}

void GuiTest::SetUpTestSuite() {
    server = std::make_unique<TestServer>();
}

void GuiTest::TearDownTestSuite() {
    server.reset();
}

void GuiTest::SetUp() {
    ASSERT_FALSE(server->display.empty()) << "Xvfb did not start";
    setenv("DISPLAY", server->display.c_str(), 1);
    textSettings = {};
    textSettings.smooth = false; // each character of the server's font is 6 pixels wide
    reopen(lowestScale);
    setMousePos(700, 500);
    settle();
}

void GuiTest::reopen(int percent) {
    app.reset();
    wantedScale = percent;
    app = std::make_unique<CApp>();
    ASSERT_TRUE(app->open());
    ASSERT_EQ(scalePercent, percent);
}

void GuiTest::TearDown() {
    app.reset();
}

std::unique_ptr<CWin> GuiTest::bareWindow(int width, int height) {
    auto win =
        std::make_unique<CWin>(app.get(), nullptr, "bare", 100, 100, width, height, winNoBorder);
    win->show(true);
    settle();
    return win;
}

int runCommand(const std::vector<std::string>& words) {
    CStringList argv;
    for (const std::string& w : words) argv.add(w.c_str());
    return runProcess(argv);
}

std::vector<std::string> split(const std::string& line) {
    std::istringstream in(line);
    return {std::istream_iterator<std::string>(in), {}};
}

int xdotool(const std::string& line) {
    return runCommand(split("xdotool " + line));
}

void GuiTest::act(const std::vector<std::string>& words) {
    std::vector<std::string> command = {"xdotool"};
    command.insert(command.end(), words.begin(), words.end());
    ASSERT_EQ(runCommand(command), 0) << words.front();
    settle();
}

bool GuiTest::pumpUntil(const std::function<bool()>& condition) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (Clock::now() > deadline) return false;
        app->dispatchEvents();
        app->idle();
    }
    return true;
}

void GuiTest::settle() {
    for (int turn = 0; turn < 2; turn++) {
        if (liveDisplay()) XSync(liveDisplay(), False);
        app->dispatchEvents();
        app->paintFrame();
    }
}

Shot::Shot(unsigned long drawable, int w, int h) : width(w), height(h) {
    XImage* image =
        XGetImage(liveDisplay(), drawable, 0, 0, unsigned(w), unsigned(h), AllPlanes, ZPixmap);
    if (!image) return;
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++) pixels.push_back(int(XGetPixel(image, x, y) & 0xffffff));
    XDestroyImage(image);
}

Shot::Shot(const CBitmap& bitmap)
    : Shot(bitmap.pixmap, bitmap.deviceWidth(), bitmap.deviceHeight()) {
}

int Shot::at(int x, int y) const {
    const bool in = x >= 0 && y >= 0 && x < width && y < height && !pixels.empty();
    return in ? pixels[size_t(y) * size_t(width) + size_t(x)] : -1;
}

CRect Shot::boundsOf(int color) const {
    CRect bounds;
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            if (at(x, y) == color) bounds = unite(bounds, asRect(x, y, x + 1, y + 1));
    return bounds;
}

int Shot::count(int color) const {
    return int(std::count(pixels.begin(), pixels.end(), color));
}

void ProbeCtrl::note(const char* what, int x, int y, int btn) {
    log.push_back(std::string(what) + " " + std::to_string(x) + " " + std::to_string(y) + " " +
                  std::to_string(btn));
}

void ProbeCtrl::paint(CGraphic* g, CRect rect) {
    paints++;
    g->fillRect(fill, rect);
    CCtrl::paint(g, rect);
}

void ProbeCtrl::mouseMove(int x, int y, int btn) {
    note("move", x, y, btn);
    CCtrl::mouseMove(x, y, btn);
}

void ProbeCtrl::mouseUp(int x, int y, int btn) {
    note("up", x, y, btn);
    if (onUp) onUp();
}

bool ProbeCtrl::keyDown(int key, int mods) {
    log.push_back("key " + std::to_string(key) + " " + std::to_string(mods));
    return true;
}

void ProbeCtrl::onTimer() {
    log.emplace_back("timer");
    if (onTick) onTick();
}

bool ProbeCtrl::mouseWheel(int x, int y, int btn, int dy, int dx) {
    note("wheel", x, y, btn);
    log.back() += " " + std::to_string(dy) + " " + std::to_string(dx);
    return CCtrl::mouseWheel(x, y, btn, dy, dx);
}

void ProbeCtrl::mouseOver(bool enter, int, int) {
    log.emplace_back(enter ? "enter" : "leave");
}

bool ProbeCtrl::saw(const std::string& entry) const {
    return std::find(log.begin(), log.end(), entry) != log.end();
}
