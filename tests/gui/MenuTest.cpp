#include "ControlFixture.h"

#include "base/Numbers.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CMenu.h"
#include "gui/controls/CPopup.h"
#include "gui/controls/CRibbons.h"
#include "gui/controls/CScrollbar.h"
#include "gui/dialogs/CDialogWin.h"

namespace {

/// Menus, and what is chosen in them.
class MenuTest : public LoopTest {
protected:
    /// A popup with what a menu can hold; `chosen` tells what is executed.
    CPopup* makePopup(bool autoDelete = true) {
        auto* popup = new CPopup(app.get(), win.get());
        popup->autoDelete = autoDelete;
        popup->add("First\tCtrl+F", note());
        popup->addSeparator();
        popup->add("Off", note())->enabled = false;
        popup->add("Check", note())->keepOpen = true;
        CPopup* sub = popup->addSub("More");
        sub->add("Inner", note());
        sub->add("Last", note());
        popup->addRows(3, new _COnGetText<MenuTest>(this, &MenuTest::rowText), note());
        return popup;
    }
    COnChange* note() { return new _COnChange<MenuTest>(this, &MenuTest::execute); }
    void rowText(CObject*, CStr& text, int row) { text = CStr("Row ") + CStr(char('A' + row)); }
    void execute(CObject* sender) {
        auto* item = static_cast<CMenuItem*>(sender);
        chosen += item->label().asChar();
        if (item->kind == menuRows) chosen += std::to_string(item->tag);
        chosen += item->checked ? "+" : "";
        chosen += ";";
    }

    std::string chosen;
};

} // namespace

TEST_F(MenuTest, ChoosesByKeys) {
    struct Case {
        const char *keys, *chosen;
    };
    const Case cases[] = {{"Down Return", "First;"},
                          {"Down Down Down Right Down Return", "Last;"}, // past what is off
                          {"Down Down space space Escape", "Check+;Check;"},
                          {"Down Down Down Right Left Up Return", "Check;"},
                          {"End Up Return", "rows1;"},
                          {"Up Down Return", "First;"}, // in a ring
                          {"End Home Return", "First;"},
                          {"Down space Escape", ""},
                          {"Down Down Down Return Return", "Inner;"},
                          {"Down Down Down Right Escape Escape", ""},
                          {"c Return", "Check;"},
                          {"Shift+M Right l Return", "Last;"},
                          {"r r Return", "rows1;"},
                          {"r r r r Return", "rows0;"},
                          {"o x z Down Return", "First;"}}; // what is off, and what is not there
    int leaked = 0;
    Target leak([&] { leaked++; });
    win->onKeyDown = leak.key();
    for (const Case& c : cases) {
        chosen.clear();
        for (const std::string& key : split(c.keys)) later("key " + key);
        makePopup()->popup(300, 200);
        EXPECT_EQ(chosen, c.chosen) << c.keys;
        EXPECT_TRUE(app->menus.empty());
    }
    EXPECT_EQ(leaked, 0); // letters are not shortcuts of the window behind
}

/// Rows: First 0 to 20, separator to 27, Off to 47, Check to 67, More to 87, three rows of 16. The
/// wheel goes on from what is selected, wherever it turns, and takes the pointer along.
TEST_F(MenuTest, ChoosesByMouse) {
    struct Case {
        std::vector<std::string> steps;
        const char* chosen;
    };
    const auto row = [](int y) { return "mousemove 340 " + std::to_string(203 + y); };
    const Case cases[] = {{{row(10), "click 1"}, "First;"},
                          {{row(37), "click 1", row(57), "click 1"}, "Check;"},
                          {{row(10), row(37), "key Return"}, "First;"}, // what is off is passed by
                          {{row(87 + 40), "click 1"}, "rows2;"},
                          {{"mousemove 600 500", "click 1"}, ""},
                          {{row(77), "click 1", "mousemove 380 300", "key Escape"}, ""},
                          {{row(10), "click 5", "click 1"}, "Check;"},
                          {{"click 5", "click 5", "click 1"}, "Check;"},
                          {{"click 4", "click 4", "key Return"}, "rows1;"}};
    for (const Case& c : cases) {
        chosen.clear();
        xdo("mousemove 110 110"); // beside the menu, over the window
        for (const std::string& step : c.steps) later(step);
        if (c.chosen[0] == 0) later("key Escape");
        makePopup()->popup(300, 200);
        EXPECT_EQ(chosen, c.chosen) << c.steps[0];
        EXPECT_TRUE(app->menus.empty());
    }
}

/// The menu of an entry opens after a while under the pointer, beside the first one or, at the
/// screen's edge, on its other side, and goes when the pointer is elsewhere. Under the keys it
/// stays shut.
TEST_F(MenuTest, SubMenusOpenBesideTheirEntry) {
    for (int x : {300, 790}) {
        std::unique_ptr<CPopup> popup(makePopup(false));
        CPopup* sub = popup->getItem(4)->subMenu;
        const std::string column = x == 300 ? "340" : "760";
        later("mousemove " + column + " 280");
        later([&] {
            EXPECT_FALSE(sub->visible);
            EXPECT_EQ(popup->timerInterval, CPopup::subMenuDelay);
        });
        whenever([sub] { return sub->visible; },
                 [&] {
                     const int at = popup->getPos(true).x;
                     const int left = x == 300 ? at + popup->width - 6 : at - sub->width + 6;
                     EXPECT_EQ(sub->getPos(true).x, left);
                     EXPECT_EQ(sub->getPos(true).y, 200 + 67);
                     xdotool("mousemove " + column + " 210");
                 });
        whenever([sub] { return !sub->visible; },
                 [&] {
                     popup->selectItem(-1, 0, false, false);
                     xdotool("key m");
                 });
        whenever([&] { return popup->selected == 4; },
                 [&] {
                     EXPECT_FALSE(app->timers.contains(popup.get()));
                     app->killMenu(nullptr);
                 });
        popup->popup(x, 200);
        EXPECT_FALSE(sub->visible);
    }
}

TEST_F(MenuTest, ALongMenuScrolls) {
    CPopup popup(app.get(), win.get());
    for (int i = 0; i < 60; i++) popup.add(CStr("Line ") + CStr(char('A' + i % 26)), note());
    later("key End");
    later([&] {
        EXPECT_EQ(popup.height, 600);
        EXPECT_EQ(popup.scrollMax, 60 * 20 - (600 - 6 - 40));
        EXPECT_EQ(popup.itemRect(popup.getItem(59), 0).bottom, 600 - 6 - 20); // in view
    });
    later("mousemove 320 10 mousedown 1");
    whenever([&] { return popup.itemRect(popup.getItem(0), 0).top == 20; },
             [] { xdotool("mouseup 1 key Escape"); });
    popup.popup(300, 100);
    EXPECT_EQ(popup.scrollDir, 0);
    EXPECT_EQ(chosen, "");
}

/// The bar opens an entry by a press, moves on with the pointer and around its ends with the arrow
/// keys, and gives the keys back when something was chosen.
TEST_F(MenuTest, ABarMovesBetweenItsMenus) {
    auto* bar = new CMenu(win.get(), "bar");
    std::string built;
    Target fill([&] {
        built += std::to_string(bar->getPopup()->tag);
        if (bar->getPopup()->tag != 3)
            for (int i = 0; i < 2; i++) bar->getPopup()->add(CStr(char('0' + i)), note());
    });
    CCtrl* file = bar->add("File", fill.change(), 1);
    CCtrl* edit = bar->add("Edit", fill.change(), 2);
    bar->add("Void", fill.change(), 3);
    win->addMenu(bar);
    settle();
    const auto middle = [&](const CCtrl* entry) {
        return "mousemove " + std::to_string(100 + entry->left + entry->width / 2) + " 110";
    };
    later(middle(edit));
    whenever([&] { return bar->current() == edit; }, [&] { EXPECT_EQ(bar->current(), edit); });
    later("key Right");
    later([&] { EXPECT_STREQ(bar->getPopup()->getItem(0)->text.asChar(), "Empty"); });
    for (const char* key : {"Right", "Left", "Left", "Down", "Return"})
        later(std::string("key ") + key);
    xdo(middle(file) + " click 1");
    EXPECT_EQ(built, "123132");
    EXPECT_EQ(chosen, "1;");
    EXPECT_EQ(bar->current(), nullptr);
    chosen.clear();
    win->setKeyCtrl(bar);
    xdo("key Left Right Right Right"); // Void, File, Edit, Void
    EXPECT_STREQ(bar->current()->id.asChar(), "Void");
    for (const char* key : {"Escape", "Right", "Return", "Down", "Return"})
        later(std::string("key ") + key);
    xdo("key Return");
    pumpUntil([&] { return !chosen.empty(); });
    EXPECT_EQ(chosen, "1;");
    EXPECT_EQ(win->keyCtrl, nullptr);
    win->setKeyCtrl(bar);
    xdo("key Escape");
    EXPECT_EQ(bar->current(), nullptr);
    win->setKeyCtrl(bar);
    bar->clear(); // for another page
    EXPECT_EQ(bar->current(), nullptr);
    const CCtrl* other = bar->add("Other", fill.change(), 3);
    xdo("key Right");
    EXPECT_EQ(bar->current(), other);
}

/// By the right button, and by keys, in a dialog too.
TEST_F(MenuTest, TheCaptionHasAMenu) {
    struct Case {
        const char *opener, *keys;
    };
    for (const Case& c : {Case{"mousemove 340 210 click 3", "Down Down Return"},
                          {"key alt+space", "Down Return"},
                          {"key Menu", "Down Return"},
                          {"key shift+F10", "Down Return"}}) {
        CWin framed(app.get(), nullptr, "framed", 300, 200, 200, 100, winCaption | winSizable);
        CDialogWin dialog(win.get(), "dialog", 160, 100);
        dialog.style &= ~winCentre;
        dialog.setPos(300, 200);
        for (CWin* at : {&framed, static_cast<CWin*>(&dialog)}) {
            at->show(true);
            at->setFocus(true);
            settle();
            for (const std::string& key : split(c.keys)) later("key " + key);
            xdo(c.opener);
            EXPECT_TRUE(pumpUntil([&] { return !at->visible; })) << c.opener;
        }
    }
}

/// Tabs of 20 in height over commands; what is chosen there is what the menu holds at that moment.
TEST_F(MenuTest, ARibbonShowsTheCommandsOfMenus) {
    CWin wide(app.get(), nullptr, "wide", 100, 100, 400, 200, winNoBorder);
    auto* ribbon = new CRibbons(&wide, "ribbon");
    bool locked = false;
    Target filler([&] {
        auto* popup = static_cast<CPopup*>(static_cast<CCtrl*>(filler.sender));
        popup->add("Save\tCtrl+S", note())->enabled = !locked;
        popup->addSeparator();
        popup->addSub("New")->add("Empty one", note());
        if (popup->tag == 2)
            for (int i = 0; i < 20; i++) popup->add(CStr("Command ") + asStr(i), note());
    });
    ribbon->add(&wide, "File", 1, filler.change());
    ribbon->add(&wide, "Long", 2, filler.change());
    CRibbonItem* page = ribbon->add(win.get(), "Page", 3, nullptr);
    page->menu->add("Own", nullptr);
    wide.addToolbar(ribbon);
    ribbon->setActiveWin(&wide);
    wide.show(true);
    wide.setFocus(true);
    settle();
    /// The middle of the first item with a text, in words of xdotool.
    const auto to = [&](const char* text) {
        for (int y : {10, 36})
            for (int x = 0; x < 400; x++) {
                const CRibbonItem* item = ribbon->itemAtPos(x, y);
                if (item && (item->text == text || item->id == text))
                    return "mousemove " + std::to_string(100 + x + item->width / 2) + " " +
                           std::to_string(100 + y) + " click 1";
            }
        return std::string("mousemove 490 290 click 1");
    };
    struct Case {
        const char* item;
        std::vector<std::string> inMenu;
        const char* chosen;
    };
    const Case cases[] = {{"Save", {}, "Save;"},
                          {"New", {"key Down", "key Return"}, "Empty one;"},
                          {"Page", {}, ""}, // its window is not the active one
                          {"Long", {}, ""},
                          {"Command 1", {}, "Command 1;"},
                          {"Command 19", {}, ""}, // does not fit
                          {"more", {"key End", "key Return"}, "Command 19;"}};
    for (const Case& c : cases) {
        chosen.clear();
        for (const std::string& step : c.inMenu) later(step);
        act(split(to(c.item)));
        pumpUntil([&] { return steps.empty() && app->menus.empty(); });
        EXPECT_EQ(chosen, c.chosen) << c.item;
        EXPECT_NE(ribbon->getTab(-1), page) << c.item;
    }
    const std::string save = to("Save");
    chosen.clear();
    locked = true; // since it was shown
    xdo(save);
    EXPECT_EQ(chosen, "");
    EXPECT_EQ(ribbon->itemAtPos(10, 36), nullptr);
    locked = false;
    wide.setKeyCtrl(ribbon);
    xdo("key Up Return");
    EXPECT_EQ(chosen, "Save;");
    ribbon->setActiveWin(win.get());
    xdo("key Up");
    EXPECT_EQ(ribbon->getTab(-1), page);
}

/// A list that drops down: rows of 16 pixels below the control, above it at the screen's edge.
TEST_F(MenuTest, ADropdownChooses) {
    struct Case {
        int rows, windowTop, shownRows, listTop;
        std::vector<std::string> steps;
        int chosen;
    };
    const Case cases[] = {{3, 100, 3, 130, {"mousemove 150 150", "click 1"}, 1},
                          {3, 100, 3, 130, {"key End", "key Return"}, 2},
                          {3, 100, 3, 130, {"key End", "key Escape"}, 0},
                          {40, 100, 20, 130, {"key Next", "key Down", "key Return"}, 21},
                          {3, 560, 3, 570 - 48, {"mousemove 150 530", "click 1"}, 0},
                          {3, 100, 3, 130, {"mousemove 250 220", "click 1"}, 0}};
    for (const Case& c : cases) {
        win->setPos(100, c.windowTop);
        auto* drop = new CDropdown(win.get(), "drop", 10, 10, 100, 20);
        for (int i = 0; i < c.rows; i++) drop->add(CStr("Row ") + CStr(char('0' + i)));
        drop->setIndex(0);
        int changes = 0;
        Target counter([&] { changes++; });
        drop->onChange = counter.change();
        win->addControl(drop);
        settle();
        later([&] {
            CWin* list = drop->getDropWin();
            EXPECT_EQ(list->getPos(true), asPoint(110, c.listTop));
            EXPECT_EQ(list->height, c.shownRows * 16);
        });
        for (const std::string& step : c.steps) later(step);
        app->lastMouseTime = -1; // no double click with that of the case before
        const std::string there = "mousemove 120 " + std::to_string(c.windowTop + 15);
        xdo(there + " click 1");
        EXPECT_EQ(drop->index, c.chosen);
        EXPECT_EQ(changes, c.chosen ? 1 : 0);
        drop->setIndex(0);
        xdo(there + " click 5");
        EXPECT_EQ(drop->index, 0);
        xdo("keydown ctrl click 5 keyup ctrl");
        EXPECT_EQ(drop->index, 1);
        win->clientGroup->controls.remove(drop);
        delete drop;
    }
}
