#include "TestServer.h"

#include "base/Numbers.h"
#include "gui/Monitors.h"
#include "gui/XConnection.h"
#include "gui/controls/CDocker.h"
#include "gui/dialogs/CDialogWin.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xrandr.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <optional>

extern char** environ;

namespace {

constexpr int framed = winCaption | winSizable | winMinButton | winMaxButton;

/// The first item of a property; -1 without one.
long property(Window window, const char* name) {
    const Atom atom = XInternAtom(liveDisplay(), name, True);
    Atom type = None;
    int format;
    unsigned long count = 0, rest;
    unsigned char* data = nullptr;
    if (atom)
        XGetWindowProperty(liveDisplay(), window, atom, 0, 1, False, AnyPropertyType, &type,
                           &format, &count, &rest, &data);
    const long item = count > 0 && format == 32 ? *reinterpret_cast<long*>(data) : -1;
    if (data) XFree(data);
    return item;
}

/// A window manager for as long as the object lives.
class Manager {
public:
    Manager() {
        char name[] = "openbox", option[] = "--sm-disable";
        char* argv[] = {name, option, nullptr};
        if (posix_spawnp(&pid, name, nullptr, nullptr, argv, environ) != 0) pid = 0;
    }
    ~Manager() {
        if (pid) kill(pid, SIGTERM);
        if (pid) waitpid(pid, nullptr, 0);
    }
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;
    /// Whether it runs and adopts windows: it overlooks those that are mapped during its start.
    bool adopts(CApp* app) const {
        for (int attempt = 0; pid && attempt < 40; attempt++) {
            CWin probe(app, nullptr, "probe", 0, 0, 50, 50, 0);
            probe.show(true);
            for (int turn = 0; turn < 20; turn++) {
                if (property(probe.handle, "WM_STATE") >= 0) return true;
                app->dispatchEvents();
                app->idle();
            }
        }
        return false;
    }

private:
    pid_t pid = 0;
};

/// Each test goes on without a window manager, then with one.
class ManagerTest : public GuiTest, public testing::WithParamInterface<bool> {
protected:
    void SetUp() override {
        GuiTest::SetUp();
        if (!usable() || !GetParam()) return;
        manager.emplace();
        ASSERT_TRUE(manager->adopts(app.get()));
    }
    void TearDown() override {
        manager.reset();
        GuiTest::TearDown();
    }
    std::unique_ptr<CWin> show(const char* title, CWin* owner, CRect place, int style) {
        auto win = std::make_unique<CWin>(app.get(), owner, title, place.left, place.top,
                                          place.right, place.bottom, style);
        win->show(true);
        EXPECT_TRUE(pumpUntil([&] {
            return win->isViewable() && (!GetParam() || property(win->handle, "WM_STATE") >= 0);
        }));
        return win;
    }
    /// Left, top, width and height as the server has them.
    static CRect place(CWin* win) {
        const CPoint at = win->getPos(true), size = win->getSize();
        return asRect(at.x, at.y, size.x, size.y);
    }
    bool comesTo(CWin* win, CRect wanted) {
        return pumpUntil([&] { return place(win) == wanted; });
    }
    static bool pressed(const ProbeCtrl* ctrl) {
        const auto isPress = [](const std::string& entry) { return entry.starts_with("down"); };
        return std::any_of(ctrl->log.begin(), ctrl->log.end(), isPress);
    }
    bool getsFocus(CWin* win) {
        return pumpUntil([&] { return win->hasFocus(); });
    }
    /// From the bottom to the top of the screen.
    static int level(const CWin* win) {
        Window root, parent, outer = win->handle, *list = nullptr;
        unsigned count = 0;
        int found = -1;
        for (;;) {
            XQueryTree(liveDisplay(), outer, &root, &parent, &list, &count);
            if (list) XFree(list);
            if (parent == root) break;
            outer = parent;
        }
        XQueryTree(liveDisplay(), root, &root, &parent, &list, &count);
        for (unsigned i = 0; i < count; i++)
            if (list[i] == outer) found = int(i);
        if (list) XFree(list);
        return found;
    }

    std::optional<Manager> manager;
};

} // namespace

/// A docked window is none of the manager's any more, and off its page it is one again.
TEST_P(ManagerTest, WindowsAreDockedAndComeBack) {
    constexpr long managed = 1;
    const auto main = show("main", nullptr, {100, 100, 400, 300}, framed);
    CDocker docker(app.get(), main.get(), "docker", 0, 40, 400, 260);
    const auto tool = show("tool", main.get(), {600, 400, 160, 120}, framed | winDockable);
    for (int round = 0; round < 3; round++) {
        docker.dockWin(tool.get(), -1);
        show("after", nullptr, {0, 0, 50, 50}, framed); // the manager has served what came before
        EXPECT_TRUE(comesTo(tool.get(), {340, 280, 160, 120})) << round;
        EXPECT_TRUE(tool->isViewable());
        Window root, around = None, *list = nullptr;
        unsigned count = 0;
        XQueryTree(liveDisplay(), tool->handle, &root, &around, &list, &count);
        if (list) XFree(list);
        EXPECT_EQ(around, docker.handle);
        docker.detach(tool.get(), {600, 400, 160, 120});
        EXPECT_TRUE(comesTo(tool.get(), {600, 400, 160, 120})) << round;
        EXPECT_TRUE(pumpUntil(
            [&] { return !GetParam() || property(tool->handle, "WM_STATE") == managed; }));
        EXPECT_TRUE(tool->isViewable());
        EXPECT_EQ(docker.tabCount(), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(WithoutAndWith, ManagerTest, testing::Values(false, true));

TEST_P(ManagerTest, ZonesAreDragged) {
    struct Case {
        int x, y;
        CRect moved; // by (20, 10): left, top, width, height
    };
    const Case cases[] = {{1, 100, {120, 100, 280, 200}}, {298, 100, {100, 100, 320, 200}},
                          {150, 1, {100, 110, 300, 190}}, {150, 198, {100, 100, 300, 210}},
                          {1, 1, {120, 110, 280, 190}},   {298, 1, {100, 110, 320, 190}},
                          {1, 198, {120, 100, 280, 210}}, {298, 198, {100, 100, 320, 210}},
                          {150, 12, {120, 110, 300, 200}}};
    const CRect start = asRect(100, 100, 300, 200);
    const auto win = show("Managed", nullptr, start, framed | winManaged);
    for (const Case& c : cases) {
        win->move(start.left, start.top, start.right, start.bottom);
        ASSERT_TRUE(comesTo(win.get(), start)); // and no frame of the manager's around it
        act({"mousemove", std::to_string(100 + c.x), std::to_string(100 + c.y), "mousedown", "1"});
        xdo("mousemove_relative 20 10");
        xdo("mouseup 1");
        EXPECT_TRUE(comesTo(win.get(), c.moved)) << c.x << "," << c.y;
        EXPECT_EQ(win->sizeMode, zoneNone);
    }
}

TEST_P(ManagerTest, WindowsAreMaximizedAndRestored) {
    const CRect start = asRect(100, 100, 300, 200), screen = asRect(0, 0, 800, 600);
    for (const int style : {framed, framed | winManaged}) {
        if (!GetParam() && style & winManaged) continue; // nobody is there to be asked
        const auto win = show("Managed", nullptr, start, style);
        // The key, a double click on the caption, the button 20 from the caption's right edge.
        for (const char* command :
             {"key F11", "mousemove 200 112 click --repeat 2 1", "mousemove 369 112 click 1"}) {
            ASSERT_TRUE(getsFocus(win.get()) || !GetParam());
            app->lastMouseTime = -1;
            xdo(command);
            EXPECT_TRUE(comesTo(win.get(), screen)) << command << " " << style;
            EXPECT_TRUE(win->hasStyle(winMaximized));
            xdo("key F11");
            EXPECT_TRUE(comesTo(win.get(), start)) << command << " " << style;
        }
        xdo("mousemove 387 112 click 1");
        EXPECT_FALSE(win->visible);
    }
    if (!GetParam()) return;
    const auto win = show("Managed", nullptr, start, framed | winManaged);
    // What the user does through the manager is undone by our own button.
    EXPECT_EQ(runCommand({"wmctrl", "-r", "Managed", "-b", "add,maximized_vert,maximized_horz"}),
              0);
    EXPECT_TRUE(comesTo(win.get(), screen));
    win->maximize();
    EXPECT_TRUE(pumpUntil([&] { return place(win.get()) != screen; }));
    EXPECT_FALSE(win->hasStyle(winMaximized));
    // The button of the smallest reach, which may still be on its way to where the manager puts it.
    for (int tries = 0; tries < 20 && win->isViewable(); tries++) {
        const CRect now = place(win.get());
        app->lastMouseTime = -1;
        xdo("mousemove " + std::to_string(now.left + now.right - 49) + " " +
            std::to_string(now.top + 12) + " click 1");
        const int since = asTimeInMS();
        pumpUntil([&] { return !win->isViewable() || asTimeInMS() - since > 1000; });
    }
    EXPECT_FALSE(win->isViewable());
    EXPECT_EQ(runCommand({"wmctrl", "-a", "Managed"}), 0);
    EXPECT_TRUE(getsFocus(win.get()));
    EXPECT_TRUE(pumpUntil([&] { return !win->hasStyle(winMinimized); }));
    EXPECT_EQ(runCommand({"wmctrl", "-c", "Managed"}), 0);
    EXPECT_TRUE(pumpUntil([&] { return !win->visible; }));
}

TEST_P(ManagerTest, AnOwnedWindowStaysAboveAndADialogKeepsTheKeys) {
    const auto owner = show("Owner", nullptr, asRect(50, 50, 400, 300), framed);
    auto* behind = new ProbeCtrl(owner.get(), "behind", 0, 0, 300, 200);
    owner->addControl(behind);
    const auto owned = show("Owned", owner.get(), asRect(300, 200, 200, 150), framed);
    EXPECT_EQ(property(owned->handle, "WM_TRANSIENT_FOR"), long(owner->handle));
    EXPECT_GT(level(owned.get()), level(owner.get()));
    owner->setFocus(true);
    EXPECT_TRUE(getsFocus(owner.get()));
    owned->setFocus(true);
    EXPECT_TRUE(getsFocus(owned.get()));
    if (GetParam()) {
        owner->raise(true);
        EXPECT_TRUE(getsFocus(owner.get()));
        EXPECT_TRUE(pumpUntil([&] { return level(owned.get()) > level(owner.get()); }));
    }
    CWin dialog(app.get(), owned.get(), "Dialog", 500, 400, 150, 100, winCaption | winEscape);
    auto* field = new ProbeCtrl(&dialog, "field", 0, 0, 100, 50);
    dialog.addControl(field);
    int ticks = 0;
    bool clicked = false, asked = false;
    field->onTick = [&] {
        if (++ticks > 100) return dialog.hide();
        if (field->saw("key 97 0")) {
            if (!GetParam()) return dialog.hide();
            EXPECT_EQ(runCommand({"wmctrl", "-c", asked ? "Dialog" : "Owner"}), 0);
            asked = true;
        } else if (dialog.hasFocus() && !clicked) {
            clicked = true;
            xdotool("mousemove 100 150 click 1"); // on the owner
            xdotool("mousemove 540 440 click 1");
        } else if (dialog.hasFocus()) {
            dialog.setKeyCtrl(field);
            xdotool("key a");
        }
    };
    app->addTimer(field, 30, true);
    dialog.showModal();
    EXPECT_TRUE(field->saw("key 97 0"));
    EXPECT_TRUE(pressed(field));
    EXPECT_FALSE(pressed(behind));
    EXPECT_LE(ticks, 100);
    EXPECT_TRUE(owner->visible); // behind a dialog nothing is closed
    EXPECT_EQ(app->modalWin, nullptr);
    EXPECT_TRUE(getsFocus(owned.get())); // it comes back
}

TEST_P(ManagerTest, WindowsTellTheDesktopWhatTheyAre) {
    app->icon = {1, 1, 0xff112233};
    CWin win(app.get(), nullptr, "Told", 100, 100, 400, 300, framed);
    win.minWidth = 320;
    win.minHeight = 240;
    win.show(true);
    XClassHint names{};
    ASSERT_TRUE(XGetClassHint(liveDisplay(), win.handle, &names));
    EXPECT_STREQ(names.res_name, "sondrava");
    EXPECT_STREQ(names.res_class, "Sondrava");
    XFree(names.res_name);
    XFree(names.res_class);
    XSizeHints hints{};
    long given = 0;
    ASSERT_TRUE(XGetWMNormalHints(liveDisplay(), win.handle, &hints, &given));
    EXPECT_TRUE(hints.flags & PMinSize);
    EXPECT_EQ(asPoint(hints.min_width, hints.min_height), asPoint(320, 240));
    EXPECT_EQ(property(win.handle, "_NET_WM_ICON"), 1);
}

/// The screen of 800 x 600 as two monitors side by side: what opens lies on its owner's, over it,
/// and whole.
TEST_P(ManagerTest, DialogsAndMenusKeepToTheirMonitor) {
    const CRect halves[] = {asRect(0, 0, 400, 600), asRect(400, 0, 800, 600)};
    const Window root = xConnection().root;
    for (const CRect& half : halves) {
        XRRMonitorInfo* made = XRRAllocateMonitor(liveDisplay(), 0);
        made->name = XInternAtom(liveDisplay(), half.left ? "right" : "left", False);
        made->x = half.left;
        made->width = half.width();
        made->height = half.height();
        XRRSetMonitor(liveDisplay(), root, made);
        XRRFreeMonitors(made);
    }
    EXPECT_EQ(monitorAt(asPoint(399, 10)), halves[0]);
    EXPECT_EQ(monitorAt(asPoint(400, 10)), halves[1]);
    EXPECT_EQ(monitorAt(asPoint(2000, 10)), halves[1]);
    const struct {
        CRect owner;
        CPoint corner;
    } cases[] = {{asRect(450, 200, 300, 200), asPoint(450 + 150 - 103, 200 + 100 - 63)},
                 {asRect(50, 200, 300, 200), asPoint(50 + 150 - 103, 200 + 100 - 63)},
                 {asRect(700, 500, 90, 90), asPoint(800 - 206, 600 - 126)}};
    for (const auto& c : cases) {
        const auto owner = show("Owner", nullptr, c.owner, winNoBorder);
        CDialogWin dialog(owner.get(), "Dialog", 200, 100);
        dialog.show(true);
        EXPECT_EQ(asPoint(dialog.left, dialog.top), c.corner);
        dialog.hide();
    }
    for (const char* name : {"left", "right"})
        XRRDeleteMonitor(liveDisplay(), root, XInternAtom(liveDisplay(), name, False));
}
