#include "ControlFixture.h"

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

/// The window of controls with one at (20, 30) of 100 x 80.
class EventTest : public ControlTest {
protected:
    void SetUp() override {
        ControlTest::SetUp();
        if (usable()) probe = add(new ProbeCtrl(win.get(), "probe", 20, 30, 100, 80));
        win->redraw();
        settle();
    }
    void point(int x, int y) { at(20 + x, 30 + y); }
    /// The presses among the entries, without their place.
    std::vector<int> presses() const {
        std::vector<int> found;
        for (const std::string& entry : probe->log)
            if (entry.rfind("down", 0) == 0)
                found.push_back(std::stoi(entry.substr(entry.rfind(' '))));
        return found;
    }

    ProbeCtrl* probe = nullptr;
};

} // namespace

/// Each key with its code and the modifiers: 16 Shift, 32 Control, 64 Alt.
TEST_F(EventTest, KeysBecomeCodes) {
    const char* keys = "a=97,0 shift+a=65,16 ctrl+a=97,32 alt+a=97,64 space=32,0 asterisk=-27,16 "
                       "Home=-1,0 Left=-2,0 Up=-3,0 Right=-4,0 Down=-5,0 End=-6,0 Delete=-7,0 "
                       "BackSpace=-8,0 Return=-9,0 Escape=-11,0 Prior=-12,0 Next=-13,0 F1=-15,0 "
                       "F12=-26,0 ctrl+shift+z=90,48 ediaeresis=235,0 KP_Home=-1,0 KP_Left=-2,0 "
                       "KP_Up=-3,0 KP_Next=-13,0 KP_End=-6,0 KP_Delete=-7,0 Menu=-28,0 "
                       "XF86AudioPlay=-29,0 XF86AudioStop=-30,0 XF86AudioNext=-32,0";
    KeySym symbols[2] = {XK_ediaeresis, XK_ediaeresis}; // a layout that changes while we run
    XChangeKeyboardMapping(liveDisplay(), 200, 2, symbols, 1);
    settle();
    win->setKeyCtrl(probe);
    for (const std::string& key : split(keys)) {
        const size_t is = key.find('='), comma = key.find(',');
        probe->log.clear();
        xdo("key " + key.substr(0, is));
        const std::string code = key.substr(is + 1, comma - is - 1), mods = key.substr(comma + 1);
        EXPECT_TRUE(probe->saw("key " + code + " " + mods)) << key << ": " << probe->last();
    }
    probe->log.clear();
    xdo("key Shift_L Control_L Insert Super_L");
    EXPECT_TRUE(probe->log.empty()) << probe->last();
}

/// Who is asked first for a key, and that an answer ends the search.
TEST_F(EventTest, KeysAreOfferedInOrder) {
    std::string asked;
    Target hook([&] { asked += 'h'; }), global([&] { asked += 'g'; }), near([&] { asked += 'n'; }),
        last([&] { asked += 'l'; });
    app->keyHookCtrl = probe;
    probe->onKeyDown = hook.key();
    app->onKey = global.key();
    win->onAccelerator = near.key();
    win->onKeyDown = last.key();
    xdo("key a");
    EXPECT_EQ(asked, "hgnl");
    asked.clear();
    global.takes = true;
    xdo("key a");
    EXPECT_EQ(asked, "hg");
}

TEST_F(EventTest, ButtonsArriveInTheControlsCoordinates) {
    point(5, 7);
    xdo("mousedown 1");
    EXPECT_EQ(probe->last(), "down 5 7 1");
    EXPECT_TRUE(probe->isPushed());
    xdo("mousemove_relative -- -60 0"); // out of the window
    EXPECT_EQ(probe->last(), "move -55 7 1");
    xdo("mouseup 1");
    EXPECT_EQ(probe->last(), "up -55 7 1");
    EXPECT_FALSE(probe->isPushed());
    point(50, 50);
    xdo("keydown shift keydown ctrl click 3 keyup ctrl keyup shift");
    EXPECT_TRUE(probe->saw("down 50 50 50")) << probe->last(); // 2 + 16 + 32
    point(70, 50);
    xdo("click 2");
    EXPECT_TRUE(probe->saw("down 70 50 4"));
}

/// A press is the button's that began it, and the wheel turns meanwhile.
TEST_F(EventTest, OtherButtonsLeaveAPressAlone) {
    point(5, 7);
    probe->log.clear();
    xdo("mousedown 1 click 4 mousedown 3 mouseup 3 mousemove_relative 10 0");
    xdo("mouseup 1");
    EXPECT_EQ(probe->log, (std::vector<std::string>{"down 5 7 1", "wheel 5 7 1 32 0", "move 15 7 1",
                                                    "up 15 7 1"}));
    point(6, 7);
    xdo("click 3");
    EXPECT_EQ(probe->last(), "up 6 7 2");
}

/// Of several motions in one turn the last counts, but none is moved past a press.
TEST_F(EventTest, MotionsAreMerged) {
    point(5, 5);
    probe->log.clear();
    xdo("mousemove 129 140 mousemove 130 140 mousemove 131 141 mousedown 1 mousemove 140 150 "
        "mousemove 150 160 "
        "mouseup 1 mousemove 151 161");
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
        const char* commands;
        std::vector<int> presses;
    } cases[] = {{"click 1 click 1 click 1", {1, 9, 1}},
                 {"click 1 mousemove_relative 8 0 click 1", {1, 1}},
                 {"click 1 mousemove_relative -- -7 7 click 1", {1, 9}},
                 {"click 1 click 4 click 1", {1, 9}}};
    int x = 10; // each case elsewhere
    for (const auto& c : cases) {
        point(x += 20, 40);
        probe->log.clear();
        xdo(c.commands);
        EXPECT_EQ(presses(), c.presses) << c.commands;
    }
}

TEST_F(EventTest, TheWheelHasTwoAxes) {
    point(10, 10);
    probe->log.clear();
    xdo("click 4 click 5 click 6 click 7 click 8");
    EXPECT_EQ(probe->log, (std::vector<std::string>{"wheel 10 10 0 32 0", "wheel 10 10 0 -32 0",
                                                    "wheel 10 10 0 0 32", "wheel 10 10 0 0 -32"}));
}

TEST_F(EventTest, AnUnusedWheelClimbsToTheParents) {
    Target taker([] {});
    taker.takes = true;
    win->clientGroup->onWheel = taker.wheel();
    point(10, 10);
    xdo("click 5");
    EXPECT_TRUE(probe->saw("wheel 10 10 0 -32 0"));
    EXPECT_EQ(taker.dy, -32);
    EXPECT_EQ(taker.at, asPoint(30, 40)) << "from its own corner";
}

TEST_F(EventTest, WhileOneControlIsExclusiveNoOtherIsPressed) {
    auto* other = new ProbeCtrl(win.get(), "other", 130, 30, 40, 40);
    win->addControl(other);
    app->exclusiveCtrl = other;
    point(10, 10);
    xdo("click 1");
    EXPECT_TRUE(presses().empty());
    point(120, 10);
    xdo("click 1");
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
    xdo("mousemove 600 400"); // out of the window
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
    const char *step = "mousemove 455 155", *click = "click 1",
               *press = "mousedown 1 mousemove_relative 15 0 mouseup 1";
    const struct {
        std::string handler;
        const char* commands;
    } cases[] = {
        {"down", click},      {"move", step},   {"pushed", press}, {"up", click},
        {"wheel", "click 4"}, {"key", "key a"}, {"enter", step},   {"leave", "mousemove 600 400"},
        {"drag", press},      {"over", press},  {"drop", press},   {"timer", nullptr},
        {"focus", nullptr},   {"blur", nullptr}};
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
            if (c.handler != "enter") xdo("mousemove 450 150");
            if (c.commands) xdo(c.commands);
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

/// A window of its own that goes with a control takes along first what waits in it to be deleted.
TEST_F(EventTest, WhatWaitsInAWindowDiesBeforeIt) {
    std::string died;
    struct Inner : CCtrl {
        std::string& log;
        Inner(CWin* owner, std::string& to) : CCtrl(owner, "inner", 0, 0, 9, 9), log(to) {}
        ~Inner() override { log += "inner "; }
    };
    struct Owner : CCtrl {
        std::string& log;
        std::unique_ptr<CWin> room;
        Owner(CWin* owner, std::string& to) : CCtrl(owner, "owner", 0, 0, 9, 9), log(to) {}
        ~Owner() override {
            room.reset();
            log += "owner";
        }
    };
    auto* owner = new Owner(win.get(), died);
    owner->room = std::make_unique<CWin>(app.get(), nullptr, "room", 0, 0, 50, 50, winNoBorder);
    owner->room->addControl(new Inner(owner->room.get(), died));
    win->addControl(owner);
    probe->onTick = [&] {
        owner->room->clear();
        win->clientGroup->controls.remove(owner);
        app->deleteLater(owner);
    };
    app->addTimer(probe, 10, false);
    EXPECT_TRUE(pumpUntil([&] { return died == "inner owner"; })) << died;
}

TEST_F(EventTest, AModalWindowMayDeleteItself) {
    int alive = 0;
    auto* dialog = new CWin(app.get(), win.get(), "dialog", 400, 100, 150, 100, winNoBorder);
    dialog->addControl(new Victim(
        dialog, "timer", [&] { app->deleteLater(dialog); }, alive));
    app->addTimer(dialog->clientGroup->controls.items(0), 20, false);
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

/// Timers go by the clock: a period of 30 ms fires 10 times in 300, whatever the
/// time that events took, and never twice for what was missed.
TEST_F(EventTest, TimersKeepTimeAndPhase) {
    using Clock = std::chrono::steady_clock;
    app->idle();
    const auto start = Clock::now();
    app->addTimer(probe, 30, true);
    EXPECT_TRUE(pumpUntil([&] { return probe->log.size() >= 10; }));
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(290));
    probe->log.clear();
    const auto stalled = Clock::now();
    app->addTimer(probe, 30, true);
    while (Clock::now() - stalled < std::chrono::milliseconds(200)) std::this_thread::yield();
    app->idle();
    EXPECT_EQ(probe->log.size(), 1U);
    const auto late = Clock::now();
    for (int turn = 0; turn < 6; turn++) app->idle();
    const auto periods = (Clock::now() - late) / std::chrono::milliseconds(30);
    EXPECT_LE(probe->log.size(), size_t(periods) + 2) << "what was missed is made up for";
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
    std::string last;
    const auto note = [&](const char* what, const Target& from) {
        last = what + std::to_string(from.at.x) + " " + std::to_string(from.at.y);
    };
    Target over([&] { note("over ", over); }), drop([&] { note("drop ", drop); });
    CWin other(app.get(), nullptr, "other", 400, 100, 200, 200, winNoBorder);
    auto* panel = new CGroup(&other, "panel", 10, 10, 150, 150);
    panel->onDrop = drop.mouse();
    panel->onDragOver = over.mouse();
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
    xdo("mousedown 1");
    xdo("mousemove_relative 8 0");
    EXPECT_EQ(starts, 0);
    xdo("mousemove_relative 1 0");
    EXPECT_EQ(starts, 1);
    EXPECT_TRUE(app->hasDragType(dropSample) && app->hasDragObj(&dragged));
    EXPECT_TRUE(app->dragHasObject(7, 0) && !app->hasDragType(dropFile));
    xdo("mousemove 440 150");
    EXPECT_EQ(last, "over 30 40");
    xdo("mousemove 395 150"); // left of the window: the last word to the former one
    EXPECT_EQ(last, "over -15 40");
    xdo("mousemove 441 151");
    xdo("mouseup 1");
    EXPECT_EQ(last, "drop 31 41");
    EXPECT_EQ(starts, 1);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(app->dragList, nullptr);
    EXPECT_EQ(app->dragCtrl, nullptr);
    point(50, 40);
    xdo("mousedown 1 mousemove_relative 20 0");
    win->hide(); // its release will never come
    EXPECT_EQ(ends, 2);
    EXPECT_EQ(app->dragCtrl, nullptr);
    xdo("mouseup 1");
}

namespace {
/// Looks at the screen in the middle of its paint.
struct Looker : ProbeCtrl {
    using ProbeCtrl::ProbeCtrl;
    std::function<void()> look;
    void paint(CGraphic* g, CRect rect) override {
        look();
        ProbeCtrl::paint(g, rect);
    }
};
} // namespace

/// While a corner or a control is dragged the screen shows every control whole: between any two
/// events, and in the middle of a repaint.
TEST_F(EventTest, AShotInMidDragShowsWholeControls) {
    win = std::make_unique<CWin>(app.get(), nullptr, "framed", 100, 100, 200, 150, winSizable);
    probe = new ProbeCtrl(win.get(), "probe", 20, 30, 100, 80);
    auto* eye = new Looker(win.get(), "eye", 0, 0, 10, 10);
    int shots = 0;
    const auto look = [&] {
        shots++;
        EXPECT_EQ(Shot(win->handle, 200, 150).count(0x00ff00), 100 * 80) << shots;
    };
    Target mover([&] {
        if (win->mouseCtrl) probe->setBounds(probe->left + 2, probe->top + 1, 100, 80);
        win->redraw();
    });
    probe->fill = 0x00ff00;
    probe->onMouseMove = mover.mouse();
    win->show(true);
    win->addControl(eye); // painted first, when the background is done
    win->addControl(probe);
    win->redraw();
    eye->look = [] {};
    settle();
    eye->look = look;
    for (const char* start : {"mousemove 299 249 mousedown 1", "mousemove 170 170 mousedown 1"}) {
        xdo(start);
        const int before = shots;
        for (int step = 0; step < 5; step++) {
            xdotool("mousemove_relative 3 2");
            XEvent event;
            for (XSync(liveDisplay(), False); app->nextEvent(event); eye->look())
                app->handleEvent(event);
            app->paintFrame();
        }
        xdo("mouseup 1");
        EXPECT_GE(shots, before + 10);
    }
    EXPECT_EQ(win->getSize(), asPoint(215, 160));
    EXPECT_EQ(probe->left, 30);
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
