#include "ControlFixture.h"

#include "gui/Keys.h"
#include "gui/PanZoom.h"
#include "gui/TouchTranslator.h"
#include "gui/controls/CRangebar.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <cmath>

namespace {

/// A box whose drags tell what they are asked to do.
class Dragged : public ProbeCtrl, public DragHandler {
public:
    int canScroll = 0; ///< pixels down

    using ProbeCtrl::ProbeCtrl;
    void mouseDown(int x, int y, int btn) override {
        win->app->drag.start(this, this, asPoint(x, y), btn);
    }
    void dragBegin(const DragPoint& p) override { tell("begin", p); }
    void dragMove(const DragPoint& p) override { tell("to", p); }
    void dragEnd(const DragPoint& p) override { tell("end", p); }
    void dragClick(const DragPoint& p) override { tell("click", p); }
    void dragCancel() override { log.emplace_back("cancel"); }
    bool dragWheel(const DragPoint&, int dy, int) override {
        log.push_back("wheel " + std::to_string(dy));
        return true;
    }
    CPoint dragScroll(CPoint by) override {
        const int done = std::min(by.y, canScroll);
        canScroll -= done;
        return asPoint(0, done);
    }

private:
    void tell(const char* what, const DragPoint& p) {
        const CPoint by = asPoint(p.at.x - p.anchor.x, p.at.y - p.anchor.y);
        log.push_back(std::string(what) + " " + std::to_string(by.x) + " " + std::to_string(by.y) +
                      " " + std::to_string(p.btn));
    }
};

class DragTest : public ControlTest {};

} // namespace

TEST_F(DragTest, BeginsBeyondAClickAndTellsAllThatHappens) {
    auto* box = add(new Dragged(win.get(), "box", 20, 20, 100, 100));
    struct Case {
        const char *commands, *log;
    };
    const Case cases[] = {
        {"mousedown 1 mousemove_relative 2 3 mouseup 1", "click 2 3 1"},
        {"mousedown 3 mousemove_relative 9 0 mouseup 3", "begin 9 0 2,to 9 0 2,end 9 0 2"},
        {"mousedown 1 mousemove_relative 0 9 keydown shift keyup shift mouseup 1",
         "begin 0 9 1,to 0 9 1,to 0 9 17,to 0 9 1,end 0 9 1"},
        {"mousedown 1 mousemove_relative 5 5 click 4 click 5 mouseup 1",
         "begin 5 5 1,to 5 5 1,wheel 32,wheel -32,end 5 5 1"},
        {"mousedown 1 mousemove_relative 5 5 key Escape mousemove_relative 5 5 mouseup 1",
         "begin 5 5 1,to 5 5 1,cancel"},
        {"mousedown 1 mousemove_relative 5 5 click 3 mouseup 1", "begin 5 5 1,to 5 5 1,cancel"},
    };
    for (const Case& c : cases) {
        at(50, 50);
        box->log.clear();
        xdo(c.commands);
        std::string told;
        for (const std::string& line : box->log)
            if (line.substr(0, 4) != "move" && line.substr(0, 2) != "up")
                told += (told.empty() ? "" : ",") + line;
        EXPECT_EQ(told, c.log) << c.commands;
        EXPECT_FALSE(app->drag.running()) << c.commands;
    }
}

/// While the pointer rests at the edge, the content goes on and the anchor with it.
TEST_F(DragTest, ScrollsAtAnEdgeUntilThereIsNoMore) {
    auto* box = add(new Dragged(win.get(), "box", 0, 0, 100, 100));
    box->canScroll = 70;
    at(50, 50, "mousedown 1 mousemove_relative 0 60");
    EXPECT_TRUE(pumpUntil([&] { return box->canScroll == 0; }));
    EXPECT_EQ(box->last(), "to 0 130 1");
    xdo("mouseup 1");
    EXPECT_TRUE(box->saw("end 0 130 1"));
    EXPECT_EQ(app->timers.getCount(), 0) << "nothing ticks afterwards";
    // A control or window that goes takes its drag along.
    at(50, 50, "mousedown 1 mousemove_relative 9 9");
    EXPECT_TRUE(app->drag.running());
    win->hide();
    EXPECT_EQ(box->last(), "cancel");
    win->show(true);
    at(50, 50, "mousedown 1 mousemove_relative 9 9");
    win->clear();
    settle();
    EXPECT_FALSE(app->drag.running());
    xdo("mouseup 1");
}

/// Of 1000, what is seen: its middle pans, its ends zoom, all of it can be given back.
TEST_F(DragTest, ARangeBarPansAndZooms) {
    auto* bar = add(new CRangebar(win.get(), "range", 0, 0, 200, 16));
    bar->setContent(1000, 50);
    struct Case {
        int x;
        const char* commands;
        double from, span;
    };
    const Case cases[] = {
        // the thumb is 40 to 80 at first, and a pixel is 5
        {60, "mousedown 1 mousemove_relative 20 0 mouseup 1", 300, 200},
        {60, "mousedown 1 mousemove_relative 0 60 mousemove_relative -- -100 0 mouseup 1", 0, 200},
        {78, "mousedown 1 mousemove_relative 20 0 mouseup 1", 200, 300},
        {41, "mousedown 1 mousemove_relative 10 0 mouseup 1", 250, 150},
        {41, "mousedown 1 mousemove_relative 90 0 mouseup 1", 350, 50}, // the least
        {60, "mousedown 1 mousemove_relative 20 0 key Escape mouseup 1", 200, 200},
        {150, "click 1", 400, 200},
        {10, "click 1", 0, 200},
        {60, "click 5", 220, 200},
        {60, "click 4", 180, 200},
        {100, "keydown ctrl click 4 keyup ctrl", 220, 160}, // the middle of what is seen stays
        {60, "key Right", 220, 200},
        {60, "key Prior", 0, 200},
        {60, "key End", 800, 200},
        {60, "key plus", 220, 160},
        {60, "key minus", 175, 250},
        {60, "key Delete", 0, 1000},
    };
    for (const Case& c : cases) {
        bar->setRange(200, 200);
        win->setKeyCtrl(bar);
        at(c.x, 8, c.commands);
        EXPECT_NEAR(bar->from(), c.from, 1e-9) << c.x << " " << c.commands;
        EXPECT_NEAR(bar->span(), c.span, 1e-9) << c.x << " " << c.commands;
    }
    bar->setContent(100, 50);
    EXPECT_EQ(bar->span(), 100);
}

namespace {

/// A view of a plane: a point p of it is seen at (p - origin) * scale.
class Plane : public ProbeCtrl, public ZoomView {
public:
    PanZoom hands{this, this};
    double originX = 0, originY = 0, scaleX = 1, scaleY = 1;

    using ProbeCtrl::ProbeCtrl;
    CPoint panBy(CPoint by) override {
        originX -= by.x / scaleX;
        originY -= by.y / scaleY;
        return by;
    }
    void zoomAt(CPoint at, double factor, bool across) override {
        double& origin = across ? originY : originX;
        double& scale = across ? scaleY : scaleX;
        const int place = across ? at.y : at.x;
        origin += place / scale - place / (scale * factor);
        scale *= factor;
    }
    void mouseDown(int x, int y, int btn) override { hands.press(x, y, btn); }
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override {
        return hands.wheel(x, y, btn, dy, dx);
    }
    bool touch(int x, int y, int btn, const TouchStep& step) override {
        return hands.touch(x, y, btn, step);
    }
};

} // namespace

TEST_F(DragTest, AViewIsPannedAndZoomedWhereThePointerIs) {
    auto* plane = add(new Plane(win.get(), "plane", 10, 10, 150, 120));
    const double notch = PanZoom::notchPixels, zoom = PanZoom::notchFactor;
    struct Case {
        const char* commands;
        double x, y, scaleX, scaleY;
    };
    const Case cases[] = {
        {"click 5", 0, notch, 1, 1},
        {"click 6", -notch, 0, 1, 1},
        {"keydown shift click 5 keyup shift", notch, 0, 1, 1},
        {"keydown ctrl click 4 keyup ctrl", 40 - 40 / zoom, 0, zoom, 1},
        {"keydown ctrl keydown shift click 5 keyup shift keyup ctrl", 0, 50 - 50 * zoom, 1,
         1 / zoom},
        {"mousedown 2 mousemove_relative 7 -5 mouseup 2", -7, 5, 1, 1},
        {"mousedown 2 mousemove_relative 7 -5 key Escape mouseup 2", 0, 0, 1, 1},
    };
    for (const Case& c : cases) {
        plane->originX = plane->originY = 0;
        plane->scaleX = plane->scaleY = 1;
        at(50, 60, c.commands);
        EXPECT_NEAR(plane->originX, c.x, 1e-9) << c.commands;
        EXPECT_NEAR(plane->originY, c.y, 1e-9) << c.commands;
        EXPECT_NEAR(plane->scaleX, c.scaleX, 1e-9) << c.commands;
        EXPECT_NEAR(plane->scaleY, c.scaleY, 1e-9) << c.commands;
    }
    plane->originX = plane->originY = 0;
    plane->scaleX = plane->scaleY = 1;
    win->touch(50, 60, 0, {0, 0.25, 1});
    EXPECT_EQ(plane->originY, -std::trunc(notch / 4));
    win->touch(50, 60, 0, {0, 0, 2});
    EXPECT_EQ(plane->scaleX, 2);
    EXPECT_EQ(plane->originX, 20);
}

/// What no control takes finely turns the wheel when it makes a whole notch.
TEST_F(DragTest, FineStepsAddUpToTurnsOfTheWheel) {
    auto* probe = add(new ProbeCtrl(win.get(), "probe", 0, 0, 100, 100));
    for (int i = 0; i < 9; i++) win->touch(5, 6, 0, {0.125, 0.25, 1});
    EXPECT_EQ(std::count(probe->log.begin(), probe->log.end(), "wheel 5 6 0 32 0"), 1);
    EXPECT_EQ(std::count(probe->log.begin(), probe->log.end(), "wheel 5 6 0 32 32"), 1);
    EXPECT_EQ(probe->log.size(), 2U);
}

/// A device whose axes 2 and 3 scroll, by 15 and -10 for a notch, as the server tells of it.
TEST(TouchTranslator, ScrollAxesAndPinchesBecomeSteps) {
    XIScrollClassInfo axes[2]{};
    for (int i = 0; i < 2; i++) {
        axes[i].type = XIScrollClass;
        axes[i].number = 2 + i;
        axes[i].scroll_type = i == 0 ? XIScrollTypeVertical : XIScrollTypeHorizontal;
        axes[i].increment = i == 0 ? 15 : -10;
    }
    XIAnyClassInfo* classes[] = {reinterpret_cast<XIAnyClassInfo*>(&axes[0]),
                                 reinterpret_cast<XIAnyClassInfo*>(&axes[1])};
    XIDeviceInfo device{};
    device.deviceid = 11;
    device.num_classes = 2;
    device.classes = classes;
    TouchTranslator translator;
    translator.setDevice(&device);
    const struct {
        int source;
        unsigned char axes; ///< a bit for each valuator that is told
        std::vector<double> values;
        bool steps;
        double dx, dy;
    } cases[] = {{11, 0b0100, {30}, true, 0, -2},        {11, 0b1100, {-7.5, 5}, true, 0.5, 0.5},
                 {11, 0b1011, {4, 5, -10}, true, -1, 0}, {11, 0b0011, {4, 5}, false, 0, 0},
                 {12, 0b0100, {30}, false, 0, 0},        {11, 0b0100, {NAN}, false, 0, 0}};
    unsigned long time = 100;
    for (const auto& c : cases) {
        unsigned char mask = c.axes;
        std::vector<double> values = c.values;
        XIRawEvent event{};
        event.sourceid = c.source;
        event.time = ++time;
        event.valuators = {1, &mask, values.data()};
        const auto step = translator.scroll(&event);
        ASSERT_EQ(step.has_value(), c.steps) << time;
        EXPECT_EQ(translator.isCopy(time), c.steps) << time;
        EXPECT_FALSE(translator.isCopy(time + 1));
        if (!step) continue;
        EXPECT_DOUBLE_EQ(step->dx, c.dx) << time;
        EXPECT_DOUBLE_EQ(step->dy, c.dy) << time;
    }
    XIGesturePinchEvent pinch{};
    for (int round = 0; round < 2; round++) { // each pinch begins at 1
        pinch.evtype = XI_GesturePinchBegin;
        pinch.scale = 1;
        EXPECT_FALSE(translator.pinch(&pinch));
        pinch.evtype = XI_GesturePinchUpdate;
        const double scales[] = {2, 3, 3, 0, 1.5}, factors[] = {2, 1.5, 0, 0, 0.5};
        for (int i = 0; i < 5; i++) {
            pinch.scale = scales[i];
            const auto step = translator.pinch(&pinch);
            EXPECT_EQ(step.has_value(), factors[i] > 0) << i;
            EXPECT_DOUBLE_EQ(step ? step->zoom : 0, factors[i]) << i;
        }
        pinch.evtype = XI_GesturePinchEnd;
        EXPECT_FALSE(translator.pinch(&pinch));
    }
}
