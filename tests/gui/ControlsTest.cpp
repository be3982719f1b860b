#include "ControlFixture.h"

#include "gui/Keys.h"
#include "gui/Selections.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CScrollbar.h"
#include "gui/controls/CValue.h"

TEST_F(ControlTest, AButtonClicksOnALeftReleaseInsideIt) {
    auto* button = add(new CButton(win.get(), "b", "Push", 10, 10, 50, 20));
    at(20, 20, {"click", "1"});
    EXPECT_EQ(changes, 1);
    at(20, 20, {"click", "3"});
    EXPECT_EQ(changes, 1);
    at(20, 20, {"mousedown", "1"});
    const int pushed = button->fillColour();
    act({"mousemove", "190", "190", "mouseup", "1"});
    EXPECT_EQ(changes, 1);
    const int normal = button->fillColour();
    act({"mousemove", "120", "120"});
    const int hovered = button->fillColour();
    button->setEnabled(false);
    const int disabled = button->fillColour();
    EXPECT_TRUE(pushed != normal && hovered != normal && disabled != normal && pushed != hovered);
    at(20, 20, {"click", "1"});
    EXPECT_EQ(changes, 1);
    button->setEnabled(true);
    button->setLit(true);
    settle();
    EXPECT_EQ(Shot(win->handle, 200, 150).at(12, 12), button->fillColour());
}

TEST_F(ControlTest, AButtonWithoutHandlerIsKnownByItsName) {
    struct NamedWin : CWin {
        using CWin::CWin;
        std::string heard;
        void notify(const CStr& what, CObject*) override { heard += what.asChar(); }
    };
    NamedWin named(app.get(), nullptr, "named", 400, 100, 100, 100, winNoBorder);
    auto* group = new CGroup(&named, "group", 0, 0, 100, 100);
    group->addControl(new CButton(&named, "apply", "Apply", 0, 0, 50, 20));
    named.addControl(group);
    named.show(true);
    settle();
    act({"mousemove", "410", "110", "click", "1"});
    EXPECT_EQ(named.heard, "apply");
}

TEST_F(ControlTest, ACheckBoxToggles) {
    auto* box = add(new CCheckbox(win.get(), "c", "Check", 10, 10, 80, 20));
    at(20, 20, {"click", "1"});
    EXPECT_TRUE(box->checked);
    win->setKeyCtrl(box);
    act({"key", "space"});
    EXPECT_FALSE(box->checked);
    EXPECT_EQ(changes, 2);
}

/// Each case starts with "one two three" and the caret at its end, and ends with Return.
TEST_F(ControlTest, AnEditFieldEdits) {
    struct Case {
        std::vector<std::string> keys;
        const char* text;
    };
    const Case cases[] = {
        {{"x"}, "one two threex"},
        {{"Home", "x"}, "xone two three"},
        {{"Left", "Left", "BackSpace", "Delete"}, "one two the"},
        {{"ctrl+BackSpace"}, "one two "},
        {{"ctrl+Left", "ctrl+Left", "x"}, "one xtwo three"},
        {{"Home", "ctrl+Right", "x"}, "onex two three"},
        {{"shift+Left", "shift+Left", "x"}, "one two thrx"},
        {{"ctrl+a", "x"}, "x"},
        {{"shift+Home", "Delete", "a", "asterisk"}, "a"},
        {{"Home", "shift+ctrl+Right", "ctrl+c", "End", "ctrl+v"}, "one two threeone"},
        {{"ctrl+a", "ctrl+x", "b", "ctrl+v"}, "bone two three"},
        {{"ctrl+a", "Delete", "ctrl+z"}, "one two three"},
        {{"ctrl+a", "Delete", "Escape"}, "one two three"}};
    auto* edit = add(new CEdit(win.get(), "e", 10, 10, 120, 20));
    for (const Case& c : cases) {
        changes = 0;
        edit->setText("one two three");
        win->setKeyCtrl(edit);
        std::vector<std::string> words = {"key"};
        words.insert(words.end(), c.keys.begin(), c.keys.end());
        words.emplace_back("Return");
        act(words);
        EXPECT_STREQ(edit->text.asChar(), c.text) << c.keys.back();
        EXPECT_EQ(changes, edit->text == "one two three" ? 0 : 1) << c.keys.back();
        EXPECT_EQ(win->keyCtrl, nullptr);
    }
}

TEST_F(ControlTest, AnEditFieldPassesWholeLetters) {
    struct Case {
        std::vector<std::string> keys;
        const char* text;
    };
    const Case cases[] = {{{"key", "Home", "Right", "Delete"}, "au"},
                          {{"key", "End", "Left", "BackSpace"}, "au"},
                          {{"key", "Home", "Right", "shift+Right", "x"}, "axu"},
                          {{"key", "Home", "Right", "Right", "x"}, "a\xc3\xa9xu"}};
    auto* edit = add(new CEdit(win.get(), "e", 10, 10, 120, 20));
    win->setKeyCtrl(edit);
    for (const Case& c : cases) {
        edit->setText("a\xc3\xa9u");
        act(c.keys);
        EXPECT_STREQ(edit->text.asChar(), c.text) << c.keys.back();
    }
    edit->setText("a");
    edit->keyDown(0xe9, 0); // keys are Latin-1
    EXPECT_STREQ(edit->text.asChar(), "a\xc3\xa9");
}

/// Cells are 6 pixels wide and begin 4 pixels in: the caret goes to the nearest gap.
TEST_F(ControlTest, AnEditFieldTakesTheMouse) {
    auto* edit = add(new CEdit(win.get(), "e", 10, 10, 120, 20));
    edit->setText("one two three");
    at(10 + 4 + 4 * 6 + 1, 20, {"mousedown", "1"});
    EXPECT_EQ(edit->cursor, 3);
    act({"mousemove_relative", "18", "0", "mouseup", "1"});
    EXPECT_TRUE(edit->selection() == "two");
    at(10 + 4 + 10 * 6, 15, {"mousedown", "1", "mouseup", "1", "mousedown", "1", "mouseup", "1"});
    EXPECT_TRUE(edit->selection() == "three");
    edit->upperCase = true;
    act({"key", "q"});
    EXPECT_TRUE(edit->text == "one two Q");
}

TEST_F(ControlTest, AValueIsDraggedTurnedNudgedAndTyped) {
    auto* value = add(new CValue(win.get(), "v", 10, 10, 60, 20));
    value->max = 200;
    value->showValue(120);
    EXPECT_EQ(changes, 0);
    // 24 pixels right and 12 up are 36 x 0.5 / 3 = 6 steps.
    at(20, 20, {"mousedown", "1"});
    act({"mousemove_relative", "--", "24", "-12"});
    act({"mouseup", "1"});
    EXPECT_EQ(value->value, 126);
    at(60, 20, {"click", "3"});
    EXPECT_EQ(value->value, 127);
    at(15, 20, {"click", "3"});
    EXPECT_EQ(value->value, 126);
    act({"click", "4"});
    EXPECT_EQ(value->value, 126);
    act({"keydown", "ctrl", "click", "4", "keydown", "shift", "click", "5", "keyup", "shift",
         "keyup", "ctrl"});
    EXPECT_EQ(value->value, 126 + 1 - 10);
    at(30, 25, {"mousedown", "1", "mouseup", "1", "mousedown", "1", "mouseup", "1"});
    EXPECT_EQ(win->keyCtrl, value);
    act({"key", "9", "9", "9", "Return"});
    EXPECT_EQ(value->value, 200);
    win->setKeyCtrl(value);
    act({"key", "x", "Return"});
    EXPECT_EQ(value->value, 200);
    value->step = 0;
    at(20, 20, {"mousedown", "1"});
    act({"mousemove_relative", "--", "-60", "0"});
    act({"mouseup", "1"});
    EXPECT_EQ(value->value, 200);
}

TEST_F(ControlTest, AValueCanWaitForTheEndOfADrag) {
    auto* value = add(new CValue(win.get(), "v", 10, 10, 60, 20));
    value->liveUpdate = false;
    value->displayOffset = 1;
    at(20, 20, {"mousedown", "1"});
    act({"mousemove_relative", "30", "0"});
    EXPECT_EQ(value->value, 5);
    EXPECT_EQ(changes, 0);
    act({"mouseup", "1"});
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(value->getText() == "6");
    win->setKeyCtrl(value);
    act({"key", "8", "Return"});
    EXPECT_EQ(value->value, 7);
}

TEST_F(ControlTest, ADecimalValueIsTypedWithItsPoint) {
    auto* value = add(new CDecimalValue(win.get(), "v", 10, 10, 80, 20));
    value->max = 30000;
    value->decimals = 2;
    value->showValue(12050);
    EXPECT_TRUE(value->getText() == "120.50");
    struct Case {
        std::vector<std::string> keys;
        int value;
    };
    const Case cases[] = {{{"9", "8", "period", "7", "6"}, 9876},
                          {{"9", "8", "comma", "5"}, 9850},
                          {{"9", "9", "9"}, 30000},
                          {{"1", "x"}, 30000}};
    for (const Case& c : cases) {
        win->setKeyCtrl(value);
        std::vector<std::string> words = {"key"};
        words.insert(words.end(), c.keys.begin(), c.keys.end());
        words.emplace_back("Return");
        act(words);
        EXPECT_EQ(value->value, c.value);
    }
}

/// 1000 in all of which 250 are seen, on 200 pixels with two arrows of 16.
TEST_F(ControlTest, AScrollBarKeepsProportions) {
    CScrollbar bar(win.get(), "s", 0, 0, 16, 200);
    bar.setRange(1000, 250);
    EXPECT_EQ(bar.max, 750);
    EXPECT_EQ(bar.thumbSize, 42); // a quarter of 168
    bar.setPos(300);
    EXPECT_EQ(bar.thumbPos, 16 + 50); // 0.4 of 126 = 50.4
    bar.setPos(9999);
    EXPECT_EQ(bar.pos, 750);
    EXPECT_EQ(bar.thumbPos, 200 - 16 - 42);
    bar.setRange(200, 250);
    EXPECT_EQ(bar.max, 0);
    EXPECT_EQ(bar.pos, 0);
    bar.growing = true;
    bar.setRange(200, 250);
    EXPECT_EQ(bar.max, 64);
    bar.setPos(500);
    EXPECT_EQ(bar.max, 500);
    bar.setPos(100);
    EXPECT_EQ(bar.max, 100);
}

TEST_F(ControlTest, AScrollBarIsPressedAndDragged) {
    auto* bar = add(new CScrollbar(win.get(), "s", 10, 0, 16, 140));
    bar->setRange(1000, 250); // thumb 27 of a track of 108: a travel of 81
    at(18, 20, {"mousedown", "1"});
    act({"mousemove_relative", "0", "27"});
    act({"mouseup", "1"});
    EXPECT_EQ(bar->pos, 250);
    EXPECT_EQ(changes, 1);
    at(18, 135, {"mousedown", "1"});
    EXPECT_EQ(bar->pos, 252);
    EXPECT_TRUE(pumpUntil([&] { return bar->pos > 300; })); // faster and faster
    act({"mouseup", "1"});
    EXPECT_TRUE(app->timers.empty());
    const int before = bar->pos;
    at(18, 18, {"click", "1"});
    EXPECT_LE(bar->pos, before - 8);
}

TEST_F(ControlTest, AFaderCountsFromItsFoot) {
    auto* fader = add(new CFader(win.get(), "f", 10, 10, 20, 116));
    EXPECT_EQ(fader->pos, 0);
    at(20, 118, {"mousedown", "1"}); // travel 100
    act({"mousemove_relative", "--", "0", "-30"});
    act({"mouseup", "1"});
    EXPECT_EQ(fader->pos, 30);
    act({"click", "4"});
    EXPECT_EQ(fader->pos, 30);
    act({"keydown", "ctrl", "click", "4", "keyup", "ctrl"});
    EXPECT_EQ(fader->pos, 31);
    win->setKeyCtrl(fader);
    act({"key", "Down", "Prior", "Prior", "Next"});
    EXPECT_EQ(fader->pos, 40);
}
