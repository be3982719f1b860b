#include "MainFixture.h"
#include "arrange/PartColours.h"

#include "base/Paths.h"
#include "engine/ValueDoor.h"
#include "gui/Colours.h"
#include "gui/Selections.h"
#include "gui/controls/CColorButton.h"
#include "gui/controls/CDropdown.h"
#include "sequencer/song/CSongTrack.h"
#include "sequencer/song/TrackValues.h"
#include "setup/CGuiItemPanel.h"
#include "setup/LooksPanel.h"
#include "setup/LooksTree.h"
#include "shell/Pages.h"
#include "ui/CAppGui.h"
#include "ui/ProgramItems.h"
#include "ui/Skins.h"
#include "ui/TrackPalette.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace {

/// A theme file that gives the window this colour.
void writeTheme(const CStr& path, int red) {
    CFileStream out(path, 1);
    out.writeId("itemid2", 12);
    out.writeStr("winbkgnd");
    out.writeId("itemfillcol", 4);
    out.writeInt(red);
}

/// A theme with a picture of the transport, of fields of these colours, and one of what is pushed.
void writeTransport(const CStr& path, const std::vector<std::string>& pictures) {
    CFileStream out(path, 1);
    for (const std::string& file : pictures) {
        CMemoryStream png;
        png.loadFromFile(file.c_str());
        constexpr int wide = 100, high = 25, headBytes = 20;
        out.writeId("img", int(png.size) + headBytes);
        out.writeStr("");
        for (const int word : {1, wide, high, int(png.size)}) out.writeInt(word);
        out.write(png.data, int(png.size));
    }
    int index = 0;
    for (const char* item : {"transporter", "transporterpushed", "logo"}) {
        out.writeId("itemid2", int(std::string(item).size()) + 4);
        out.writeStr(item);
        out.writeId("itemfill", 4);
        out.writeInt(fillImage);
        out.writeId("itemfillImg", 4);
        out.writeInt(index++ % int(pictures.size()));
    }
}

CCtrl* find(CGroup* in, const char* id) {
    for (auto* ctrl : in->controls)
        if (ctrl->id == id && ctrl->enabled) return ctrl; // labels have the same name
    return nullptr;
}

class SkinsTest : public MainWinTest {
protected:
    CAppGui& gui() { return static_cast<CAppGui&>(*app->gui); }
};

} // namespace

TEST_F(SkinsTest, TheSettingsChooseTheLook) {
    start();
    const CStr theme = at("my.qvl").c_str();
    const CStr beside = extractFilePath(asAppname()) + "default.qvl";
    writeTheme(theme, 77);
    const int dark = darkPalette().window, light = lightPalette().window;
    struct Case {
        const char* look;
        CStr theme;
        bool hasDefault;
        int window;
    };
    const Case cases[] = {{"", "", false, dark},
                          {"-2", "", false, dark},
                          {"-2", theme, true, asColor(88, 0, 0)},
                          {"-1", theme, true, asColor(77, 0, 0)},
                          {"-1", at("gone.qvl").c_str(), true, dark},
                          {"0", theme, true, light},
                          {"1", "", true, dark},
                          {"7", "", true, dark}};
    for (const Case& c : cases) {
        set("options", "look", c.look);
        set("options", "theme", c.theme);
        if (c.hasDefault) writeTheme(beside, 88);
        startSkin(app.get(), host.get());
        std::remove(beside.asChar());
        EXPECT_EQ(clWinBkgnd.fillCol, c.window) << c.look << " " << c.theme.asChar();
        EXPECT_EQ(app->gui->palette.window, c.window);
    }
}

/// Themes that are dropped or saved are the ones that the next start opens.
TEST_F(SkinsTest, ADroppedThemeIsOpenedAndKept) {
    start();
    const CStr theme = at("my.qvl").c_str(), copy = at("copy.qvl").c_str();
    writeTheme(theme, 55);
    CWin other(app.get(), win.get(), "other", 0, 0, 100, 100, 0); // it takes nothing itself
    other.show(true);
    for (CWin* under : {static_cast<CWin*>(win.get()), &other}) {
        setDarkSkin(app.get(), host.get());
        app->startDrag(win.get());
        auto* item = new CDropItem("my.qvl", dropFile);
        item->path = theme;
        app->dragList->add(item);
        app->dropOn(under, under->getPos(true), modLeft);
        EXPECT_EQ(clWinBkgnd.fillCol, asColor(55, 0, 0)) << under->id.asChar();
    }
    other.hide();
    EXPECT_EQ(setting("options", "look"), "-1");
    EXPECT_EQ(setting("options", "theme"), theme.asChar());
    EXPECT_FALSE(openTheme(app.get(), host.get(), at("gone.qvl").c_str()));
    EXPECT_TRUE(saveTheme(app.get(), host.get(), copy));
    EXPECT_EQ(setting("options", "theme"), copy.asChar());
    chooseSkin(app.get(), host.get(), lookDefault);
    EXPECT_EQ(setting("options", "look"), "-2");
    EXPECT_EQ(setting("options", "theme"), "");
    EXPECT_EQ(clWinBkgnd.fillCol, darkPalette().window);
}

/// A theme's pictures show on the transport and above "Welcome".
TEST_F(SkinsTest, PicturesOfTheTransportAndTheLogo) {
    start();
    const char* colours[] = {"#100000", "#200000", "#300000", "#400000", "#500000"};
    for (const char* state : {"00", "ff"}) {
        std::vector<std::string> make = {"convert", "-size", "20x25"};
        for (const char* c : colours)
            make.push_back(std::string("xc:") + std::string(c).substr(0, 5) + state);
        make.insert(make.end(), {"+append", at(std::string(state) + ".png")});
        ASSERT_EQ(runCommand(make), 0);
    }
    writeTransport(at("t.qvl").c_str(), {at("00.png"), at("ff.png")});
    host->loop = 1;
    win->move(0, 0, 700, 500); // whole on the screen
    ASSERT_TRUE(openTheme(app.get(), host.get(), at("t.qvl").c_str()));
    auto* bar = static_cast<CGroup*>(find(win->clientGroup, "transport"));
    const auto middle = [&](const char* id) {
        const CCtrl* button = find(bar, id);
        const CPoint pos = win->controlPos(button);
        return Shot(win->handle, win->width, win->height)
            .at(pos.x + button->width / 2, pos.y + button->height / 2);
    };
    ASSERT_TRUE(pumpUntil([&] { return middle("loop") == asColor(0x50, 0, 0xff); }));
    EXPECT_EQ(middle("rewind"), asColor(0x10, 0, 0));
    EXPECT_EQ(middle("stop"), asColor(0x20, 0, 0));
    EXPECT_EQ(middle("play"), asColor(0x30, 0, 0));
    EXPECT_EQ(middle("record"), asColor(0x40, 0, 0));
    int logoColour = 0;
    inDialog("Welcome", [&] {
        CWin* welcome = app->modalWin;
        const CCtrl* logo = find(welcome->clientGroup, "logo");
        app->paintFrame();
        const CPoint pos = welcome->controlPos(logo);
        logoColour =
            Shot(welcome->handle, welcome->width, welcome->height).at(pos.x + 1, pos.y + 1);
        runCommand({"xdotool", "key", "Escape"});
    });
    win->flows->newClicked();
    EXPECT_EQ(logoColour, asColor(0x10, 0, 0));
}

/// What both skins promise: every text and symbol that an item uses reads on its fill, or, where it
/// has none, on windows and panels.
TEST_F(SkinsTest, BothSkinsAreLegible) {
    start();
    for (const int look : {lookLight, lookDark}) {
        chooseSkin(app.get(), host.get(), look);
        EXPECT_EQ(setting("options", "look"), std::to_string(look));
        for (int i = 0; i < gui().numItems(); i++) {
            const CGuiItem2& it = *gui().getItem(i);
            std::vector<int> grounds = {it.fillCol};
            if (it.fill == fillNone) grounds = {gui().palette.window, gui().palette.panel};
            for (const int ground : grounds) {
                if (it.caps & capText) {
                    EXPECT_GE(contrast(it.textCol, ground), 4.5) << it.id.asChar() << look;
                }
                if (it.caps & capSymbol) {
                    EXPECT_GE(contrast(it.symbolCol, ground), 4.5) << it.id.asChar() << look;
                }
            }
        }
        EXPECT_GE(contrast(clTrackSelected.fillCol, clTrack.fillCol), 1.25) << look;
    }
}

/// Notes and names stand out on parts of any colour, in both skins.
TEST(PartColours, MarksStandOutOnTheirPart) {
    std::vector<int> all = {hexColor(0xffff00), hexColor(0x000080), hexColor(0xffffff),
                            hexColor(0x101010), hexColor(0x808080)};
    for (int i = 0; i < 16; i++) all.push_back(trackColour(i));
    for (const CPalette& palette : {darkPalette(), lightPalette()})
        for (const int own : all) {
            const PartColours c = partColours(palette, own, true);
            EXPECT_GE(contrast(c.mark, c.body), 3.0) << std::hex << own;
            EXPECT_GE(contrast(c.name, c.header), 4.5) << std::hex << own;
            EXPECT_LT(contrast(c.mute, c.body), contrast(c.mark, c.body)) << std::hex << own;
        }
}

/// The theme that lies beside the program: as legible as the dark one, and not the same.
TEST_F(SkinsTest, TheDefaultThemeIsALookOfItsOwn) {
    start();
    const CStr path = at("default.qvl").c_str();
    {
        CAppGui made; // of the same items, so it may not stay
        setDefaultLook(made);
        ASSERT_TRUE(made.save(path));
    }
    ASSERT_TRUE(app->gui->open(path));
    EXPECT_EQ(clButton.shape, 1);
    EXPECT_EQ(clButton.fillCol, darkPalette().raised);
}

/// What the page shows of the program's own items is on the screen: a colour given to one of them
/// is found in the window.
TEST_F(SkinsTest, ShownItemsAreUsed) {
    start();
    ASSERT_TRUE(load(kindDemo));
    auto* track = seq()->getProg()->tracks.first();
    track->setMuted(true);
    seq()->getProg()->tracks.items(1)->setSoloed(true);
    seq()->selectTrack(track, true);
    host->values->set(armOf(track->track), 1.0);
    host->values->set(monitorOf(track->track), 1.0);
    host->loop = 1;
    win->setSize(1500, 500);
    const std::set<const CGuiItem2*> pictures = {&clLogo}; // shown by another test
    int count = 0;
    const LooksNode* nodes = looksTree(count);
    const auto colourOf = [](int i) { return asColor(3 + i, 200, 77); };
    const auto isOwn = [](const CGuiItem2* it) {
        int rows = 0;
        const ItemLook* own = programItems(rows);
        return std::any_of(own, own + rows, [&](const ItemLook& row) { return row.item == it; });
    };
    std::vector<int> asked;
    for (int i = 0; i < count; i++) {
        CGuiItem2* it = nodes[i].item;
        if (!it || nodes[i].awaited || !isOwn(it) || pictures.count(it)) continue;
        setGuiFill(*it, colourOf(i));
        asked.push_back(i);
    }
    gui().changed();
    std::string missing;
    const bool all = pumpUntil([&] {
        std::set<int> shown;
        for (CWin* w : {static_cast<CWin*>(win.get()), static_cast<CWin*>(win->pages->current())}) {
            w->paint(0, w->clientRect());
            const Shot shot(*app->backBuffer);
            for (const int i : asked)
                if (shot.count(colourOf(i))) shown.insert(i);
        }
        missing.clear();
        for (const int i : asked)
            if (!shown.contains(i)) missing += nodes[i].item->id.asChar() + std::string(" ");
        return missing.empty();
    });
    EXPECT_TRUE(all) << missing;
}

TEST_F(SkinsTest, TheTreeOfLooksHasEveryItemOnce) {
    start();
    int count = 0, level = -1;
    std::set<const CGuiItem2*> seen;
    const LooksNode* nodes = looksTree(count);
    for (int i = 0; i < count; i++) {
        EXPECT_LE(nodes[i].level, level + 1) << nodes[i].label;
        level = nodes[i].level;
        if (nodes[i].item) {
            EXPECT_TRUE(seen.insert(nodes[i].item).second) << nodes[i].label;
        }
    }
    for (int i = 0; i < gui().numItems(); i++)
        EXPECT_TRUE(seen.count(gui().getItem(i))) << gui().getItem(i)->id.asChar();
    EXPECT_EQ(int(seen.size()), gui().numItems());
}

/// The editor shows what the item uses, changes it at once in all windows, and rebuilds itself when
/// other controls apply.
TEST_F(SkinsTest, TheEditorShowsAndChangesWhatAnItemUses) {
    start();
    CGuiItemPanel panel(win.get(), 0, 0, 336);
    constexpr std::pair<int, const char*> parts[] = {{capShape, "Shape"},   {capFrame, "Frame"},
                                                     {capFill, "Fill"},     {capText, "Text"},
                                                     {capSymbol, "Symbol"}, {capSep, "Separator"}};
    for (int i = 0; i < gui().numItems(); i++) {
        panel.setItem(gui().getItem(i));
        for (const auto& [cap, id] : parts)
            EXPECT_EQ(find(&panel, id) != nullptr, (gui().getItem(i)->caps & cap) != 0)
                << gui().getItem(i)->id.asChar() << " " << id;
    }
    panel.setItem(&clWinBkgnd);
    const int former = clWinBkgnd.fillCol, other = asColor(1, 100, 50);
    auto* fill = static_cast<CDropdown*>(find(&panel, "Fill"));
    EXPECT_EQ(find(&panel, "Texture"), nullptr);
    fill->setIndex(fillShaded, true);
    ASSERT_TRUE(pumpUntil([&] { return find(&panel, "Texture") != nullptr; }));
    static_cast<CDropdown*>(find(&panel, "Texture"))->setIndex(textureGradient, true);
    ASSERT_TRUE(pumpUntil([&] { return find(&panel, "Direction") != nullptr; }));
    EXPECT_EQ(clWinBkgnd.fill, fillShaded);

    const int paints = static_cast<ProbeCtrl*>(find(win->clientGroup, "clock"))->paints;
    auto* from = static_cast<CColorButton*>(find(&panel, "From"));
    from->replacement = other;
    (*from->onReplace)(from);
    EXPECT_EQ(clWinBkgnd.fillCol, other);
    EXPECT_EQ(clGrid.fillCol, other);
    EXPECT_EQ(gui().palette.window, other);
    for (const int colour : gui().colors) EXPECT_NE(colour, former);
    EXPECT_TRUE(pumpUntil(
        [&] { return static_cast<ProbeCtrl*>(find(win->clientGroup, "clock"))->paints > paints; }));
}
