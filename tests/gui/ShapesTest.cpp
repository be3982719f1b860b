#include "TestServer.h"

#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/DrawBatch.h"
#include "gui/Fonts.h"
#include "gui/PixelPaper.h"
#include "gui/Scale.h"
#include "gui/Shapes.h"
#include "gui/XConnection.h"

#include <cmath>
#include <numbers>
#include <random>

namespace {

constexpr int white = 0xffffff, black = 0;

double brightness(int pixel) {
    return (pixel & 255) / 255.0;
}

/// All light that a picture holds, in whole pixels.
double inkOf(const CBitmap& bitmap) {
    const Shot shot(bitmap);
    double sum = 0;
    for (int y = 0; y < bitmap.deviceHeight(); y++)
        for (int x = 0; x < bitmap.deviceWidth(); x++) sum += brightness(shot.at(x, y));
    return sum;
}

std::unique_ptr<CBitmap> darkBitmap(int w, int h) {
    auto made = std::make_unique<CBitmap>(w, h);
    made->graphic->fillRect(black, made->getRect());
    return made;
}

/// On a server with the extension for blending or without it.
class ShapesTest : public testing::TestWithParam<bool> {
protected:
    void open(int percent) {
        app.reset();
        if (!server) {
            std::vector<std::string> options;
            if (!GetParam()) options = {"-extension", "RENDER"};
            server = std::make_unique<TestServer>(options);
        }
        setenv("DISPLAY", server->display.c_str(), 1);
        textSettings = {};
        wantedScale = percent;
        app = std::make_unique<CApp>();
        ASSERT_TRUE(app->open());
    }
    std::unique_ptr<TestServer> server;
    std::unique_ptr<CApp> app;
};

CPath star(double x, double y, double outer, double inner) {
    constexpr int tips = 5;
    CPath path;
    for (int i = 0; i < 2 * tips; i++) {
        const double angle = std::numbers::pi * i / tips, r = i % 2 ? inner : outer;
        if (i == 0)
            path.moveTo(x + r, y);
        else
            path.lineTo(x + r * std::cos(angle), y + r * std::sin(angle));
    }
    path.close();
    return path;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(WithAndWithoutBlending, ShapesTest, testing::Bool());

/// The light of each shape is its area by the formula, at every scale; anti-aliased within half a
/// percent or so, and in the plain form within the pixels of its edge.
TEST_P(ShapesTest, CoverTheirAreas) {
    struct Case {
        const char* name;
        std::function<void(CGraphic*)> draw;
        double area, edge; ///< logical pixels
    };
    const double pi = std::numbers::pi;
    const double starArea = 5 * 40 * 16 * std::sin(pi / 5);
    const CRect whole = asRect(0, 0, 120, 100);
    const double legsOverlap =
        3.0 - 0.3; // of the zigzag: 1 / tan of half its angle, less the bevel
    const Case cases[] = {
        {"circle",
         [&](CGraphic* g) {
             CPath path;
             path.arc(60, 50, 30, 0, 2 * pi);
             path.close();
             fillPath(g, path, white);
         },
         pi * 900, 2 * pi * 30},
        {"more than a circle",
         [&](CGraphic* g) {
             CPath path;
             path.arc(60, 50, 30, 0, 6.3);
             path.close();
             fillPath(g, path, white);
         },
         pi * 900, 2 * pi * 30},
        {"star", [&](CGraphic* g) { fillPath(g, star(60, 50, 40, 16), white); }, starArea, 300},
        {"half clear star", [&](CGraphic* g) { fillPath(g, star(60, 50, 40, 16), white, 0.5); },
         starArea / 2, 300},
        {"slanted line",
         [&](CGraphic* g) {
             CPath path;
             path.moveTo(20, 20);
             path.lineTo(100, 80);
             strokePath(g, path, 4, white);
         },
         400, 200},
        {"ring",
         [&](CGraphic* g) {
             CPath path;
             path.arc(60, 50, 30, 0, 2 * pi);
             strokePath(g, path, 5, white);
         },
         2 * pi * 30 * 5, 2 * pi * 60},
        {"curve",
         [&](CGraphic* g) { // a straight one, whose length is known
             CPath path;
             path.moveTo(10, 10);
             path.curveTo(40, 30, 70, 50, 100, 70);
             strokePath(g, path, 3, white);
         },
         3 * std::hypot(90, 60), 220},
        {"half clear box", [&](CGraphic* g) { fillAlpha(g, asRect(10, 10, 60, 50), white, 0.5); },
         1000, 90},
        {"star on paper",
         [&](CGraphic* g) { PixelPaper(g, whole).fill(white, star(60, 50, 40, 16)); }, starArea,
         300},
        {"half clear star, cut by the paper",
         [&](CGraphic* g) {
             PixelPaper(g, asRect(0, 0, 120, 50)).fill(white, star(60, 50, 40, 16), 0.5);
         },
         starArea / 4, 300},
        {"ring on paper",
         [&](CGraphic* g) {
             CPath path;
             path.arc(60, 50, 30, 0, 2 * pi);
             PixelPaper(g, whole).stroke(white, path, 5);
         },
         2 * pi * 30 * 5, 2 * pi * 60},
        {"zigzag on paper",
         [&](CGraphic* g) {
             CPath path;
             path.moveTo(-40, 20);
             for (int i = 1; i < 9; i++) path.lineTo(-40 + i * 20, i % 2 ? 80 : 20);
             PixelPaper(g, whole).stroke(white, path, 2);
         },
         6 * (2 * std::hypot(20, 60) - legsOverlap), 700}};
    for (const int percent : {100, 150, 300}) {
        open(percent);
        const double scale = percent / 100.0;
        for (const Case& c : cases) {
            const auto bitmap = darkBitmap(120, 100);
            c.draw(bitmap->graphic.get());
            const double wanted = c.area * scale * scale;
            const double room = GetParam() ? 0.015 * wanted + 4 : 0.8 * c.edge * scale;
            EXPECT_NEAR(inkOf(*bitmap), wanted, room) << c.name << " at " << percent;
        }
    }
}

/// Shapes are cut to the clip and begin at the origin.
TEST_P(ShapesTest, StayInTheClip) {
    open(100);
    const auto bitmap = darkBitmap(120, 100);
    CGraphic* g = bitmap->graphic.get();
    {
        const ClipScope scope(g, asRect(30, 20, 70, 60));
        CPath line;
        line.moveTo(-200, -200);
        line.lineTo(200, 200);
        fillPath(g, star(20, 20, 90, 80), white);
        strokePath(g, line, 9, white);
        fillAlpha(g, asRect(-50, -50, 200, 200), white, 1);
        drawScaled(g, *darkBitmap(4, 4), asRect(0, 0, 4, 4), asRect(-9, -9, 10, 10));
    }
    const Shot shot(*bitmap);
    EXPECT_EQ(shot.count(white), 40 * 40 - 10 * 10);
    EXPECT_EQ(shot.boundsOf(white), asRect(30, 20, 70, 60));
}

/// Each quarter of a picture of four colours comes to lie in its quarter of the place.
TEST_P(ShapesTest, PicturesAreDrawnAtAnyScale) {
    open(100);
    CBitmap picture(8, 6);
    const int colours[] = {0x102030, 0x405060, 0x708090, 0xa0b0c0};
    for (int i = 0; i < 4; i++) {
        const int x = i % 2 * 4, y = i / 2 * 3;
        picture.graphic->fillRect(colours[i], asRect(x, y, x + 4, y + 3));
    }
    for (const CPoint size : {asPoint(8, 6), asPoint(50, 20), asPoint(4, 70), asPoint(4, 4)}) {
        const auto bitmap = darkBitmap(120, 100);
        const CRect place = asRect(10, 15, 10 + size.x, 15 + size.y);
        drawScaled(bitmap->graphic.get(), picture, picture.getRect(), place);
        const Shot shot(*bitmap);
        for (int i = 0; i < 4; i++) {
            const int x = i % 2 ? place.right - 1 : place.left;
            const int y = i / 2 ? place.bottom - 1 : place.top;
            EXPECT_EQ(shot.at(x, y), colours[i]) << size.x << " x " << size.y << ": " << i;
        }
        EXPECT_EQ(shot.at(place.right, place.top), black);
        EXPECT_EQ(shot.at(place.left, place.bottom), black);
    }
}

/// Marks in one go, or in memory, are the same pixels as one by one, whatever clip, scale and
/// order.
TEST_P(ShapesTest, ManyMarksAreAsThoseByThemselves) {
    for (const int percent : {100, 125, 200}) {
        open(percent);
        const auto plain = darkBitmap(200, 150), batched = darkBitmap(200, 150),
                   papered = darkBitmap(200, 150);
        const CRect clip = asRect(15, 10, 180, 140);
        const ClipScope one(plain->graphic.get(), clip), two(batched->graphic.get(), clip),
            three(papered->graphic.get(), clip);
        {
            DrawBatch batch(batched->graphic.get());
            PixelPaper paper(papered->graphic.get(), asRect(-20, -20, 300, 300));
            paper.fill(black, asRect(-20, -20, 300, 300));
            std::mt19937 random{3};
            for (int i = 0; i < 60;
                 i++) { // beside one another, as the batch has an order of its own
                const int x = i % 10 * 20 - 15, y = i / 10 * 25 - 10;
                const CRect r =
                    asRect(x, y, x + 1 + int(random() % 19), y + 1 + int(random() % 24));
                const int colour = int(random() % 3 + 1) * 0x304050;
                plain->graphic->fillRect(colour, r);
                plain->graphic->frameRect(colour / 2, r);
                batch.fill(colour, r);
                batch.frame(colour / 2, r);
                paper.fill(colour, r);
                paper.frame(colour / 2, r);
            }
        }
        const Shot a(*plain), b(*batched), c(*papered);
        for (int y = 0; y < plain->deviceHeight(); y++)
            for (int x = 0; x < plain->deviceWidth(); x++) {
                ASSERT_EQ(a.at(x, y), b.at(x, y)) << percent << ": " << x << ", " << y;
                ASSERT_EQ(a.at(x, y), c.at(x, y)) << percent << ": " << x << ", " << y;
            }
    }
}

TEST_P(ShapesTest, PaperBlends) {
    open(100);
    const auto bitmap = darkBitmap(20, 20);
    {
        PixelPaper paper(bitmap->graphic.get(), bitmap->getRect());
        paper.fill(0x004080, bitmap->getRect());
        paper.blend(0xff00ff, 0.25, asRect(5, 5, 10, 10));
    }
    const Shot shot(*bitmap);
    EXPECT_EQ(shot.at(4, 4), 0x004080);
    for (const int shift : {0, 8, 16}) {
        const int from = 0x004080 >> shift & 255, to = 0xff00ff >> shift & 255;
        EXPECT_NEAR(shot.at(7, 7) >> shift & 255, from + (to - from) * 0.25, 2);
    }
}

/// Texts of a batch stand where the others do; what has no room loses whole letters.
TEST_P(ShapesTest, TextsOfABatchStandWhereTheOthersDo) {
    open(100);
    for (const bool turned : {false, true}) {
        const auto plain = darkBitmap(200, 100), batched = darkBitmap(200, 100);
        const TextLook look{TextSize::normal, false, turned};
        const TextScope one(plain->graphic.get(), look), two(batched->graphic.get(), look);
        DrawBatch batch(batched->graphic.get());
        int x = 3;
        for (const int where : {int(textLeft), int(textRight), int(textTop)}) {
            const CRect box = asRect(x, 3, x + 60, 80);
            x += 65;
            plain->graphic->drawText(white, "Bass 1", box, where);
            batch.text(white, "Bass 1", box, where);
        }
        batch.draw();
        const Shot a(*plain), b(*batched);
        for (int y = 0; y < 100; y++)
            for (x = 0; x < 200; x++) // edges that two letters share are mixed in another order
                ASSERT_NEAR(brightness(a.at(x, y)), brightness(b.at(x, y)), 0.05) << x << ", " << y;
    }
    const auto bitmap = darkBitmap(200, 100);
    DrawBatch(bitmap->graphic.get()).text(white, "MMMMMMMM", asRect(10, 10, 50, 40), textLeft);
    const std::string_view shown = textFace({})->fitting("MMMMMMMM", 40);
    EXPECT_LT(shown.size(), 8U);
    EXPECT_NEAR(
        inkOf(*bitmap),
        [&] {
            const auto other = darkBitmap(200, 100);
            other->graphic->drawText(white, CStr(shown.data(), shown.size()),
                                     asRect(10, 10, 190, 40), textLeft);
            return inkOf(*other);
        }(),
        0.1);
}

/// Small below normal below large, bold has more ink, and what is turned is the same ink upwards.
TEST_P(ShapesTest, LooksDiffer) {
    for (const int percent : {100, 200}) {
        open(percent);
        const auto boundsOf = [&](const TextLook& look) {
            const auto bitmap = darkBitmap(160, 160);
            const TextScope scope(bitmap->graphic.get(), look);
            bitmap->graphic->drawText(white, "Hamlet", asRect(10, 10, 150, 150), 0);
            const Shot shot(*bitmap);
            CRect around;
            for (int y = 0; y < bitmap->deviceHeight(); y++)
                for (int x = 0; x < bitmap->deviceWidth(); x++)
                    if (shot.at(x, y) != black) around = unite(around, asRect(x, y, x + 1, y + 1));
            return std::pair(around, inkOf(*bitmap));
        };
        const auto [normal, ink] = boundsOf({});
        const auto small = boundsOf({TextSize::small}).first;
        const auto large = boundsOf({TextSize::large}).first;
        EXPECT_GT(large.height(), normal.height());
        EXPECT_GT(boundsOf({TextSize::normal, true}).second, ink * 1.1);
        EXPECT_LE(small.width(), normal.width() - (GetParam() ? 1 : 0));
        const CRect turned = boundsOf({TextSize::normal, false, true}).first;
        EXPECT_NEAR(turned.height(), normal.width(), 2) << percent;
        EXPECT_NEAR(turned.width(), normal.height(), 2) << percent;
        EXPECT_NEAR(turned.top + turned.bottom, 160 * percent / 100, 6);
        EXPECT_NEAR(turned.left + turned.right, normal.top + normal.bottom, 6);
    }
}
