#include "ControlFixture.h"

#include "gui/controls/CIncDec.h"
#include "gui/controls/CListbox.h"
#include "gui/controls/CScrollbar.h"
#include "gui/controls/CSplit.h"
#include "gui/controls/CTabs.h"

/// A list of 100 high shows 6 rows of 16, from 11 on.
TEST_F(ControlTest, AListIsChosenFromByMouseAndKeys) {
    auto* list = add(new CListbox(win.get(), "list", 10, 10, 120, 100));
    for (int i = 0; i < 20; i++) list->add(CStr("Row ") + CStr(char('a' + i)));
    int opened = 0, checked = 0;
    Target open([&] { opened++; }), check([&] { checked++; });
    list->onDoubleClick = open.change();
    list->onChecked = check.change();
    settle();
    at(60, 11 + 2 * 16 + 5, {"click", "1"});
    EXPECT_EQ(list->index, 2);
    EXPECT_EQ(win->keyCtrl, list);
    act({"click", "1"});
    EXPECT_EQ(opened, 1);
    struct Case {
        const char* key;
        int index;
    };
    const Case cases[] = {{"Down", 3},  {"Up", 2},     {"Next", 8}, {"End", 19},
                          {"Down", 19}, {"Prior", 13}, {"Home", 0}, {"Up", 0}};
    for (const Case& c : cases) {
        act({"key", c.key});
        EXPECT_EQ(list->index, c.index) << c.key;
    }
    act({"click", "5"}); // the wheel shows three rows further on
    at(60, 11 + 5, {"click", "1"});
    EXPECT_EQ(list->index, 3);
    act({"key", "space"});
    EXPECT_EQ(checked, 0);
    list->checkable = true;
    act({"key", "space"});
    at(15, 11 + 16 + 5, {"click", "1"});
    EXPECT_TRUE(list->row(3)->checked && list->row(4)->checked);
    EXPECT_EQ(checked, 2);
    list->clearRows();
    at(60, 60, {"click", "1"});
    EXPECT_EQ(list->index, -1);
}

TEST_F(ControlTest, TabsChoose) {
    auto* tabs = add(new CTabs(win.get(), "tabs", 10, 10, 180, 20));
    int rights = 0;
    Target right([&] { rights++; });
    tabs->onRightClick = right.change();
    for (const char* name : {"One", "Two"}) tabs->items.append(name);
    at(10 + 70, 20, {"click", "1"});
    EXPECT_EQ(tabs->index, 1);
    at(10 + 140, 20, {"click", "1"}); // beyond the last
    EXPECT_EQ(tabs->index, 1);
    at(10 + 5, 20, {"click", "3"});
    EXPECT_EQ(rights, 1);
    tabs->setIndex(0);
    win->setKeyCtrl(tabs);
    act({"key", "Right", "Right"});
    EXPECT_EQ(tabs->index, 1);
    tabs->tabWidth = 0;
    at(10 + 1, 20, {"click", "1"});
    EXPECT_EQ(tabs->index, 0);
}

TEST_F(ControlTest, AValueOfNamesSteps) {
    auto* value = add(new CTextValue(win.get(), "v", 10, 10, 100, 20));
    for (const char* name : {"a", "b", "c"}) value->items.append(name);
    at(105, 20, {"click", "1", "click", "1", "click", "1"});
    EXPECT_EQ(value->index, 2);
    at(75, 20, {"click", "1"});
    EXPECT_EQ(value->index, 1);
    EXPECT_EQ(changes, 3);
    at(20, 20, {"click", "4"});
    EXPECT_EQ(value->index, 1);
    act({"keydown", "ctrl", "click", "5", "keyup", "ctrl"});
    EXPECT_EQ(value->index, 0);
}

/// A panel of 60 wide that is dragged: below 40 it closes; `maxSize` is the least it opens to.
TEST_F(ControlTest, ASplitMovesItsNeighbour) {
    auto* panel = add(new CPanel(win.get(), "panel", 0, 0, 60, 150));
    auto* split = add(new CSplit(win.get(), "split", 60, 0, 4, 150));
    split->target = panel;
    struct Case {
        int drag, maxSize, size;
    };
    for (const Case& c : {Case{30, -1, 90}, {-15, -1, 45}, {-25, -1, 0}, {-10, 80, 80}}) {
        panel->width = 60;
        split->maxSize = c.maxSize;
        at(62, 50, {"mousedown", "1"});
        at(62 + c.drag, 50, {});
        act({"mouseup", "1"});
        EXPECT_EQ(panel->width, c.size) << c.drag;
    }
}

/// Content of 304 in a panel of 100: both bars take 16, the rest shows through a moving window.
TEST_F(ControlTest, APanelScrollsItsContent) {
    auto* panel = add(new CScrollPanel(win.get(), "panel", 10, 10, 100, 100));
    auto* far = new ProbeCtrl(win.get(), "far", 250, 250, 50, 50);
    panel->inner->addControl(far);
    win->resized();
    win->redraw();
    settle();
    EXPECT_EQ(panel->inner->width, 84);
    EXPECT_EQ(win->controlAtPos(15, 15), panel->inner);
    for (int i = 0; i < 20; i++) at(30, 30, {"click", "5", "click", "7"});
    EXPECT_EQ(panel->inner->scrollX, 304 - 84);
    at(60, 60, {"click", "1"});
    EXPECT_TRUE(far->saw("down 20 20 1")); // 60 - 10 + 220 - 250
    panel->setBounds(10, 10, 190, 100);
    far->setBounds(0, 0, 60, 60);
    win->resized();
    EXPECT_EQ(panel->inner->width, 190);
    EXPECT_EQ(panel->inner->scrollX, 0);
}
