#include "TestServer.h"

#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/FontChoice.h"
#include "gui/Fonts.h"
#include "gui/Scale.h"
#include "gui/XConnection.h"

#include <cstdlib>

namespace {

constexpr int white = 0xffffff, black = 0;

class SmoothTextTest : public GuiTest {
protected:
    void open(const TextSettings& settings, int percent = 100) {
        textSettings = settings;
        reopen(percent);
    }
    void SetUp() override {
        GuiTest::SetUp();
        open({});
    }
};

/// The device rectangle of all that differs from the black ground.
CRect inkOf(const CBitmap& bitmap) {
    const Shot shot(bitmap);
    CRect ink;
    for (int y = 0; y < bitmap.deviceHeight(); y++)
        for (int x = 0; x < bitmap.deviceWidth(); x++)
            if (shot.at(x, y) != black) ink = unite(ink, asRect(x, y, x + 1, y + 1));
    return ink;
}

CRect inkOfText(const CStr& text, CRect box, int where) {
    CBitmap bitmap(120, 60);
    bitmap.graphic->fillRect(black, bitmap.getRect());
    bitmap.graphic->drawText(white, text, box, where);
    return inkOf(bitmap);
}

/// Pixels between black and white: the edges of outlines.
int greys(const CBitmap& bitmap) {
    const Shot shot(bitmap);
    return bitmap.deviceWidth() * bitmap.deviceHeight() - shot.count(black) - shot.count(white);
}

} // namespace

/// At every scale, capitals stand in the middle of their box to a device pixel, at the side that
/// the flags tell, and inside the width that was told.
TEST_F(SmoothTextTest, StandsWhereItsFlagsTell) {
    for (const int percent : {100, 150, 200, 300}) {
        open({}, percent);
        const CStr text = "HIH";
        const int wide = xConnection().font->textWidth(text), bearing = toDevice(2);
        const CRect box = asRect(10, 7, 110, 51), area = toDevice(box);
        for (const int where : {int(textLeft), 0, int(textRight)}) {
            const CRect ink = inkOfText(text, box, where);
            const int above = ink.top - area.top, below = area.bottom - ink.bottom;
            EXPECT_LE(std::abs(above - below), 1) << percent << ", " << where;
            const int start = where == textLeft    ? 10
                              : where == textRight ? 110 - wide
                                                   : 60 - wide / 2;
            EXPECT_NEAR(ink.left, toDevice(start), bearing + 1) << percent << ", " << where;
            EXPECT_NEAR(ink.right, toDevice(start + wide), bearing + 1) << percent << ", " << where;
        }
        const TextFace& font = *xConnection().font;
        EXPECT_EQ(inkOfText(text, box, textTop).bottom, area.top + font.deviceAscent) << percent;
        EXPECT_EQ(inkOfText(text, box, textBottom).bottom, area.bottom - font.deviceDescent);
        EXPECT_NEAR(font.deviceAscent + font.deviceDescent, 14 * percent / 100, percent / 50)
            << percent;
    }
}

TEST_F(SmoothTextTest, IsCutToItsBoxAndToTheServersClip) {
    const CRect box = asRect(20, 10, 41, 22);
    const CRect ink = inkOfText("MMMMMMMMMMMM", box, 0);
    EXPECT_EQ(intersect(ink, box), ink);
    EXPECT_LE(ink.left, 22); // a letter or the gap between two lies at the edge
    EXPECT_GE(ink.right, 39);
    EXPECT_GT(inkOfText("MMMMMMMMMMMM", box, textLeft | textUnclipped).right, 80);
    CBitmap bitmap(120, 60);
    bitmap.graphic->fillRect(black, bitmap.getRect());
    bitmap.graphic->setClip(asRect(0, 0, 30, 60));
    bitmap.graphic->drawText(white, "MMMM", bitmap.getRect(), textLeft);
    EXPECT_EQ(inkOf(bitmap).right, 30);
}

/// UTF-8 and the same text in Latin-1 look the same; what is neither shows byte by byte.
TEST_F(SmoothTextTest, ReadsUtf8AndElseLatin1) {
    const TextFace& font = *xConnection().font;
    const auto sameInk = [](const char* a, const char* b) {
        const CRect box = asRect(0, 0, 120, 60);
        return inkOfText(a, box, textLeft) == inkOfText(b, box, textLeft);
    };
    EXPECT_TRUE(sameInk("\xc3\xa4l", "\xe4l"));
    EXPECT_EQ(font.textWidth("\xc3\xa4l"), font.textWidth("\xe4l"));
    EXPECT_EQ(font.textWidth("\xc3"), font.textWidth("\xc3\x83"));      // cut off: A with a tilde
    EXPECT_LT(font.textWidth("\xe2\x82\xac"), 2 * font.textWidth("M")); // one sign, the euro's
    EXPECT_EQ(font.textWidth(""), 0);
}

/// Letters that the font lacks come from another one: those of Hebrew are not in DejaVu Serif, and
/// would all be the same box.
TEST_F(SmoothTextTest, WhatTheFontLacksComesFromAnother) {
    const char *vav = "\xd7\x95", *shin = "\xd7\xa9";
    TextSettings wanted;
    wanted.size = 20;
    int widths[2][2];
    for (const int i : {0, 1}) {
        wanted.family = i ? "DejaVu Sans" : "DejaVu Serif";
        open(wanted);
        widths[i][0] = xConnection().font->textWidth(vav);
        widths[i][1] = xConnection().font->textWidth(shin);
    }
    EXPECT_LT(widths[0][0], widths[0][1] - 4);
    EXPECT_EQ(widths[0][0], widths[1][0]);
    EXPECT_EQ(widths[0][1], widths[1][1]);
}

/// What is written from right to left stands so, beside what is not; Arabic letters are joined.
TEST(ShownCharacters, AreInTheOrderOfTheScreen) {
    using Text = std::vector<uint32_t>;
    const struct {
        const char* written;
        Text shown;
    } cases[] = {{"ab c", {'a', 'b', ' ', 'c'}},
                 {"", {}},
                 {"\xd7\xa9\xd7\x95", {0x5d5, 0x5e9}},
                 {"a \xd7\xa9\xd7\x95 1 b", {'a', ' ', '1', ' ', 0x5d5, 0x5e9, ' ', 'b'}},
                 {"\xd7\xa9 (\xd7\x95)", {'(', 0x5d5, ')', ' ', 0x5e9}},
                 {"\xd8\xa8\xd8\xa8", {0xfe90, 0xfe91}}}; // its end on the left, then its start
    for (const auto& c : cases) EXPECT_EQ(shownCharacters(c.written), c.shown) << c.written;
}

TEST_F(SmoothTextTest, FamilyAndSizeAreTheAppsChoice) {
    const auto lineHeight = [] { return xConnection().font->ascent + xConnection().font->descent; };
    TextSettings wanted;
    wanted.size = 24;
    open(wanted);
    EXPECT_NEAR(lineHeight(), 28, 4);
    wanted.size = 100000;
    open(wanted);
    EXPECT_LT(lineHeight(), 80);
    wanted.size = 0;
    wanted.family = "no such family: size=99";
    open(wanted);
    EXPECT_NEAR(lineHeight(), 14, 3);
}

/// Smooth unless it is not wanted or the server lacks what it takes; the server's font shows each
/// byte, and has no greys.
TEST(TextFaceTest, FallsBackToTheServersFont) {
    struct Case {
        std::vector<std::string> options;
        bool wanted, smooth;
    };
    const Case cases[] = {{{}, true, true},
                          {{}, false, false},
                          {{"-extension", "RENDER"}, true, false},
                          {{"-extension", "MIT-SHM"}, true, true},
                          {{"-screen", "0", "640x480x16"}, true, true}};
    for (const Case& c : cases) {
        const TestServer server(c.options);
        setenv("DISPLAY", server.display.c_str(), 1);
        textSettings = {};
        textSettings.smooth = c.wanted;
        wantedScale = 100;
        CApp app;
        ASSERT_TRUE(app.open());
        CBitmap bitmap(60, 30);
        bitmap.graphic->fillRect(asColor(0, 0, 0), bitmap.getRect());
        bitmap.graphic->drawText(asColor(255, 255, 255), "Sample", bitmap.getRect(), 0);
        EXPECT_FALSE(inkOf(bitmap).empty());
        const bool deep = screenDepth() >= 24;
        EXPECT_TRUE(!deep || (greys(bitmap) > 0) == c.smooth) << c.options.size();
        EXPECT_EQ(xConnection().font->textWidth("\xc3\xa4") == 12, !c.smooth);
    }
}

TEST_F(SmoothTextTest, TheServersFontGrowsToo) {
    for (const int percent : {150, 200, 300}) {
        TextSettings plain;
        plain.smooth = false;
        open(plain, percent);
        EXPECT_NEAR(xConnection().font->textWidth("HHHHHHHHHH"), 60, 10) << percent;
        const CRect ink = inkOfText("H", asRect(0, 0, 60, 30), 0);
        EXPECT_NEAR(ink.height(), 9 * percent / 100, percent / 100) << percent;
        EXPECT_NEAR(ink.top + ink.bottom, toDevice(30), 2 * percent / 100) << percent;
    }
}
