#include "ControlFixture.h"

#include "gui/controls/CDropdown.h"
#include "gui/controls/CMenu.h"
#include "gui/controls/CPopup.h"
#include "gui/controls/CScrollbar.h"

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
        Words keys;
        const char* chosen;
    };
    const Case cases[] = {
        {{"Down", "Return"}, "First;"},
        {{"Down", "Down", "Down", "Right", "Down", "Return"}, "Last;"}, // past what is off
        {{"Down", "Down", "space", "space", "Escape"}, "Check+;Check;"},
        {{"Down", "Down", "Down", "Right", "Left", "Up", "Return"}, "Check;"},
        {{"End", "Up", "Return"}, "rows1;"},
        {{"Up", "Down", "Return"}, "First;"}, // in a ring
        {{"End", "Home", "Return"}, "First;"},
        {{"Down", "space", "Escape"}, ""},
        {{"Down", "Down", "Down", "Return", "Return"}, "Inner;"},
        {{"Down", "Down", "Down", "Right", "Escape", "Escape"}, ""}};
    for (const Case& c : cases) {
        chosen.clear();
        for (const std::string& key : c.keys) later(Words{"key", key});
        makePopup()->popup(300, 200);
        EXPECT_EQ(chosen, c.chosen) << c.keys[0] << " " << c.keys.back();
        EXPECT_TRUE(app->menus.empty());
    }
}

/// Rows: First 0 to 20, separator to 27, Off to 47, Check to 67, More to 87, three rows of 16.
TEST_F(MenuTest, ChoosesByMouse) {
    struct Case {
        std::vector<Words> steps;
        const char* chosen;
    };
    const auto row = [](int y) { return Words{"mousemove", "340", std::to_string(203 + y)}; };
    const Words click = {"click", "1"};
    const Case cases[] = {{{row(10), click}, "First;"},
                          {{row(37), click, row(57), click}, "Check;"},
                          {{row(87 + 40), click}, "rows2;"},
                          {{{"mousemove", "600", "500"}, click}, ""},
                          {{row(77), click, {"mousemove", "380", "300"}, {"key", "Escape"}}, ""}};
    for (const Case& c : cases) {
        chosen.clear();
        act({"mousemove", "10", "10"});
        for (const Words& step : c.steps) later(step);
        if (c.chosen[0] == 0) later(Words{"key", "Escape"});
        makePopup()->popup(300, 200);
        EXPECT_EQ(chosen, c.chosen);
        EXPECT_TRUE(app->menus.empty());
    }
}

/// The menu of an entry opens after a while under the pointer, beside the first one or, at the
/// screen's edge, on its other side.
TEST_F(MenuTest, SubMenusOpenBesideTheirEntry) {
    for (int x : {300, 790}) {
        std::unique_ptr<CPopup> popup(makePopup(false));
        CPopup* sub = popup->getItem(4)->subMenu;
        later(Words{"mousemove", std::to_string(x == 300 ? 340 : 760), "280"});
        whenever([sub] { return sub->visible; },
                 [&] {
                     const int at = popup->getPos(true).x;
                     EXPECT_EQ(sub->getPos(true).x,
                               x == 300 ? at + popup->width - 6 : at - sub->width + 6);
                     app->killMenu(nullptr);
                 });
        popup->popup(x, 200);
    }
}

TEST_F(MenuTest, ALongMenuScrolls) {
    CPopup popup(app.get(), win.get());
    for (int i = 0; i < 60; i++) popup.add(CStr("Line ") + CStr(char('A' + i % 26)), note());
    later(Words{"key", "End"});
    later([&] {
        EXPECT_EQ(popup.height, 600);
        EXPECT_EQ(popup.scrollMax, 60 * 20 - (600 - 6 - 40));
        EXPECT_EQ(popup.itemRect(popup.getItem(59), 0).bottom, 600 - 6 - 20); // in view
    });
    later(Words{"mousemove", "320", "10", "mousedown", "1"});
    whenever([&] { return popup.itemRect(popup.getItem(0), 0).top == 20; },
             [] {
                 runCommand({"xdotool", "mouseup", "1", "key", "Escape"});
             });
    popup.popup(300, 100);
    EXPECT_EQ(popup.scrollDir, 0);
    EXPECT_EQ(chosen, "");
}

/// The bar opens an entry by a press, moves on with the pointer and with the arrow keys.
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
        return Words{"mousemove", std::to_string(100 + entry->left + entry->width / 2), "110"};
    };
    later(middle(edit));
    later([&] { EXPECT_EQ(bar->current(), edit); });
    later(Words{"key", "Right"});
    later([&] { EXPECT_STREQ(bar->getPopup()->getItem(0)->text.asChar(), "Empty"); });
    later(Words{"key", "Left"});
    later(Words{"key", "Down"});
    later(Words{"key", "Return"});
    act(middle(file));
    act({"click", "1"});
    EXPECT_EQ(built, "1232");
    EXPECT_EQ(chosen, "1;");
    EXPECT_EQ(bar->current(), nullptr);
    chosen.clear();
    win->setKeyCtrl(bar);
    for (const char* key : {"Down", "Return"}) later(Words{"key", key});
    act({"key", "Down"});
    EXPECT_EQ(chosen, "1;");
}

TEST_F(MenuTest, TheCaptionHasAMenu) {
    CWin framed(app.get(), nullptr, "framed", 300, 200, 200, 100, winCaption | winSizable);
    framed.show(true);
    settle();
    for (const char* key : {"Down", "Down", "Return"}) later(Words{"key", key});
    act({"mousemove", "340", "210", "click", "3"});
    EXPECT_FALSE(framed.visible);
}

/// A list that drops down: rows of 16 pixels below the control, above it at the screen's edge.
TEST_F(MenuTest, ADropdownChooses) {
    struct Case {
        int rows, windowTop, shownRows, listTop;
        std::vector<Words> steps;
        int chosen;
    };
    const Words click = {"click", "1"};
    const Case cases[] = {
        {3, 100, 3, 130, {{"mousemove", "150", "150"}, click}, 1},
        {3, 100, 3, 130, {{"key", "End"}, {"key", "Return"}}, 2},
        {3, 100, 3, 130, {{"key", "End"}, {"key", "Escape"}}, 0},
        {40, 100, 20, 130, {{"key", "Next"}, {"key", "Down"}, {"key", "Return"}}, 21},
        {3, 560, 3, 570 - 50, {{"mousemove", "150", "530"}, click}, 0},
        {3, 100, 3, 130, {{"mousemove", "250", "220"}, click}, 0}};
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
            EXPECT_EQ(list->height, c.shownRows * 16 + 2);
        });
        for (const Words& step : c.steps) later(step);
        app->lastMouseTime = -1; // no double click with that of the case before
        act({"mousemove", "120", std::to_string(c.windowTop + 15), "click", "1"});
        EXPECT_EQ(drop->index, c.chosen);
        EXPECT_EQ(changes, c.chosen ? 1 : 0);
        drop->setIndex(0);
        act({"mousemove", "120", std::to_string(c.windowTop + 15), "click", "5"});
        EXPECT_EQ(drop->index, 0);
        act({"keydown", "ctrl", "click", "5", "keyup", "ctrl"});
        EXPECT_EQ(drop->index, 1);
        win->clientGroup->controls.remove(drop);
        delete drop;
    }
}
