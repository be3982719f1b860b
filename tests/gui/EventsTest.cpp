#include "TestServer.h"

#include "gui/CBitmap.h"
#include "gui/Keys.h"
#include "gui/Selections.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace {

/// A window at (100, 100) with one control at (20, 30) of 100 x 80.
class EventTest : public GuiTest {
protected:
    void SetUp() override {
        GuiTest::SetUp();
        if (!usable()) return;
        win = bareWindow();
        probe = new ProbeCtrl(win.get(), "probe", 20, 30, 100, 80);
        win->addControl(probe);
        win->redraw();
        settle();
    }
    void TearDown() override {
        win.reset();
        GuiTest::TearDown();
    }
    void point(int x, int y) {
        act({"mousemove", std::to_string(120 + x), std::to_string(130 + y)});
    }
    /// The presses among the entries, without their place.
    std::vector<int> presses() const {
        std::vector<int> found;
        for (const std::string& entry : probe->log)
            if (entry.rfind("down", 0) == 0)
                found.push_back(std::stoi(entry.substr(entry.rfind(' '))));
        return found;
    }

    std::unique_ptr<CWin> win;
    ProbeCtrl* probe = nullptr;
};

} // namespace

TEST_F(EventTest, KeysBecomeCodes) {
    struct Case {
        const char* name;
        int key, mods;
    };
    const Case cases[] = {{"a", 'a', 0},
                          {"shift+a", 'A', modShift},
                          {"ctrl+a", 'a', modControl},
                          {"alt+a", 'a', modAlt},
                          {"space", ' ', 0},
                          {"asterisk", keyAsterisk, modShift},
                          {"Home", keyHome, 0},
                          {"Left", keyLeft, 0},
                          {"Up", keyUp, 0},
                          {"Right", keyRight, 0},
                          {"Down", keyDown, 0},
                          {"End", keyEnd, 0},
                          {"Delete", keyDelete, 0},
                          {"BackSpace", keyBackspace, 0},
                          {"Return", keyReturn, 0},
                          {"Escape", keyEscape, 0},
                          {"Prior", keyPageUp, 0},
                          {"Next", keyPageDown, 0},
                          {"F1", -15, 0},
                          {"F12", -26, 0},
                          {"ctrl+shift+z", 'Z', 48},
                          {"ediaeresis", 0xeb, 0}};
    KeySym symbols[2] = {XK_ediaeresis, XK_ediaeresis}; // a layout that changes while we run
    XChangeKeyboardMapping(liveDisplay(), 200, 2, symbols, 1);
    settle();
    win->setKeyCtrl(probe);
    for (const Case& c : cases) {
        probe->log.clear();
        act({"key", c.name});
        const std::string expected = "key " + std::to_string(c.key) + " " + std::to_string(c.mods);
        EXPECT_TRUE(probe->saw(expected)) << c.name << ": " << probe->last();
    }
    for (const char* silent : {"Shift_L", "Control_L", "Insert", "Super_L"}) {
        probe->log.clear();
        act({"key", silent});
        EXPECT_TRUE(probe->log.empty()) << silent << ": " << probe->last();
    }
}

/// Who is asked first for a key, and that an answer ends the search.
TEST_F(EventTest, KeysAreOfferedInOrder) {
    std::string asked;
    struct Asker : CObject {
        std::string* asked;
        char name;
        bool takes = false;
        bool key(CObject*, int&, int) {
            *asked += name;
            return takes;
        }
        COnKey* hook() { return new _COnKey<Asker>(this, &Asker::key); }
    };
    Asker askers[4];
    for (int i = 0; i < 4; i++) {
        askers[i].asked = &asked;
        askers[i].name = char('1' + i);
    }
    auto* hooked = new ProbeCtrl(win.get(), "hooked", 0, 0, 5, 5);
    win->addControl(hooked);
    hooked->onKeyDown = askers[0].hook();
    app->keyHookCtrl = hooked;
    app->onKey = askers[1].hook();
    win->onAccelerator = askers[2].hook();
    win->onKeyDown = askers[3].hook();
    act({"key", "a"});
    EXPECT_EQ(asked, "1234");
    asked.clear();
    askers[1].takes = true;
    act({"key", "a"});
    EXPECT_EQ(asked, "12");
}

TEST_F(EventTest, ButtonsArriveInTheControlsCoordinates) {
    point(5, 7);
    act({"mousedown", "1"});
    EXPECT_EQ(probe->last(), "down 5 7 1");
    EXPECT_TRUE(probe->isPushed());
    act({"mousemove_relative", "--", "-60", "0"}); // out of the window
    EXPECT_EQ(probe->last(), "move -55 7 1");
    act({"mouseup", "1"});
    EXPECT_EQ(probe->last(), "up -55 7 1");
    EXPECT_FALSE(probe->isPushed());
    point(50, 50);
    act({"keydown", "shift", "keydown", "ctrl", "click", "3", "keyup", "ctrl", "keyup", "shift"});
    EXPECT_TRUE(probe->saw("down 50 50 50")) << probe->last(); // 2 + 16 + 32
    point(70, 50);
    act({"click", "2"});
    EXPECT_TRUE(probe->saw("down 70 50 4"));
}

/// Of several motions in one turn the last counts, but none is moved past a press.
TEST_F(EventTest, MotionsAreMerged) {
    point(5, 5);
    probe->log.clear();
    act({"mousemove", "130", "140", "mousemove", "131", "141", "mousedown", "1", "mousemove", "140",
         "150", "mousemove", "150", "160", "mouseup", "1", "mousemove", "151", "161"});
    EXPECT_EQ(probe->log, (std::vector<std::string>{"move 11 11 0", "down 11 11 1", "move 30 30 1",
                                                    "up 30 30 1", "move 31 31 0"}));
}

namespace {
int foreignEvents = 0;
void foreignProc(XEvent* event) {
    foreignEvents += event->type == ClientMessage;
}
} // namespace

/// Only code of a plug-in is called, and only for windows inside ours.
TEST_F(EventTest, ForeignWindowsNameTheirFunction) {
    const auto code = reinterpret_cast<uintptr_t>(&foreignProc);
    const struct {
        const char* name;
        bool inside, known;
        std::vector<long> items;
        int calls;
    } cases[] = {{"in two halves", true, true, {long(code & 0xffffffff), long(code >> 32)}, 1},
                 {"cut to one", true, true, {long(code & 0xffffffff)}, 0},
                 {"no plug-in's", true, false, {long(code & 0xffffffff), long(code >> 32)}, 0},
                 {"on the root", false, true, {long(code & 0xffffffff), long(code >> 32)}, 0},
                 {"nothing", true, true, {}, 0}};
    Display* display = liveDisplay();
    const Atom name = xConnection().atoms.eventProc;
    xerror = 0;
    for (const auto& c : cases) {
        foreignEvents = 0;
        app->isPluginCode = nullptr;
        if (c.known)
            app->isPluginCode = [](const void* address) {
                return address == reinterpret_cast<const void*>(&foreignProc);
            };
        const Window outer = c.inside ? win->handle : xConnection().root;
        const Window middle = XCreateSimpleWindow(display, outer, 0, 0, 9, 9, 0, 0, 0);
        const Window inner = XCreateSimpleWindow(display, middle, 0, 0, 9, 9, 0, 0, 0);
        if (!c.items.empty())
            XChangeProperty(display, inner, name, name, 32, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(c.items.data()),
                            int(c.items.size()));
        XEvent event{};
        event.xclient = {ClientMessage, 0, True, display, inner, name, 32, {}};
        XSendEvent(display, inner, False, NoEventMask, &event);
        settle();
        EXPECT_EQ(foreignEvents, c.calls) << c.name;
        XSendEvent(display, inner, False, NoEventMask, &event);
        XDestroyWindow(display, middle); // it has gone when the event is read
        settle();
    }
    EXPECT_EQ(xerror, 0);
}

/// Two presses within 7 pixels and 400 ms are a double click; a wheel turn between is none.
TEST_F(EventTest, PressesBecomeDouble) {
    const struct {
        std::vector<std::string> commands;
        std::vector<int> presses;
    } cases[] = {{{"click", "1", "click", "1", "click", "1"}, {1, 9, 1}},
                 {{"click", "1", "mousemove_relative", "8", "0", "click", "1"}, {1, 1}},
                 {{"click", "1", "mousemove_relative", "--", "-7", "7", "click", "1"}, {1, 9}},
                 {{"click", "1", "click", "4", "click", "1"}, {1, 9}}};
    int x = 10; // each case elsewhere
    for (const auto& c : cases) {
        point(x += 20, 40);
        probe->log.clear();
        act(c.commands);
        EXPECT_EQ(presses(), c.presses) << c.commands[2];
    }
}

TEST_F(EventTest, TheWheelHasTwoAxes) {
    point(10, 10);
    probe->log.clear();
    act({"click", "4", "click", "5", "click", "6", "click", "7", "click", "8"});
    EXPECT_EQ(probe->log, (std::vector<std::string>{"wheel 10 10 0 32 0", "wheel 10 10 0 -32 0",
                                                    "wheel 10 10 0 0 32", "wheel 10 10 0 0 -32"}));
}

TEST_F(EventTest, AnUnusedWheelClimbsToTheParents) {
    struct Taker : CObject {
        int dy = 0;
        bool wheel(CObject*, int, int, int, int y, int) {
            dy = y;
            return true;
        }
    } taker;
    win->clientGroup->onWheel = new _COnWheel<Taker>(&taker, &Taker::wheel);
    point(10, 10);
    act({"click", "5"});
    EXPECT_TRUE(probe->saw("wheel 10 10 0 -32 0"));
    EXPECT_EQ(taker.dy, -32);
}

TEST_F(EventTest, WhileOneControlIsExclusiveNoOtherIsPressed) {
    auto* other = new ProbeCtrl(win.get(), "other", 130, 30, 40, 40);
    win->addControl(other);
    app->exclusiveCtrl = other;
    point(10, 10);
    act({"click", "1"});
    EXPECT_TRUE(presses().empty());
    point(120, 10);
    act({"click", "1"});
    EXPECT_TRUE(other->saw("down 10 10 1"));
}

TEST_F(EventTest, OnlyWhoAsksIsToldOfThePointer) {
    point(10, 10);
    EXPECT_FALSE(probe->saw("enter"));
    EXPECT_EQ(app->hooverCtrl, probe);
    probe->hooverable = true;
    point(150, 90);
    point(12, 12);
    EXPECT_EQ(app->mouseOverCtrl, probe);
    act({"mousemove", "600", "400"}); // out of the window
    EXPECT_EQ(app->mouseOverCtrl, nullptr);
    EXPECT_TRUE(probe->saw("enter"));
    EXPECT_EQ(probe->last(), "leave");
}

namespace {

/// Strikes in the one of its handlers that is named.
class Victim : public ProbeCtrl {
public:
    Victim(CWin* owner, const std::string& handler, std::function<void()> act, int& count)
        : ProbeCtrl(owner, "victim", 0, 0, 60, 60), armed(handler), strike(std::move(act)),
          alive(count) {
        hooverable = true;
        alive++;
        if (armed == "drag") onDrag = new _COnChange<Victim>(this, &Victim::drag);
        onDragOver = new _COnMouse<Victim>(this, &Victim::over);
        onDrop = new _COnMouse<Victim>(this, &Victim::drop);
    }
    ~Victim() override { alive--; }
    Victim(const Victim&) = delete;
    Victim& operator=(const Victim&) = delete;

    void mouseDown(int, int, int) override { in("down"); }
    void mouseMove(int x, int y, int btn) override {
        if (in(btn ? "pushed" : "move")) return;
        CCtrl::mouseMove(x, y, btn);
    }
    void mouseUp(int, int, int) override { in("up"); }
    bool keyDown(int, int) override { return in("key"); }
    void onTimer() override { in("timer"); }
    bool mouseWheel(int, int, int, int, int) override { return !in("wheel"); }
    void mouseOver(bool enter, int, int) override { in(enter ? "enter" : "leave"); }
    void setFocus(bool on) override { in(on ? "focus" : "blur"); }

private:
    void drag(CObject*) { in("drag"); }
    void over(CObject*, int, int, int) { in("over"); }
    void drop(CObject*, int, int, int) { in("drop"); }
    bool in(const char* handler) {
        if (armed != handler) return false;
        const auto act = std::move(strike);
        armed.clear();
        act();
        return true;
    }
    std::string armed;
    std::function<void()> strike;
    int& alive;
};

} // namespace

/// A control, its group or its window may go while any of its handlers runs.
TEST_F(EventTest, HandlersMayDeleteWhatTheyStandOn) {
    using Commands = std::vector<std::string>;
    const Commands step = {"mousemove", "455", "155"}, click = {"click", "1"}, none,
                   press = {"mousedown", "1", "mousemove_relative", "15", "0", "mouseup", "1"};
    const struct {
        std::string handler;
        Commands commands;
    } cases[] = {{"down", click},           {"move", step},
                 {"pushed", press},         {"up", click},
                 {"wheel", {"click", "4"}}, {"key", {"key", "a"}},
                 {"enter", step},           {"leave", {"mousemove", "600", "400"}},
                 {"drag", press},           {"over", press},
                 {"drop", press},           {"timer", none},
                 {"focus", none},           {"blur", none}};
    for (const auto& c : cases) {
        for (const std::string how : {"clear", "group", "window", "delete"}) {
            int alive = 0;
            auto* other = new CWin(app.get(), nullptr, "other", 400, 100, 150, 100, winNoBorder);
            auto* group = new CGroup(other, "group", 10, 10, 100, 80);
            Victim* victim = nullptr;
            const auto strike = [&] {
                if (how == "clear") group->clear();
                if (how == "group") other->clear();
                if (how == "window") app->deleteLater(other);
                if (how != "delete") return;
                group->controls.remove(victim);
                delete victim;
            };
            victim = new Victim(other, c.handler, strike, alive);
            auto* clock = new ProbeCtrl(win.get(), "clock", 0, 0, 1, 1);
            win->addControl(clock);
            clock->onTick = [&] { other->setKeyCtrl(c.handler == "blur" ? nullptr : victim); };
            other->addControl(group);
            group->addControl(victim);
            other->show(true);
            other->setFocus(true);
            settle();
            const unsigned long handle = other->handle;
            if (c.handler != "focus") other->setKeyCtrl(victim);
            if (c.handler == "over" || c.handler == "drop") app->startDrag(victim);
            if (c.handler == "timer") app->addTimer(victim, 10, false);
            if (c.handler == "focus" || c.handler == "blur") app->addTimer(clock, 10, false);
            if (c.handler != "enter") act({"mousemove", "450", "150"});
            if (!c.commands.empty()) act(c.commands);
            EXPECT_TRUE(pumpUntil([&] { return alive == 0; })) << c.handler << " " << how;
            EXPECT_EQ(app->windowOf(handle) == nullptr, how == "window") << c.handler;
            if (app->windowOf(handle)) delete other;
            win->clientGroup->controls.remove(clock);
            delete clock;
        }
    }
    point(10, 10);
    EXPECT_TRUE(probe->saw("move 10 10 0")); // the others live on
}

/// The window of a loop that nobody's handler has opened.
TEST_F(EventTest, AModalWindowMayDeleteItself) {
    int alive = 0;
    auto* dialog = new CWin(app.get(), win.get(), "dialog", 400, 100, 150, 100, winNoBorder);
    dialog->addControl(new Victim(
        dialog, "timer", [&] { app->deleteLater(dialog); }, alive));
    app->addTimer(static_cast<CCtrl*>(dialog->clientGroup->controls.items(0)), 20, false);
    dialog->showModal();
    EXPECT_EQ(alive, 0);
    EXPECT_EQ(app->modalWin, nullptr);
}

TEST_F(EventTest, ADeletedControlLeavesEverySlot) {
    app->addTimer(probe, 20, true);
    app->exclusiveCtrl = app->keyHookCtrl = probe;
    win->setKeyCtrl(probe);
    win->setMouseCtrl(probe);
    point(3, 3);
    win->clear();
    EXPECT_TRUE(app->timers.empty());
    for (const CCtrl* slot : {app->exclusiveCtrl, app->keyHookCtrl, win->keyCtrl, win->mouseCtrl})
        EXPECT_EQ(slot, nullptr);
}

TEST_F(EventTest, RequestsOfOneTurnAreOnePaint) {
    const int before = probe->paints;
    for (int i = 0; i < 10; i++) probe->redraw();
    win->redraw();
    settle();
    EXPECT_EQ(probe->paints, before + 1);
    probe->visible = false;
    probe->redraw();
    settle();
    EXPECT_EQ(probe->paints, before + 1);
}

TEST_F(EventTest, DrawNowShowsTheControlBeforeAnyEvent) {
    probe->fill = 0x123456;
    app->backBuffer = std::make_unique<CBitmap>(1, 1); // has to grow first
    app->drawNow(win.get(), probe);
    const Shot shot(win->handle, 200, 150);
    EXPECT_EQ(shot.boundsOf(0x123456), asRect(20, 30, 120, 110));
    EXPECT_EQ(shot.count(0x123456), 100 * 80);
}

/// Timers count turns of 10 ms by the clock: a period of 30 ms fires 10 times in 300, whatever the
/// time that events took, and never twice in a turn.
TEST_F(EventTest, TimersKeepTimeAndPhase) {
    using Clock = std::chrono::steady_clock;
    app->idle();
    const auto start = Clock::now();
    app->addTimer(probe, 30, true);
    EXPECT_TRUE(pumpUntil([&] { return probe->log.size() >= 10; }));
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(290));
    probe->log.clear();
    app->addTimer(probe, 100, true);
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    app->idle();
    EXPECT_EQ(probe->log.size(), 1U);
    for (int turn = 0; turn < 3; turn++) app->idle();
    EXPECT_LE(probe->log.size(), 2U); // what was missed is not made up for
    app->killTimer(probe);
    EXPECT_TRUE(app->timers.empty());
}

TEST_F(EventTest, TimerHandlersMayChangeTheTimers) {
    auto* second = new ProbeCtrl(win.get(), "second", 0, 0, 1, 1);
    win->addControl(second);
    probe->onTick = [&] {
        app->addTimer(probe, 5, false); // again, and sooner than a turn
        app->killTimer(second);
    };
    app->addTimer(probe, 20, false);
    app->addTimer(second, 20, true);
    EXPECT_TRUE(pumpUntil([&] { return probe->log.size() >= 3; }));
    EXPECT_TRUE(second->log.empty());
    EXPECT_EQ(app->timers.getCount(), 1);
    EXPECT_EQ(probe->timerInterval, 10);
}

TEST_F(EventTest, DragsAreDroppedWhereSomebodyTakesThem) {
    struct Receiver : CObject {
        std::vector<std::string> log;
        void over(CObject*, int x, int y, int) { add("over", x, y); }
        void drop(CObject*, int x, int y, int) { add("drop", x, y); }
        void add(const char* what, int x, int y) {
            log.push_back(std::string(what) + " " + std::to_string(x) + " " + std::to_string(y));
        }
    } receiver;
    CWin other(app.get(), nullptr, "other", 400, 100, 200, 200, winNoBorder);
    auto* panel = new CGroup(&other, "panel", 10, 10, 150, 150);
    panel->onDrop = new _COnMouse<Receiver>(&receiver, &Receiver::drop);
    panel->onDragOver = new _COnMouse<Receiver>(&receiver, &Receiver::over);
    other.addControl(panel);
    panel->addControl(new ProbeCtrl(&other, "inner", 20, 20, 50, 50));
    other.show(true);
    settle();
    int starts = 0, ends = 0;
    CObject dragged;
    dragged.category = 7;
    Target starter([&] {
        starts++;
        app->startDrag(probe);
        auto* item = new CDropItem("A sample", dropSample);
        item->object = &dragged;
        app->dragList->add(item);
    });
    Target ender([&] { ends++; });
    probe->onDrag = starter.change();
    app->onEndDrag = ender.change();
    app->mainWin = win.get();

    point(50, 40);
    act({"mousedown", "1"});
    act({"mousemove_relative", "8", "0"});
    EXPECT_EQ(starts, 0);
    act({"mousemove_relative", "1", "0"});
    EXPECT_EQ(starts, 1);
    EXPECT_TRUE(app->hasDragType(dropSample) && app->hasDragObj(&dragged));
    EXPECT_TRUE(app->dragHasObject(7, 0) && !app->hasDragType(dropFile));
    act({"mousemove", "440", "150"});
    EXPECT_EQ(receiver.log.back(), "over 30 40");
    act({"mousemove", "395", "150"}); // left of the window: the last word to the former one
    EXPECT_EQ(receiver.log.back(), "over -15 40");
    act({"mousemove", "441", "151"});
    act({"mouseup", "1"});
    EXPECT_EQ(receiver.log.back(), "drop 31 41");
    EXPECT_EQ(starts, 1);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(app->dragList, nullptr);
    EXPECT_EQ(app->dragCtrl, nullptr);
    point(50, 40);
    act({"mousedown", "1", "mousemove_relative", "20", "0"});
    win->hide(); // its release will never come
    EXPECT_EQ(ends, 2);
    EXPECT_EQ(app->dragCtrl, nullptr);
    act({"mouseup", "1"});
}

TEST_F(EventTest, ErrorsOfTheServerAreOnlyNoted) {
    xerror = 0;
    XDestroyWindow(liveDisplay(), 0x7fffff);
    EXPECT_FALSE(syncSucceeded());
    EXPECT_EQ(xerror, BadWindow);
    CWin hidden(app.get(), nullptr, "hidden", 0, 0, 50, 50, 0);
    xerror = 0;
    hidden.setFocus(true); // nothing to see: the focus cannot go there
    EXPECT_TRUE(syncSucceeded());
}

TEST(CApp, WithoutADisplayOpenIsFalse) {
    setenv("DISPLAY", ":987", 1);
    CApp app;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(app.open());
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_NE(line.find(":987"), std::string::npos);
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
}

/// The server dies in the middle of painting: the loop ends, and what is left can be used and
/// deleted.
TEST(CApp, ALostServerEndsTheLoop) {
    TestServer server;
    setenv("DISPLAY", server.display.c_str(), 1);
    CApp app;
    ASSERT_TRUE(app.open());
    {
        CWin win(&app, nullptr, "lost", 10, 10, 200, 100, winCaption);
        auto* probe = new ProbeCtrl(&win, "probe", 0, 0, 50, 50);
        win.addControl(probe);
        probe->onTick = [&] {
            if (probe->log.size() == 3) server.kill();
            for (int i = 0; i < 2000; i++) app.drawNow(&win, probe);
        };
        app.addTimer(probe, 10, true);
        app.run(&win);
        EXPECT_TRUE(xConnection().lost);
        probe->redraw();
        win.maximize();
        win.setPos(5, 5);
        EXPECT_EQ(app.winAtPos(20, 20), nullptr);
        win.hide();
        win.show(true);
    }
}
