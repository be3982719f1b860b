#include "ui/Signs.h"

#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/Scale.h"
#include "gui/TestServer.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>

#include <cmath>
#include <numbers>

namespace {

constexpr int white = 0xffffff, black = 0, side = 20;

/// What is covered of the picture, in device pixels: white counts 1, black 0.
double coveredArea(const CBitmap& picture) {
    const Shot shot(picture.pixmap, picture.deviceWidth(), picture.deviceHeight());
    double area = 0;
    for (int y = 0; y < picture.deviceHeight(); y++)
        for (int x = 0; x < picture.deviceWidth(); x++) area += (shot.at(x, y) & 0xff) / 255.0;
    return area;
}

} // namespace

/// Against the areas of the plane figures, at an odd place. A slanted edge of a single pixel's
/// width is off by two percent, as coverage goes by the distance of the pixel's middle.
TEST_F(GuiTest, SignsCoverTheirArea) {
    using std::numbers::pi;
    const std::vector<Sign> signs = {
        {{0, {{2, 3}, {12, 3}, {12, 7}, {2, 7}}}}, // a bar
        {{6.5, {{10, 10}}}},                       // a disc
        {{1, {{4, 5}, {14, 15}}}},                 // a stroke
        {{0, {{4, 2}, {4, 16}, {18, 9}}}},         // a triangle
        {{0, {{2, 2}, {8, 2}, {8, 6}, {2, 6}}}, {0, {{6, 2}, {14, 2}, {14, 6}, {6, 6}}}}, // overlap
    };
    const double areas[] = {40, pi * 6.5 * 6.5, pi + 2 * std::hypot(10, 10), 98, 48};
    for (const int percent : {100, 200, 300}) {
        app.reset();
        wantedScale = percent;
        app = std::make_unique<CApp>();
        ASSERT_TRUE(app->open());
        SignSet set(signs, side, side);
        const double scale = percent / 100.0;
        for (size_t i = 0; i < signs.size(); i++) {
            CBitmap picture(2 * side, 2 * side);
            picture.graphic->fillRect(black, picture.getRect());
            set.draw(picture.graphic.get(), int(i), asPoint(7, 3), white, black);
            EXPECT_NEAR(coveredArea(picture), areas[i] * scale * scale,
                        0.03 * areas[i] * scale * scale)
                << "sign " << i << " at " << percent;
            if (i != 0) continue;
            const Shot shot(picture.pixmap, picture.deviceWidth(), picture.deviceHeight());
            EXPECT_EQ(shot.boundsOf(white), toDevice(asRect(9, 6, 19, 10))) << percent;
        }
    }
}

/// Tracks of sixteen colours, heard and faint, chosen and not, are shown together: what was drawn
/// of them is kept, so that painting them again only copies.
TEST_F(GuiTest, SignsAreDrawnOnceForEachPairOfColours) {
    constexpr int colours = 32, grounds = 2;
    const std::vector<Sign> signs = {{{6.5, {{10, 10}}}}};
    SignSet set(signs, side, side);
    CBitmap picture(side, side);
    const auto paintAll = [&] {
        const unsigned long before = NextRequest(liveDisplay());
        for (int i = 0; i < colours * grounds; i++)
            set.draw(picture.graphic.get(), 0, asPoint(0, 0), i / grounds * 0x010203, i % grounds);
        return NextRequest(liveDisplay()) - before;
    };
    const unsigned long first = paintAll();
    EXPECT_LT(paintAll() * 4, first);
}
