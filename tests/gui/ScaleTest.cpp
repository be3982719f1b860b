#include "TestServer.h"

#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/Drawing.h"
#include "gui/Scale.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>

#include <cmath>

namespace {

constexpr int red = 0xff0000, blue = 0x0000ff, black = 0;
constexpr int scales[] = {100, 125, 150, 200, 275, 300};

using ScaleTest = GuiTest;

int rounded(int length, int percent) {
    return int(std::floor(length * percent / 100.0 + 0.5));
}

} // namespace

TEST(Scale, IsTheNearestStepOfTheWishOrTheDisplay) {
    struct Case {
        int wanted;
        double dotsPerInch;
        int percent;
    };
    const Case cases[] = {{150, 96, 150}, {160, 0, 150}, {50, 0, 100},          {900, 96, 300},
                          {0, 0, 100},    {0, 96, 100},  {0, 120, 125},         {0, 192, 200},
                          {0, 1e9, 300},  {0, -5, 100},  {0, std::nan(""), 100}};
    for (const Case& c : cases)
        EXPECT_EQ(chooseScale(c.wanted, c.dotsPerInch), c.percent) << c.wanted << c.dotsPerInch;
}

/// Edges go to the nearest device edge; pixels and lengths that came from there go back.
TEST(Scale, LogicalLengthsSurviveTheWayThereAndBack) {
    for (const int percent : scales) {
        scalePercent = percent;
        for (int n = -700; n <= 700; n++) {
            EXPECT_EQ(toDevice(n), rounded(n, percent)) << n << " at " << percent;
            EXPECT_EQ(toLogicalSize(toDevice(n)), n) << percent;
            for (int pixel = toDevice(n); pixel < toDevice(n + 1); pixel++)
                EXPECT_EQ(toLogical(pixel), n) << pixel << " at " << percent;
        }
        EXPECT_EQ(toLogical(toDevice(asRect(-3, 1, 4, 9))), asRect(-3, 1, 4, 9)) << percent;
    }
    scalePercent = lowestScale;
}

/// Lines are as thick as the rounded scale in every place, and frames stay inside.
TEST_F(ScaleTest, LinesAreEquallyThickEverywhere) {
    for (const int percent : scales) {
        reopen(percent);
        const int thick = rounded(1, percent);
        CBitmap bitmap(60, 40);
        CGraphic* g = bitmap.graphic.get();
        g->setLineCol(red);
        for (int at = 3; at < 20; at++) {
            g->fillRect(black, bitmap.getRect());
            g->drawLine(at, 5, at + 10, 5);
            Shot now = Shot(bitmap);
            const int left = rounded(at, percent), top = rounded(5, percent);
            const CRect line = {left, top, rounded(at + 10, percent), top + thick};
            EXPECT_EQ(now.boundsOf(red), line) << at << " at " << percent;
            g->fillRect(black, bitmap.getRect());
            g->fillLine(red, asRect(2, at, 50, at + 1));
            now = Shot(bitmap);
            EXPECT_EQ(now.boundsOf(red).height(), thick) << at << " at " << percent;
            g->fillRect(black, bitmap.getRect());
            g->frameRect(red, asRect(at, at, at + 20, at + 10));
            now = Shot(bitmap);
            const CRect frame = toDevice(asRect(at, at, at + 20, at + 10));
            EXPECT_EQ(now.boundsOf(red), frame) << at << " at " << percent;
            EXPECT_EQ(now.count(red), 2 * thick * (frame.width() + frame.height() - 2 * thick));
        }
    }
}

/// Shapes are as fine as the screen: an arrow narrows by a device pixel a side from line to line, a
/// gradient has a colour for each line, and round corners lack one dot.
TEST_F(ScaleTest, ShapesUseEveryDevicePixel) {
    for (const int percent : scales) {
        reopen(percent);
        CBitmap bitmap(40, 40);
        CGraphic* g = bitmap.graphic.get();
        g->fillRect(black, bitmap.getRect());
        drawArrow(g, red, asRect(3, 3, 36, 36), dirDown, 4);
        const int lines = rounded(5, percent);
        Shot now = Shot(bitmap);
        EXPECT_EQ(now.boundsOf(red).height(), lines) << percent;
        EXPECT_EQ(now.count(red), lines * lines) << percent; // 1 + 3 + 5 + ...
        const ClipScope scope(g, asRect(5, 7, 31, 33));
        drawGradient(g, asRect(0, 0, 26, 26), 0, 0xff, gradientDown);
        now = Shot(bitmap);
        const CRect area = toDevice(asRect(5, 7, 31, 33));
        for (int y = area.top; y < area.bottom; y++)
            EXPECT_NEAR(now.at(area.left, y), 255.0 * (y - area.top) / (area.height() - 1), 0.51)
                << y << " at " << percent;
        for (const bool frame : {false, true}) {
            g->fillRect(black, asRect(0, 0, 26, 26));
            if (frame)
                roundFrame(g, red, asRect(1, 2, 24, 25));
            else
                roundRect(g, red, asRect(1, 2, 24, 25));
            now = Shot(bitmap);
            const CRect outer = toDevice(asRect(6, 9, 29, 32));
            const int dot = rounded(1, percent);
            EXPECT_EQ(now.boundsOf(red), outer) << percent;
            EXPECT_EQ(now.at(outer.left + dot - 1, outer.top + dot - 1), black) << percent;
            EXPECT_EQ(now.at(outer.left + dot, outer.bottom - 1), red) << percent;
            EXPECT_EQ(now.at(outer.right - 1, outer.top + dot), red) << percent;
        }
    }
}

/// A window, its events, what it paints and where it stands grow as one.
TEST_F(ScaleTest, WindowsAndEventsStayLogical) {
    for (const int percent : {150, 200}) {
        reopen(percent);
        auto win = bareWindow(201, 103);
        auto* probe = new ProbeCtrl(win.get(), "probe", 21, 11, 50, 30);
        probe->fill = red;
        win->addControl(probe);
        win->redraw();
        settle();
        const CPoint size = toDevice(asPoint(201, 103)), at = toDevice(asPoint(100, 100));
        Window root;
        int x, y;
        unsigned w, h, border, depth;
        XGetGeometry(liveDisplay(), win->handle, &root, &x, &y, &w, &h, &border, &depth);
        EXPECT_EQ(asRect(x, y, int(w), int(h)), asRect(at.x, at.y, size.x, size.y));
        EXPECT_EQ(win->getSize(), asPoint(201, 103));
        EXPECT_EQ(win->getPos(true), asPoint(100, 100));
        const CRect shown = toDevice(asRect(21, 11, 71, 41));
        EXPECT_EQ(Shot(win->handle, size.x, size.y).boundsOf(red), shown) << percent;

        const std::string px = std::to_string(at.x + toDevice(21 + 7)),
                          py = std::to_string(at.y + toDevice(11 + 9));
        act({"mousemove", px, py, "mousedown", "1", "mouseup", "1"});
        EXPECT_TRUE(probe->saw("down 7 9 1")) << percent;
        EXPECT_EQ(mousePos(), asPoint(128, 120));
        EXPECT_EQ(app->winAtPos(128, 120), win.get());

        probe->paints = 0;
        probe->fill = blue; // only what is asked for is painted again
        probe->redraw();
        settle();
        EXPECT_EQ(probe->paints, 1);
        EXPECT_EQ(Shot(win->handle, size.x, size.y).boundsOf(blue), shown) << percent;
        win->move(33, 44, 155, 77);
        settle();
        EXPECT_EQ(win->getSize(), asPoint(155, 77));
        EXPECT_EQ(win->getPos(true), asPoint(33, 44));
        win.reset();
    }
}
