#include "TestServer.h"

#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/DirtyAreas.h"
#include "gui/Drawing.h"
#include "gui/Fonts.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

constexpr int red = 0xff0000, blue = 0x0000ff, black = 0;

/// Tests that draw on a bitmap of 64 x 48 black pixels.
class CGraphicTest : public GuiTest {
protected:
    void SetUp() override {
        GuiTest::SetUp();
        if (!usable()) return;
        bitmap = std::make_unique<CBitmap>(64, 48);
        g = bitmap->graphic.get();
        g->fillRect(black, bitmap->getRect());
        g->setLineCol(red);
        g->setFillCol(red);
    }
    void TearDown() override {
        bitmap.reset();
        GuiTest::TearDown();
    }
    Shot shot() const { return Shot(bitmap->pixmap, 64, 48); }

    std::unique_ptr<CBitmap> bitmap;
    CGraphic* g = nullptr;
};

} // namespace

/// Every primitive fills exactly the pixels that its rectangle or its ends tell: right, bottom and
/// end points lie outside, corners are sorted, the origin is added, the clip is honoured.
TEST_F(CGraphicTest, PrimitivesCoverTheirPixels) {
    struct Case {
        std::function<void(CGraphic*)> draw;
        CRect bounds;
        int count;
        CRect scope = asRect(0, 0, 64, 48); ///< origin and clip
        CRect serverClip = CRect();
    };
    const CPoint triangle[17] = {asPoint(10, 10), asPoint(20, 10), asPoint(10, 20)};
    const CRect box = asRect(4, 5, 10, 9), wide = asRect(2, 2, 12, 8), arrow = asRect(0, 0, 20, 20);
    const Case cases[] = {
        {[](CGraphic* c) { c->drawLine(0, 0, 0, 0); }, {0, 0, 1, 1}, 1},
        {[](CGraphic* c) { c->drawLine(0, 0, 10, 0); }, {0, 0, 10, 1}, 10},
        {[](CGraphic* c) { c->drawLine(10, 5, 0, 5); }, {1, 5, 11, 6}, 10},
        {[](CGraphic* c) { c->drawLine(3, 2, 3, 9); }, {3, 2, 4, 9}, 7},
        {[](CGraphic* c) { c->drawLine(0, 0, 8, 8); }, {0, 0, 8, 8}, 8},
        {[&](CGraphic* c) { c->fillRect(box); }, box, 24},
        {[](CGraphic* c) { c->fillRect(asRect(10, 9, 4, 5)); }, box, 24},
        {[](CGraphic* c) { c->fillRect(asRect(70, 0, 90, 10)); }, {}, 0},
        {[](CGraphic* c) { c->fillRect(asRect(-5, 2, 4, 30)); },
         {10, 12, 14, 20},
         32,
         {10, 10, 20, 20}},
        {[&](CGraphic* c) { c->frameRect(box); }, box, 16},
        {[&](CGraphic* c) { c->frameRect(box); }, {4, 5, 6, 9}, 6, {0, 0, 6, 48}},
        {[](CGraphic* c) { c->drawLine(0, 7, 20, 7); },
         {0, 7, 5, 8},
         5,
         {0, 0, 64, 48},
         {0, 0, 5, 48}},
        {[&](CGraphic* c) { c->drawPoly(triangle, 17); }, {}, 0}, // one corner too many
        {[&](CGraphic* c) { roundRect(c, red, wide); }, wide, 56},
        {[&](CGraphic* c) { roundFrame(c, red, wide); }, wide, 24},
        {[&](CGraphic* c) { drawArrow(c, red, arrow, dirDown, 4); }, {6, 8, 15, 13}, 25},
        {[&](CGraphic* c) { drawArrow(c, red, arrow, dirLeft, 4); }, {8, 6, 13, 15}, 25}};
    int number = 0;
    for (const Case& c : cases) {
        g->fillRect(black, bitmap->getRect());
        const CRect former = g->setClip(c.serverClip);
        {
            const ClipScope scope(g, c.scope);
            c.draw(g);
        }
        g->setClip(former);
        const Shot now = shot();
        EXPECT_EQ(now.boundsOf(red), c.bounds) << "case " << number;
        EXPECT_EQ(now.count(red), c.count) << "case " << number++;
    }
}

TEST_F(CGraphicTest, RasterOneDrawsTwiceToNothing) {
    g->fillRect(blue, {0, 0, 20, 20});
    g->setRaster(1);
    g->drawLine(2, 3, 12, 3);
    EXPECT_EQ(shot().at(5, 3), red ^ blue);
    g->drawLine(2, 3, 12, 3);
    g->setRaster(0);
    EXPECT_EQ(shot().count(blue), 400);
}

TEST_F(CGraphicTest, TextIsCutToItsBoxAndTheServerClipComesBack) {
    g->setClip({0, 0, 64, 40});
    g->drawText(red, "HHHHHHHHHHHHHHH", {10, 10, 21, 30}, textLeft);
    EXPECT_EQ(shot().boundsOf(red).right, 21);
    EXPECT_EQ(g->setClip({}), asRect(0, 0, 64, 40));
    g->fillRect(black, bitmap->getRect());
    const ClipScope scope(g, {0, 0, 15, 48});
    g->drawText(red, "HHHH", {10, 10, 60, 30}, textLeft);
    EXPECT_LE(shot().boundsOf(red).right, 15);
}

/// Lines run evenly from the first colour to the last, and back for the two mirrored directions.
TEST_F(CGraphicTest, GradientsGoFromOneColourToTheOther) {
    struct Case {
        int dir, x, y;
        double share;
    };
    const int from = asColor(0, 100, 200), to = asColor(200, 100, 0);
    const CRect rect = {0, 0, 21, 41};
    const Case cases[] = {
        {gradientAcross, 0, 5, 0},    {gradientAcross, 20, 5, 1},   {gradientAcross, 10, 5, 0.5},
        {gradientAcross, 7, 5, 0.35}, {gradientDown, 5, 0, 0},      {gradientDown, 5, 40, 1},
        {gradientDown, 5, 10, 0.25},  {gradientDownUp, 5, 20, 1},   {gradientDownUp, 5, 40, 0},
        {gradientDownUp, 5, 30, 0.5}, {gradientAcrossTo, 10, 5, 1}, {gradientAcrossTo, 20, 5, 0}};
    for (const Case& c : cases) {
        drawGradient(g, rect, from, to, c.dir);
        const int high = int(200 * c.share + 0.5), low = int(200 - 200 * c.share + 0.5);
        EXPECT_EQ(shot().at(c.x, c.y), high << 16 | 100 << 8 | low) << c.dir << " at " << c.share;
    }
}

/// Gloss: a quarter of the way to the shine at its weak end, all of it at its strong end.
TEST_F(CGraphicTest, GlossShinesInOneHalf) {
    const int color = asColor(40, 80, 120);
    const int high = asColor(148, 168, 188), low = asColor(67, 102, 137); // halfway to white
    drawGlossy(g, {0, 0, 20, 20}, color, 0.5f, 1);
    Shot up = shot();
    EXPECT_EQ(up.at(5, 1), high);
    EXPECT_EQ(up.at(5, 10), low);
    EXPECT_EQ(up.at(5, 11), color);
    EXPECT_EQ(up.at(0, 5), color);
    drawGlossy(g, {0, 0, 20, 20}, color, -0.5f, 0);
    Shot down = shot();
    EXPECT_EQ(down.at(5, 9), color);
    EXPECT_EQ(down.at(5, 10), low);
    EXPECT_EQ(down.at(5, 19), high);
}

TEST_F(CGraphicTest, ClipIsNarrowedAndAskedInTheOriginsCoordinates) {
    EXPECT_EQ(g->addClip({-10, 5, 30, 100}), asRect(0, 0, 64, 48));
    EXPECT_EQ(asRect(g->clipLeft, g->clipTop, g->clipRight, g->clipBottom), asRect(0, 5, 30, 48));
    g->originX = 10;
    g->originY = 10;
    EXPECT_EQ(g->intersectClip({-20, -20, 100, 100}), asRect(-10, -5, 20, 38));
}

TEST_F(CGraphicTest, ABitmapIsTurnedByAQuarter) {
    g->fillRect(red, asRect(3, 2, 4, 3));
    const auto turned = flipBitmap(bitmap.get());
    EXPECT_EQ(Shot(turned->pixmap, 48, 64).boundsOf(red), asRect(2, 64 - 1 - 3, 3, 64 - 3));
}

TEST_F(GuiTest, ColoursConvertAndMix) {
    struct Case {
        int got, expected;
    };
    const int teal = asColor(16, 128, 240);
    const Case cases[] = {{teal, 0x1080f0},
                          {asColor(-5, 300, 255), 0x00ffff},
                          {RGBToInt(teal), 16 + 128 * 256 + 240 * 65536},
                          {intToRGB(RGBToInt(teal)), teal},
                          {addBrightness(teal, 20), asColor(36, 148, 255)},
                          {addBrightness(teal, -20), asColor(0, 108, 220)},
                          {fadeCol(teal, asColor(17, 0, 240), 0.5), asColor(17, 64, 240)},
                          {fadeCol(teal, red, 0), teal},
                          {textOn(0xffffff), 0x101214},
                          {textOn(0x000000), 0xffffff}};
    for (const Case& c : cases) EXPECT_EQ(c.got, c.expected) << std::hex << c.expected;
    EXPECT_NEAR(contrast(0xffffff, 0x000000), 21.0, 1e-9);
    EXPECT_NEAR(contrast(0x777777, 0xffffff), 4.48, 0.01); // a known pair just below the limit
}

TEST(DirtyAreas, CoverWhatIsAddedAndStayApart) {
    DirtyAreas two;
    two.add(asRect(0, 0, 40, 10));
    two.add(asRect(900, 500, 940, 510));
    two.add(asRect(38, 0, 80, 10));
    ASSERT_EQ(two.all().size(), 2u) << "near ones are one, far ones are not";
    std::mt19937 random{1};
    const auto upTo = [&](unsigned n) { return int(random() % n); };
    for (int turn = 0; turn < 200; turn++) {
        DirtyAreas dirty;
        std::vector<CRect> added;
        for (int i = upTo(40); i >= 0; i--) {
            const int x = upTo(1500), y = upTo(900);
            added.push_back(asRect(x, y, x + upTo(100), y + upTo(100)));
            dirty.add(added.back());
        }
        EXPECT_LE(int(dirty.all().size()), DirtyAreas::most);
        for (const CRect& r : added)
            EXPECT_TRUE(r.empty() || std::ranges::any_of(dirty.all(), [&](const CRect& whole) {
                            return intersect(whole, r) == r;
                        }));
    }
}

/// Nothing that lies between what has changed is painted, and of a control only what was asked for.
TEST_F(GuiTest, PaintsOnlyWhatHasChanged) {
    const auto win = std::make_unique<CWin>(app.get(), nullptr, "Areas", 0, 0, 700, 500, 0);
    win->show(true);
    const auto probe = [&](int x, int y) {
        auto* ctrl = new ProbeCtrl(win.get(), "probe", x, y, 100, 100);
        win->addControl(ctrl);
        return ctrl;
    };
    ProbeCtrl *first = probe(10, 10), *between = probe(300, 200), *last = probe(550, 350);
    win->redraw();
    settle();
    const int before = between->paints;
    const int firstPaints = first->paints, lastPaints = last->paints;
    first->redraw();
    last->redraw(asRect(10, 10, 20, 20));
    first->fill = last->fill = red;
    settle();
    EXPECT_GT(first->paints, firstPaints);
    EXPECT_GT(last->paints, lastPaints);
    EXPECT_EQ(between->paints, before);
    const Shot shot(win->handle, 700, 500);
    const CPoint at = asPoint(last->absX, last->absY);
    EXPECT_EQ(shot.at(at.x + 15, at.y + 15), red);
    EXPECT_NE(shot.at(at.x + 50, at.y + 50), red);
}
