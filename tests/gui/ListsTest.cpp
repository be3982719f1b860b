#include "ControlFixture.h"

#include "gui/controls/CIncDec.h"
#include "gui/controls/CListbox.h"
#include "gui/controls/CMDI.h"
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
    at(60, 11 + 2 * 16 + 5, "click 1");
    EXPECT_EQ(list->index, 2);
    EXPECT_EQ(win->keyCtrl, list);
    xdo("click 1");
    EXPECT_EQ(opened, 1);
    struct Case {
        const char* key;
        int index;
    };
    const Case cases[] = {{"Down", 3},  {"Up", 2},     {"Next", 8}, {"End", 19},
                          {"Down", 19}, {"Prior", 13}, {"Home", 0}, {"Up", 0}};
    for (const Case& c : cases) {
        changes = 0;
        xdo(std::string("key ") + c.key);
        EXPECT_EQ(list->index, c.index) << c.key;
        EXPECT_EQ(changes, 1) << c.key;
    }
    xdo("key End");
    at(60, 11 + 5, "click 1"); // of 6 rows in view
    EXPECT_EQ(list->index, 14);
    xdo("key Home click 5"); // the wheel shows three rows further on
    at(60, 11 + 5, "click 1");
    EXPECT_EQ(list->index, 3);
    xdo("key space");
    EXPECT_EQ(checked, 0);
    list->checkable = true;
    xdo("key space");
    at(10 + 1 + 15, 11 + 16 + 5, "click 1");
    EXPECT_TRUE(list->row(3)->checked && list->row(4)->checked);
    at(10 + 1 + 16, 11 + 2 * 16 + 5, "click 1"); // beside the box
    EXPECT_EQ(list->index, 5);
    EXPECT_EQ(checked, 2);
    at(10 + 110, 60, "click 5"); // over the bar
    at(60, 11 + 5, "click 1");
    EXPECT_EQ(list->index, 6);
    list->row(12)->id = "\xc3\x96l";
    list->keyDown(0xf6, 0); // keys are Latin-1, rows are UTF-8
    EXPECT_EQ(list->index, 12);
    list->clearRows();
    at(60, 60, "click 1");
    EXPECT_EQ(list->index, -1);
}

TEST_F(ControlTest, TabsChoose) {
    auto* tabs = add(new CTabs(win.get(), "tabs", 10, 10, 180, 20));
    int rights = 0;
    Target right([&] { rights++; });
    tabs->onRightClick = right.change();
    for (const char* name : {"One", "Two"}) tabs->items.append(name);
    at(10 + 70, 20, "click 1 click 1");
    EXPECT_EQ(tabs->index, 1);
    EXPECT_EQ(changes, 1);
    at(10 + 140, 20, "click 1"); // beyond the last
    EXPECT_EQ(tabs->index, 1);
    at(10 + 5, 20, "click 3");
    EXPECT_EQ(tabs->index, 0);
    EXPECT_EQ(rights, 1);
    win->setKeyCtrl(tabs);
    xdo("key Right Right");
    EXPECT_EQ(tabs->index, 1);
    tabs->tabWidth = 0;
    at(10 + 1, 20, "click 1");
    EXPECT_EQ(tabs->index, 0);
}

TEST_F(ControlTest, AValueOfNamesSteps) {
    auto* value = add(new CTextValue(win.get(), "v", 10, 10, 100, 20));
    for (const char* name : {"a", "b", "c"}) value->items.append(name);
    at(105, 20, "click 1 click 1 click 1");
    EXPECT_EQ(value->index, 2);
    at(75, 20, "click 1");
    EXPECT_EQ(value->index, 1);
    EXPECT_EQ(changes, 3);
    at(20, 20, "click 4");
    EXPECT_EQ(value->index, 1);
    xdo("keydown ctrl click 5 keyup ctrl");
    EXPECT_EQ(value->index, 0);
}

/// A panel of 60 wide or high that is dragged: below 40 it closes; `maxSize` is the least it opens
/// to; a split above its neighbour makes it larger by going up.
TEST_F(ControlTest, ASplitMovesItsNeighbour) {
    struct Case {
        bool across, fromTop;
        int drag, maxSize, size;
    };
    const Case cases[] = {{true, false, 30, -1, 90},   {true, false, -15, -1, 45},
                          {true, false, -25, -1, 0},   {true, false, -10, 80, 80},
                          {false, false, -20, -1, 80}, {false, true, 20, -1, 80}};
    for (const Case& c : cases) {
        auto* panel = add(new CPanel(win.get(), "panel", 0, 0, 60, 60));
        auto* split = add(new CSplit(win.get(), "split", 60, 60, 20, 20));
        split->target = panel;
        split->horizontal = c.across;
        split->fromTop = c.fromTop;
        split->maxSize = c.maxSize;
        at(65, 65, "mousedown 1");
        at(65 + (c.across ? c.drag : 0), 65 + (c.across ? 0 : c.drag), "mouseup 1");
        EXPECT_EQ(c.across ? panel->width : panel->height, c.size) << c.drag;
        EXPECT_EQ(c.across ? panel->height : panel->width, 60) << c.drag;
        win->clear();
    }
}

TEST_F(ControlTest, ASplitTakesKeysAndGivesADragBack) {
    auto* panel = add(new CPanel(win.get(), "panel", 0, 0, 60, 60));
    auto* split = add(new CSplit(win.get(), "split", 60, 60, 20, 20));
    split->target = panel;
    at(65, 65, "mousedown 1 mousemove_relative 30 0");
    EXPECT_EQ(panel->width, 90);
    xdo("key Escape mouseup 1");
    EXPECT_EQ(panel->width, 60);
    win->setKeyCtrl(split);
    const struct {
        const char* key;
        int width;
    } steps[] = {{"Right", 76}, {"Left", 60},   {"Left", 44}, {"Left", 0}, {"Right", 40},
                 {"Return", 0}, {"Return", 40}, {"Up", 40},   {"Home", 0}};
    for (const auto& step : steps) {
        xdo(std::string("key ") + step.key);
        EXPECT_EQ(panel->width, step.width) << step.key;
    }
}

/// The grip sizes its page, or, where that fills its area, the window around; a maximized window
/// stays, and keeps the size to go back to.
TEST_F(ControlTest, AGripSizesTheWindow) {
    CMDI area(app.get(), win.get(), "area", 0, 0, 200, 150);
    area.show(true);
    CWin page(app.get(), &area, "page", 10, 10, 80, 60, winChild | winSizable);
    page.show(true);
    auto* grip = new CSizer(&page, "grip", 0, 0, 16, 16);
    grip->setAlign(alignRight | alignBottom, 0, 0);
    page.addControl(grip);
    page.resized();
    win->style |= winSizable;
    settle();
    const auto drag = [&] {
        const CPoint corner = addPos(page.getPos(true), page.getSize());
        xdo("mousemove " + std::to_string(corner.x - 8) + " " + std::to_string(corner.y - 8));
        xdo("mousedown 1 mousemove_relative 20 10");
        xdo("mouseup 1");
    };
    drag();
    EXPECT_EQ(page.getSize(), asPoint(100, 70));
    EXPECT_EQ(win->getSize(), asPoint(200, 150));
    page.maximize();
    settle();
    drag();
    EXPECT_EQ(win->getSize(), asPoint(220, 160));
    win->maximize();
    settle();
    drag();
    win->restore();
    settle();
    EXPECT_EQ(win->getSize(), asPoint(220, 160));
}

/// Content of 304 in a panel of 100: both bars take 16, the rest shows through a moving window. A
/// label lets presses through to what is behind it.
TEST_F(ControlTest, APanelScrollsItsContent) {
    auto* panel = add(new CScrollPanel(win.get(), "panel", 10, 10, 100, 100));
    auto* far = new ProbeCtrl(win.get(), "far", 250, 250, 50, 50);
    panel->inner->addControl(far);
    auto* label = new CLabel(win.get(), "label", 250, 250, 50, 50);
    panel->inner->addControl(label);
    win->resized();
    win->redraw();
    settle();
    EXPECT_EQ(panel->inner->width, 84);
    EXPECT_EQ(win->controlAtPos(15, 15), panel->inner);
    at(30, 30, "click --repeat 20 --delay 1 5 click --repeat 20 --delay 1 7");
    EXPECT_EQ(panel->inner->scrollX, 304 - 84);
    at(60, 60, "click 1");
    EXPECT_TRUE(far->saw("down 20 20 1")); // 60 - 10 + 220 - 250
    panel->setBounds(10, 10, 190, 100);
    far->setBounds(0, 0, 60, 60);
    label->setBounds(0, 0, 60, 60);
    win->resized();
    EXPECT_EQ(panel->inner->width, 190);
    EXPECT_EQ(panel->inner->scrollX, 0);
}
