#include "TestPng.h"
#include "TestServer.h"
#include "base/TempFolder.h"

#include "base/CStream.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Images.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CPopup.h"
#include "gui/controls/CScrollbar.h"
#include "gui/controls/CValue.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

using Bytes = std::string;

Bytes word(int v) {
    return Bytes(reinterpret_cast<const char*>(&v), sizeof v);
}
Bytes text(const Bytes& s) {
    return word(int(s.size())) + s;
}
Bytes record(const Bytes& key, const Bytes& payload) {
    return text(key) + word(int(payload.size())) + payload;
}
Bytes field(const Bytes& key, int v) {
    return record(key, word(v));
}
Bytes item(const Bytes& id, const char* key = "itemid2") {
    return record(key, text(id));
}
int portable(int r, int g, int b) {
    return r + g * 256 + b * 65536;
}

/// A picture of one colour.
Bytes pngOf(int width, int height, uint32_t rgba) {
    const std::vector<uint8_t> file =
        makePng(width, height, std::vector<uint32_t>(size_t(width) * size_t(height), rgba));
    return {file.begin(), file.end()};
}
Bytes image(const Bytes& name, int width, int height, const Bytes& png) {
    return record("img", text(name) + word(imagePng) + word(width) + word(height) + text(png));
}

class ThemeTest : public GuiTest {
protected:
    CStr write(const Bytes& bytes) {
        const CStr path = folder.file("theme.qvl");
        CFileStream(path, 1).write(bytes.data(), int(bytes.size()));
        return path;
    }
    void open(const Bytes& bytes) { ASSERT_TRUE(app->gui->open(write(bytes))); }

    const TempFolder folder;
};

/// The words of the old form.
struct OldItem {
    int words[128] = {};
    Bytes bytes() const { return {reinterpret_cast<const char*>(words), sizeof words}; }
};

constexpr int red = 0xff0000;

/// The words of a look and who uses them.
constexpr std::pair<int, int CGuiLook::*> members[] = {
    {capShape, &CGuiLook::shape},    {capFrame, &CGuiLook::frame},
    {capFrame, &CGuiLook::frameCol}, {capFill, &CGuiLook::fill},
    {capFill, &CGuiLook::fillTex},   {capFill, &CGuiLook::fillCol},
    {capFill, &CGuiLook::fillCol2},  {capFill, &CGuiLook::fillAlign},
    {capText, &CGuiLook::textCol},   {capSymbol, &CGuiLook::symbolCol},
    {capSep, &CGuiLook::sep},        {capSep, &CGuiLook::sepCol}};

} // namespace

/// Every field of every item, as far as its caps go, and the images come back as they were saved.
TEST_F(ThemeTest, SavedLooksComeBack) {
    CGui& gui = *app->gui;
    const Bytes png = pngOf(3, 2, 0xff336699);
    open(image("one", 3, 2, png) + image("two", 4, 4, png));
    constexpr int directions[] = {gradientAcross, gradientDown, gradientDownUp, gradientAcrossTo};
    for (int i = 0; i < gui.numItems(); i++) {
        CGuiItem2& it = *gui.getItem(i);
        const int base = i * 7 + 1;
        setGuiShape(it, i % 2);
        setGuiText(it, asColor(base, 1, 2));
        setGuiSymbol(it, asColor(3, base, 4));
        if (i % 5 == 0) setGuiFill(it, guiNoFill);
        if (i % 5 == 1) setGuiFill(it, asColor(5, 6, base));
        if (i % 5 == 2) setGuiGradient(it, asColor(base, base, 7), base, directions[i / 5 % 4]);
        if (i % 5 == 3) setGuiGlossy(it, asColor(8, base, base), float(i) / 100 - 0.3f);
        if (i % 5 == 4) setGuiImage(it, gui.images.items(i / 5 % 2));
        setGuiFrame(it, i / 2 % 2, asColor(9, 10, base));
        setGuiSep(it, i / 3 % 2, asColor(base, 11, 12), it.sepSize);
        it.mode = i % 3;
    }
    std::vector<CGuiLook> saved;
    for (int i = 0; i < gui.numItems(); i++) saved.push_back(*gui.getItem(i));
    const CStr path = folder.file("saved.qvl");
    ASSERT_TRUE(gui.save(path));
    EXPECT_FALSE(gui.save("/nowhere/theme.qvl"));
    gui.setPalette(lightPalette());
    EXPECT_EQ(gui.images.getCount(), 0);
    ASSERT_TRUE(gui.open(path));
    EXPECT_TRUE(gui.fileName == path);
    ASSERT_EQ(gui.images.getCount(), 2);
    for (auto* picture : gui.images) {
        ASSERT_EQ(size_t(picture->getSize()), png.size());
        EXPECT_EQ(std::memcmp(picture->getData(), png.data(), png.size()), 0);
    }
    for (int i = 0; i < gui.numItems(); i++) {
        const CGuiItem2& it = *gui.getItem(i);
        const CGuiLook& was = saved[size_t(i)];
        const char* name = it.id.asChar();
        EXPECT_EQ(it.mode, i % 3) << name;
        for (const auto& [cap, member] : members)
            if (it.caps & cap) {
                EXPECT_EQ(it.*member, was.*member) << name << " " << cap;
            }
        if (!(it.caps & capFill)) continue;
        EXPECT_EQ(it.fillEffect, was.fillEffect) << name;
        EXPECT_EQ(gui.images.indexed(it.image), i % 5 == 4 ? i / 5 % 2 : -1) << name;
        EXPECT_EQ(it.bitmap != nullptr, it.fill == fillImage || (i % 5 == 3 && it.height)) << name;
    }
}

/// Files of the old form count, but for the fixed size; beside the new form they do not.
TEST_F(ThemeTest, OldFormCountsOnlyWithoutTheNewOne) {
    OldItem old;
    const int words[] = {5,        77, 88, 1,        1,        0x112233, fillShaded, 1, 0x445566,
                         0x778899, 4,  0,  0xaabbcc, 0xddeeff, 1,        0x102030,   9};
    std::copy(std::begin(words), std::end(words), old.words);
    old.words[11] = std::bit_cast<int>(0.25f);
    const Bytes oldForm = item("menubar", "itemid") + record("itemdata", old.bytes());
    open(field("later", 3) + item("unknown", "itemid") + record("itemdata", old.bytes()) + oldForm);
    const CGuiItem2& it = clMenuBar;
    EXPECT_EQ(it.height, menuHeight);
    EXPECT_EQ(it.width, 0);
    const int got[] = {it.mode,    77,           88,         it.shape,    it.frame,     it.frameCol,
                       it.fill,    it.fillTex,   it.fillCol, it.fillCol2, it.fillAlign, 0,
                       it.textCol, it.symbolCol, it.sep,     it.sepCol,   it.sepSize};
    for (size_t i = 0; i < std::size(words); i++) EXPECT_EQ(got[i], words[i]) << "word " << i;
    EXPECT_EQ(it.fillEffect, 0.25f);
    EXPECT_EQ(clButton.fillCol, darkPalette().raised); // not in the file

    open(item("button") + field("itemfillcol", portable(1, 2, 3)) + item("panel", "itemid") +
         oldForm + record("itemdata", old.bytes()) + field("itemtextcol", 255));
    EXPECT_EQ(clButton.fillCol, asColor(1, 2, 3));
    EXPECT_EQ(clButton.textCol, red); // the item of the new form is still the one
    EXPECT_EQ(clMenuBar.fillCol, darkPalette().window);
}

/// A file that ends early counts up to its last whole record.
TEST_F(ThemeTest, CutFilesCountUpToTheCut) {
    const Bytes picture = image("p", 2, 2, pngOf(2, 2, 0xff0000ff));
    const Bytes head = picture + item("button");
    const Bytes shape = head + field("itemshape", 1), text1 = shape + field("itemtextcol", 255);
    const Bytes all = text1 + item("button", "itemid") + record("itemdata", OldItem().bytes());
    for (size_t length = 0; length <= all.size(); length++) {
        open(all.substr(0, length));
        EXPECT_EQ(app->gui->images.getCount(), length >= picture.size()) << length;
        EXPECT_EQ(clButton.shape, length >= shape.size()) << length;
        EXPECT_EQ(clButton.textCol, length >= text1.size() ? red : darkPalette().text) << length;
    }
}

/// Sizes that lie end the file there; numbers out of range are clamped, and the rest still counts.
TEST_F(ThemeTest, HostileFilesDoNoHarm) {
    constexpr int big = std::numeric_limits<int>::max(), least = std::numeric_limits<int>::min();
    const Bytes before = item("button") + field("itemshape", 1);
    const Bytes after = field("itemtextcol", 255);
    for (const int size : {-1, least, big, int(after.size()) + 1})
        for (const Bytes& damage : {word(size) + "abc", text("x") + word(size)}) {
            open(before + damage + after);
            EXPECT_EQ(clButton.shape, 1);
            EXPECT_EQ(clButton.textCol, darkPalette().text) << size;
        }
    for (const int size : {-1, least, big, 5}) { // inside a record that is whole itself
        const Bytes head = text("n") + word(imagePng) + word(4) + word(4);
        open(before + record("img", head + word(size) + "abcd") + record("img", word(size) + "a") +
             after);
        EXPECT_EQ(app->gui->images.getCount(), 0) << size;
        EXPECT_EQ(clButton.textCol, red);
    }
    struct Case {
        const char* key;
        int v, expected;
        int CGuiLook::*member;
    };
    const Case cases[] = {{"itemshape", big, 1, &CGuiLook::shape},
                          {"itemframe", least, 0, &CGuiLook::frame},
                          {"itemfill", 4, fillImage, &CGuiLook::fill},
                          {"itemfilltex", -9, 0, &CGuiLook::fillTex},
                          {"itemfillalign", 3, gradientAcross, &CGuiLook::fillAlign},
                          {"itemsep", 100, 1, &CGuiLook::sep}};
    for (const Case& c : cases) {
        open(item("button") + record(c.key, "abc") + field(c.key, c.v) + after);
        EXPECT_EQ(clButton.*c.member, c.expected) << c.key;
        EXPECT_EQ(clButton.textCol, red);
    }
    for (const auto& [v, expected] : {std::pair{9.0f, 1.0f}, {-9.0f, -1.0f}, {NAN, 0.5f}}) {
        open(item("button") + field("itemfilleffect", std::bit_cast<int>(v)));
        EXPECT_EQ(clButton.fillEffect, expected);
    }
    clButton.shape = 1;
    EXPECT_FALSE(app->gui->open("/nowhere/theme.qvl"));
    EXPECT_EQ(clButton.shape, 1);
}

/// Many items may ask for one large image, and few get it.
TEST_F(ThemeTest, BitmapsStayWithinTheirLimit) {
    Bytes file = image("large", 4000, 1 << 30, pngOf(1, 1, 0xff0000ff));
    for (int i = 0; i < app->gui->numItems(); i++)
        file += item(app->gui->getItem(i)->id.asChar()) + field("itemfill", fillImage) +
                field("itemfillImg", 0);
    open(file);
    int64_t bytes = 0;
    for (int i = 0; i < app->gui->numItems(); i++) bytes += guiBitmapBytes(*app->gui->getItem(i));
    EXPECT_GT(bytes, 0);
    EXPECT_LE(bytes, int64_t(64) << 20);
}

TEST_F(ThemeTest, The128thItemIsNotAdded) {
    CGuiItem2 more[CGui::maxItems];
    CGui& gui = *app->gui;
    for (CGuiItem2& it : more) gui.addItem("more", &it, capFill);
    EXPECT_EQ(gui.numItems(), 127);
    EXPECT_NE(gui.getItem(126), nullptr);
    EXPECT_EQ(gui.getItem(127), nullptr);
    EXPECT_TRUE(more[CGui::maxItems - 1].id.empty());
    gui.init(); // before the items go
}

/// A link takes over the whole look, but neither the name nor the size, until the item gets a look
/// of its own.
TEST_F(ThemeTest, LinkedItemsTakeTheLookOver) {
    const Bytes bar = item("menubar") + field("itemfillcol", 255) + field("itemfill", 2) +
                      field("itemfilltex", 0) + field("itemsep", 1);
    open(bar);
    EXPECT_EQ(clRibbon.fillCol, red);
    EXPECT_EQ(clRibbonBar.sep, 1);
    EXPECT_TRUE(clRibbon.id == "ribbon");
    EXPECT_EQ(clRibbon.caps, 119);
    EXPECT_EQ(clRibbon.height, 0);
    EXPECT_NE(clMenuBar.bitmap, nullptr);
    EXPECT_EQ(clRibbon.bitmap, nullptr); // a gloss of free height
    EXPECT_EQ(clRibbon.linkTo, nullptr);
    open(bar + item("ribbon") + field("itemtextcol", 255));
    EXPECT_NE(clRibbon.fillCol, red);
}

TEST_F(ThemeTest, AColourIsReplacedEverywhere) {
    CGui& gui = *app->gui;
    const int from = gui.palette.accent, to = asColor(10, 200, 30);
    setGuiGradient(clPanel, from, from, gradientDown);
    setGuiSymbol(clPanel, from);
    setGuiFrame(clPanel, 1, from);
    setGuiSep(clMenuBar, 1, from, 6);
    setGuiText(clMenuBar, from);
    gui.updateGuiItem(&clPanel);
    const int before = gui.numColors();
    gui.colorReplace(from, to);
    EXPECT_EQ(gui.numColors(), before);
    EXPECT_EQ(clPanel.fillCol2, to);
    EXPECT_EQ(clListboxSelected.fillCol, to);
    EXPECT_EQ(gui.palette.accent, to);
    for (int i = 0; i < gui.numItems(); i++) {
        const CGuiItem2& it = *gui.getItem(i);
        for (const int colour : {it.frameCol, it.fillCol, it.textCol, it.symbolCol, it.sepCol})
            EXPECT_NE(colour, from) << it.id.asChar();
    }
}

/// What each fill leaves on a surface of 40 by 20.
TEST_F(ThemeTest, FillsPaintWhatTheyTell) {
    CBitmap bitmap(40, 20);
    CGraphic* g = bitmap.graphic.get();
    const auto painted = [&](const CGuiItem2& it, int flags) {
        g->fillRect(0x00ff00, bitmap.getRect());
        drawGuiItem(g, asRect(5, 4, 35, 17), &it, flags);
        return Shot(bitmap.pixmap, 40, 20);
    };
    CImageChunk picture;
    const Bytes png = pngOf(4, 3, 0xff0000ff); // red
    picture.mode = imagePng;
    picture.width = 4;
    picture.height = 3;
    picture.data.write(png.data(), int(png.size()));
    CGuiItem2 it;
    setGuiFill(it, guiNoFill);
    EXPECT_EQ(painted(it, drawWhole).count(0x00ff00), 800);
    setGuiImage(it, nullptr);
    EXPECT_EQ(painted(it, drawWhole).count(0x00ff00), 800);
    setGuiImage(it, &picture);
    EXPECT_EQ(painted(it, drawWhole).boundsOf(red), asRect(5, 4, 35, 17));
    setGuiFrame(it, 1, 0x0000ff);
    setGuiShape(it, 1);
    EXPECT_EQ(painted(it, drawBackground).boundsOf(red), asRect(5, 4, 35, 17));
    EXPECT_EQ(painted(it, drawFrame).count(red), 0);
    EXPECT_EQ(painted(it, drawWhole).boundsOf(red), asRect(6, 5, 34, 16));
    it.frame = 0; // tiles go to the edges again
    EXPECT_EQ(painted(it, drawWhole).boundsOf(red), asRect(5, 4, 35, 17));

    it.height = 13; // that of the rectangle: the gloss is tiled, and must look as one drawn
    setGuiGlossy(it, 0x404080, 0.6f);
    ASSERT_NE(it.bitmap, nullptr);
    const Shot tiled = painted(it, drawWhole);
    EXPECT_EQ(tiled.count(0x00ff00), 800 - 30 * 13 + 4); // without the round corners
    it.bitmap.reset();
    const Shot drawn = painted(it, drawWhole);
    for (int i = 0; i < 800; i++)
        EXPECT_EQ(tiled.at(i % 40, i / 40), drawn.at(i % 40, i / 40)) << i;
}

/// Each change that the page of looks offers for an item shows on the controls of that item.
TEST_F(ThemeTest, ControlsShowEveryPartOfTheirItem) {
    const auto win = bareWindow();
    CWin* w = win.get();
    CPopup popup(app.get(), w);
    auto* across = new CScrollbar(w, "across", 0, 0, 100, 16);
    across->vertical = false;
    auto* down = new CScrollbar(w, "down", 0, 0, 16, 100);
    auto* drop = new CDropdown(w, "drop", 0, 0, 100, 20);
    auto* lamp = new CButton(w, "lamp", "Lamp", 0, 0, 60, 20);
    auto* lit = new CButton(w, "lit", "Lit", 0, 0, 60, 20);
    lamp->skin = &clToolbarControls;
    lit->litSkin = &clToolbarControls;
    lit->lit = true;
    drop->add("Row");
    drop->setIndex(0);
    struct Case {
        CGuiItem2* item;
        CCtrl* ctrl;
    };
    const Case cases[] = {{&clButton, new CButton(w, "b", "Text", 0, 0, 60, 20)},
                          {&clButton, new CCheckbox(w, "c", "Text", 0, 0, 60, 20)},
                          {&clToolbarControls, lamp},
                          {&clToolbarControls, lit},
                          {&clValue, new CEdit(w, "e", 0, 0, 60, 20)},
                          {&clValue, new CValue(w, "v", 0, 0, 60, 20)},
                          {&clDropdown, drop},
                          {&clScrollbarVert, down},
                          {&clScrollbarVertThumb, down},
                          {&clScrollbarButtonUp, down},
                          {&clScrollbarButtonDown, down},
                          {&clScrollbarHorz, across},
                          {&clScrollbarHorzThumb, across},
                          {&clScrollbarButtonLeft, across},
                          {&clScrollbarButtonRight, across}};
    for (CScrollbar* bar : {across, down}) bar->setRange(400, 100);
    CImageChunk picture;
    const Bytes png = pngOf(4, 3, 0xff0000ff);
    picture.mode = imagePng;
    picture.width = 4;
    picture.height = 3;
    picture.data.write(png.data(), int(png.size()));
    const struct {
        int cap;
        const char* name;
        std::function<void(CGuiItem2&)> change;
    } parts[] = {{capFrame, "frame", [](CGuiItem2& it) { setGuiFrame(it, 1, 0xff8800); }},
                 {capShape, "shape",
                  [](CGuiItem2& it) {
                      setGuiFill(it, 0x0088ff);
                      setGuiShape(it, 1);
                  }},
                 {capFill, "no fill", [](CGuiItem2& it) { setGuiFill(it, guiNoFill); }},
                 {capFill, "shading", [](CGuiItem2& it) { setGuiGradient(it, 0, 0xffffff, 4); }},
                 {capFill, "image", [&](CGuiItem2& it) { setGuiImage(it, &picture); }},
                 {capText, "text", [](CGuiItem2& it) { setGuiText(it, 0x00ff88); }},
                 {capSymbol, "symbol", [](CGuiItem2& it) { setGuiSymbol(it, 0x88ff00); }}};
    CBitmap bitmap(160, 120);
    CGraphic* g = bitmap.graphic.get();
    const auto painted = [&](CCtrl* ctrl) {
        g->fillRect(0x00ff00, bitmap.getRect());
        if (ctrl == &popup)
            (*popup.onPaint)(&popup, g, popup.clientRect());
        else
            ctrl->paint(g, ctrl->clientRect());
        std::vector<int> pixels;
        const Shot shot(bitmap.pixmap, 160, 120);
        for (int i = 0; i < 160 * 120; i++) pixels.push_back(shot.at(i % 160, i / 160));
        return pixels;
    };
    const auto check = [&](CGuiItem2* it, CCtrl* ctrl) {
        for (const auto& part : parts) {
            const bool onEntries = ctrl == &popup && part.cap & (capText | capSymbol);
            const bool noGlyph = part.cap == capSymbol && (ctrl == lamp || ctrl == lit);
            if (!(it->caps & part.cap) || onEntries || noGlyph) continue;
            app->gui->setPalette(darkPalette());
            if (part.cap & (capShape | capFill)) setGuiFill(*it, 0x0088ff);
            const std::vector<int> before = painted(ctrl);
            part.change(*it);
            EXPECT_TRUE(painted(ctrl) != before)
                << it->id.asChar() << " of " << ctrl->id.asChar() << ": " << part.name;
        }
        app->gui->setPalette(darkPalette());
    };
    for (const Case& c : cases) {
        auto* value = dynamic_cast<CEdit*>(c.ctrl);
        if (value && !dynamic_cast<CValue*>(value) && c.ctrl != drop) value->setText("Text");
        if (!c.ctrl->parent) w->addControl(c.ctrl);
    }
    for (const Case& c : cases) check(c.item, c.ctrl);
    popup.add("Entry", nullptr);
    popup.setSize(100, 50);
    check(&clMenu, &popup);
}
