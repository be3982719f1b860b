#include "ControlFixture.h"

#include "gui/Keys.h"
#include "gui/XConnection.h"
#include "gui/controls/CForeign.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

/// A program of its own, with a window that notes what reaches it.
class Guest {
public:
    std::string log;
    Window window = None;

    Guest() = default;
    ~Guest() {
        if (display) XCloseDisplay(display);
    }
    Guest(const Guest&) = delete;
    Guest& operator=(const Guest&) = delete;
    void make(Window parent, int width, int height) {
        if (!display) display = XOpenDisplay(nullptr);
        window = XCreateSimpleWindow(display, parent ? parent : DefaultRootWindow(display), 0, 0,
                                     unsigned(width), unsigned(height), 0, 0, 0xff0000);
        XSelectInput(display, window, KeyPressMask | ButtonPressMask | StructureNotifyMask);
        XSync(display, False);
    }
    void resize(int width, int height) {
        XResizeWindow(display, window, unsigned(width), unsigned(height));
        XSync(display, False);
    }
    void takeFocus() {
        XSetInputFocus(display, window, RevertToParent, CurrentTime);
        XSync(display, False);
    }
    void destroy() {
        XDestroyWindow(display, window);
        XSync(display, False);
    }
    void tell(Window embedder, long what) {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = embedder;
        event.xclient.message_type = XInternAtom(display, "_XEMBED", False);
        event.xclient.format = 32;
        event.xclient.data.l[1] = what;
        XSendEvent(display, embedder, False, NoEventMask, &event);
        XSync(display, False);
    }
    XWindowAttributes about() {
        XWindowAttributes found{};
        XGetWindowAttributes(display, window, &found);
        return found;
    }
    /// Takes down keys, presses and messages that have come.
    void listen() {
        XSync(display, False);
        while (XPending(display)) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == KeyPress) {
                char text[8] = {};
                XLookupString(&event.xkey, text, sizeof text - 1, nullptr, nullptr);
                log += std::string(text) + (event.xkey.send_event ? "~ " : " ");
            } else if (event.type == ButtonPress) {
                log += "press ";
            } else if (event.type == ClientMessage) {
                log += "m" + std::to_string(event.xclient.data.l[1]) + " ";
            }
        }
    }

private:
    Display* display = nullptr;
};

class ForeignTest : public ControlTest {
protected:
    void SetUp() override {
        ControlTest::SetUp();
        place = add(new CForeign(win.get(), "foreign", 20, 30, 100, 80));
    }
    /// Runs the loop until the guest has got that and no more.
    void expectLog(const std::string& wanted, const char* what) {
        EXPECT_TRUE(pumpUntil([&] {
            guest.listen();
            return guest.log == wanted;
        })) << what
            << ": " << guest.log;
        guest.log.clear();
    }
    bool is(int x, int y, int w, int h) {
        app->idle();
        settle();
        const XWindowAttributes now = guest.about();
        return now.x == x && now.y == y && now.width == w && now.height == h;
    }

    Guest guest;
    CForeign* place = nullptr;
};

} // namespace

/// Whether it makes its window in the socket or is taken in: it need not ask to be shown, each
/// follows the size of the other, and it is given back.
TEST_F(ForeignTest, AWindowIsTakenInAndBothFollow) {
    for (const bool ownWay : {false, true}) {
        changes = 0;
        place->setBounds(20, 30, 100, 80);
        guest.make(ownWay ? None : place->socket(), 60, 50);
        if (ownWay) {
            EXPECT_TRUE(place->embed(guest.window));
        }
        EXPECT_TRUE(pumpUntil([&] { return place->guest() == guest.window; }));
        EXPECT_TRUE(pumpUntil([&] { return guest.about().map_state == IsViewable; }));
        EXPECT_EQ(asPoint(place->width, place->height), asPoint(60, 50));
        EXPECT_EQ(changes, 1) << "the owner can make room";
        guest.resize(90, 70);
        EXPECT_TRUE(pumpUntil([&] { return place->width == 90 && place->height == 70; }));
        place->setBounds(40, 10, 70, 40);
        EXPECT_TRUE(pumpUntil([&] { return is(0, 0, 70, 40); }));
        Window child;
        int x = 0, y = 0;
        XTranslateCoordinates(liveDisplay(), place->socket(), win->handle, 0, 0, &x, &y, &child);
        EXPECT_EQ(asPoint(x, y), asPoint(40, 10));
        place->visible = false;
        EXPECT_TRUE(pumpUntil([&] { return app->idle(), guest.about().map_state != IsViewable; }));
        place->visible = true;
        if (ownWay) {
            place->release();
            settle();
            EXPECT_EQ(guest.about().map_state, IsUnmapped);
        } else {
            guest.destroy();
            EXPECT_TRUE(pumpUntil([&] { return place->guest() == 0; }));
        }
    }
    EXPECT_FALSE(place->embed(0x7654321)) << "no such window";
}

/// In a group that is scrolled it shows no more than the group does.
TEST_F(ForeignTest, ItIsCutByTheGroupsAround) {
    win->clear();
    auto* group = new CGroup(win.get(), "group", 10, 10, 100, 100);
    win->addControl(group);
    place = new CForeign(win.get(), "foreign", 0, 0, 60, 60);
    group->addControl(place);
    guest.make(place->socket(), 60, 60);
    EXPECT_TRUE(pumpUntil([&] { return place->guest() == guest.window; }));
    group->scrollX = 20;
    EXPECT_TRUE(pumpUntil([&] { return is(-20, 0, 60, 60); }));
    group->scrollX = 70;
    EXPECT_TRUE(pumpUntil([&] { return app->idle(), guest.about().map_state != IsViewable; }));
}

/// Wherever the pointer and the server's focus are, "h" is the host's and "g" the guest's.
TEST_F(ForeignTest, TheHostDecidesWhoseAKeyIs) {
    auto* probe = add(new ProbeCtrl(win.get(), "probe", 0, 0, 10, 10));
    probe->tabStop = true;
    std::string hosts;
    Target target([] {});
    wire(win->onAccelerator, target.key());
    target.act = [&] { hosts += "h"; };
    place->hostTakes = [](int key, int) { return key == 'h'; };
    guest.make(place->socket(), 60, 50);
    EXPECT_TRUE(pumpUntil([&] { return place->guest() == guest.window; }));
    expectLog("m0 m1 ", "embedded, and its window is active");

    // Its own focus in the toolkit, the pointer elsewhere: sent on.
    win->setKeyCtrl(place);
    expectLog("m4 ", "focus");
    at(5, 140, "key g h");
    expectLog("g~ ", "sent on");
    EXPECT_EQ(hosts, "h");
    // The pointer over it: what the host leaves comes as it was pressed.
    at(40, 50, "key h g h");
    expectLog("g ", "replayed");
    EXPECT_EQ(hosts, "hhh");
    // It has taken the server's focus.
    win->setKeyCtrl(probe);
    expectLog("m5 ", "focus lost");
    at(5, 140);
    guest.takeFocus();
    settle();
    EXPECT_EQ(win->keyCtrl, place);
    EXPECT_TRUE(win->hasFocus()) << "the window has it by its guest";
    expectLog("m4 ", "focus taken");
    xdo("key h g");
    expectLog("g ", "of its own");
    EXPECT_EQ(hosts, "hhhh");
    // Tab in it leads on, and takes the keys along.
    guest.tell(place->socket(), 6);
    EXPECT_TRUE(pumpUntil([&] { return win->keyCtrl == probe; }));
    expectLog("m5 ", "left");
    target.act = [] {};
    xdo("key g");
    EXPECT_EQ(probe->last(), "key 103 0");
    guest.tell(place->socket(), 3);
    EXPECT_TRUE(pumpUntil([&] { return win->keyCtrl == place; }));
    expectLog("m4 ", "asked for");
    at(40, 50, "click 1");
    expectLog("press ", "the mouse is its own");
}
