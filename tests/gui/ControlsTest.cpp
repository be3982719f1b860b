#include "ControlFixture.h"

#include "gui/Keys.h"
#include "gui/Selections.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CScrollbar.h"
#include "gui/controls/CValue.h"

#include <sstream>

TEST_F(ControlTest, AButtonClicksOnALeftReleaseInsideIt) {
    auto* button = add(new CButton(win.get(), "b", "Push", 10, 10, 50, 20));
    at(20, 20, "click 1");
    EXPECT_EQ(changes, 1);
    at(20, 20, "click 3");
    EXPECT_EQ(changes, 1);
    at(20, 20, "mousedown 1");
    const int pushed = button->fillColour();
    xdo("mousemove 190 190 mouseup 1");
    EXPECT_EQ(changes, 1);
    const int normal = button->fillColour();
    xdo("mousemove 120 120");
    const int hovered = button->fillColour();
    button->setEnabled(false);
    const int disabled = button->fillColour();
    EXPECT_TRUE(pushed != normal && hovered != normal && disabled != normal && pushed != hovered);
    at(20, 20, "click 1");
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
    xdo("mousemove 410 110 click 1");
    EXPECT_EQ(named.heard, "apply");
}

TEST_F(ControlTest, ACheckBoxToggles) {
    auto* box = add(new CCheckbox(win.get(), "c", "Check", 10, 10, 80, 20));
    at(20, 20, "click 1");
    EXPECT_TRUE(box->checked);
    win->setKeyCtrl(box);
    xdo("key space");
    EXPECT_FALSE(box->checked);
    EXPECT_EQ(changes, 2);
}

/// Each case starts with the caret at the end, and ends with Return. Letters may have two bytes.
TEST_F(ControlTest, AnEditFieldEdits) {
    struct Case {
        const char *before, *keys, *text;
    };
    const char *three = "one two three", *letters = "a\xc3\xa9u";
    const Case cases[] = {{three, "x", "one two threex"},
                          {three, "Home x", "xone two three"},
                          {three, "Left Left BackSpace Delete", "one two the"},
                          {three, "ctrl+BackSpace", "one two "},
                          {three, "ctrl+Left ctrl+Left x", "one xtwo three"},
                          {three, "Home ctrl+Right x", "onex two three"},
                          {three, "shift+Left shift+Left x", "one two thrx"},
                          {three, "ctrl+a x", "x"},
                          {three, "shift+Home Delete a asterisk", "a"},
                          {three, "Home shift+ctrl+Right ctrl+c End ctrl+v", "one two threeone"},
                          {three, "ctrl+a ctrl+x b ctrl+v", "bone two three"},
                          {three, "ctrl+a Delete ctrl+z", three},
                          {three, "ctrl+a Delete Escape", three},
                          {three, "Caps_Lock ctrl+a Caps_Lock x", "x"},
                          {letters, "Home Right Delete", "au"},
                          {letters, "Left BackSpace", "au"},
                          {letters, "Home Right shift+Right x", "axu"},
                          {letters, "Home Right Right x", "a\xc3\xa9xu"}};
    auto* edit = add(new CEdit(win.get(), "e", 10, 10, 120, 20));
    for (const Case& c : cases) {
        changes = 0;
        edit->setText(c.before);
        win->setKeyCtrl(edit);
        xdo(std::string("key ") + c.keys + " Return");
        EXPECT_STREQ(edit->text.asChar(), c.text) << c.keys;
        EXPECT_EQ(changes, edit->text == c.before ? 0 : 1) << c.keys;
        EXPECT_EQ(win->keyCtrl, nullptr);
    }
    edit->setText("a");
    edit->keyDown(0xe9, 0); // keys are Latin-1
    EXPECT_STREQ(edit->text.asChar(), "a\xc3\xa9");
}

/// Cells are 6 pixels wide and begin 4 pixels in: the caret goes to the nearest gap.
TEST_F(ControlTest, AnEditFieldTakesTheMouse) {
    auto* edit = add(new CEdit(win.get(), "e", 10, 10, 120, 20));
    edit->setText("one two three");
    at(10 + 4 + 4 * 6 + 1, 20, "mousedown 1");
    EXPECT_EQ(edit->cursor, 3);
    xdo("mousemove_relative 18 0 mouseup 1");
    EXPECT_TRUE(edit->selection() == "two");
    at(10 + 4 + 10 * 6, 15, "mousedown 1 mouseup 1 mousedown 1 mouseup 1");
    EXPECT_TRUE(edit->selection() == "three");
    edit->upperCase = true;
    xdo("key q");
    EXPECT_TRUE(edit->text == "one two Q");
}

/// What is selected is offered at once, and goes where the middle button is pressed.
TEST_F(ControlTest, SelectedTextIsOfferedAndPasted) {
    auto* from = add(new CEdit(win.get(), "from", 10, 10, 120, 20));
    auto* to = add(new CValue(win.get(), "to", 10, 40, 120, 20));
    from->setText("one 23 three");
    copyText("copied");
    at(10 + 4 + 5 * 6, 15, "mousedown 1 mouseup 1 mousedown 1 mouseup 1");
    EXPECT_TRUE(selectedText() == "23");
    EXPECT_TRUE(pasteText() == "copied");
    xdo("key End shift+Left shift+Left");
    EXPECT_TRUE(selectedText() == "ee");
    xdo("key Home ctrl+shift+Right");
    EXPECT_TRUE(selectedText() == "one");
    offerSelected("23");
    at(10 + 4, 15, "click 2");
    EXPECT_TRUE(from->text == "23one 23 three");
    win->setKeyCtrl(to);
    xdo("key ctrl+a Delete");
    at(20, 50, "click 2 key Return");
    EXPECT_EQ(to->value, 23);
}

/// A value of 0 to 200 on 60 pixels, with the pointer in its left half at first. A drag of 24
/// pixels right and 12 up is 36 x 0.5 / 3 = 6 steps.
TEST_F(ControlTest, AValueIsDraggedTurnedNudgedAndTyped) {
    struct Case {
        const char* steps;
        int value, changes;
        bool live = true;
        int step = 1;
    };
    const char *drag = "mousedown 1;mousemove_relative -- 24 -12", *release = "mouseup 1";
    const std::string whole = std::string(drag) + ";" + release;
    const Case cases[] = {{whole.c_str(), 126, 1},
                          {drag, 126, 0, false},
                          {whole.c_str(), 126, 1, false},
                          {whole.c_str(), 120, 0, true, 0},
                          {"click 3", 119, 1},
                          {"mousemove_relative 40 0 click 3", 121, 1},
                          {"click 4", 120, 0},
                          {"keydown ctrl click 4 keyup ctrl", 121, 1},
                          {"keydown ctrl keydown shift click 5 keyup shift keyup ctrl", 110, 1},
                          {"click --repeat 2 --delay 20 1;key 9 9 9 Return", 200, 1},
                          {"click --repeat 2 --delay 20 1;key 8 Return", 7, 1},
                          {"click --repeat 2 --delay 20 1;key x Return", 120, 0}};
    for (const Case& c : cases) {
        auto* value = add(new CValue(win.get(), "v", 10, 10, 60, 20));
        value->max = 200;
        value->displayOffset = 1;
        value->liveUpdate = c.live;
        value->step = c.step;
        value->showValue(120);
        changes = 0;
        app->lastMouseTime = -1;
        at(20, 20);
        std::istringstream lines(c.steps);
        for (std::string line; std::getline(lines, line, ';');) xdo(line);
        EXPECT_EQ(value->value, c.value) << c.steps;
        EXPECT_EQ(changes, c.changes) << c.steps;
        xdo(release);
        win->clear();
    }
}

TEST_F(ControlTest, AValueThatIsTypedFollowsTheWheel) {
    auto* value = add(new CValue(win.get(), "v", 10, 10, 60, 20));
    win->setKeyCtrl(value);
    at(20, 20, "keydown ctrl click 4 click 4 keyup ctrl key Return");
    EXPECT_EQ(value->value, 2);
}

TEST_F(ControlTest, ADecimalValueIsTypedWithItsPoint) {
    auto* value = add(new CDecimalValue(win.get(), "v", 10, 10, 80, 20));
    value->max = 30000;
    value->decimals = 2;
    value->showValue(12050);
    EXPECT_TRUE(value->getText() == "120.50");
    struct Case {
        const char* keys;
        int value;
    };
    for (const Case& c :
         {Case{"9 8 period 7 6", 9876}, {"9 8 comma 5", 9850}, {"9 9 9", 30000}, {"1 x", 30000}}) {
        win->setKeyCtrl(value);
        xdo(std::string("key ") + c.keys + " Return");
        EXPECT_EQ(value->value, c.value) << c.keys;
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
    at(18, 20, "mousedown 1");
    xdo("mousemove_relative 0 27");
    xdo("mouseup 1");
    EXPECT_EQ(bar->pos, 250);
    EXPECT_EQ(changes, 1);
    at(18, 135, "mousedown 1");
    EXPECT_EQ(bar->pos, 252);
    EXPECT_TRUE(pumpUntil([&] { return bar->pos > 300; })); // faster and faster
    xdo("mouseup 1");
    EXPECT_TRUE(app->timers.empty());
    const int before = bar->pos;
    at(18, 18, "click 1");
    EXPECT_LE(bar->pos, before - 8);
}

TEST_F(ControlTest, AFaderCountsFromItsFoot) {
    auto* fader = add(new CFader(win.get(), "f", 10, 10, 20, 116));
    EXPECT_EQ(fader->pos, 0);
    at(20, 118, "mousedown 1"); // travel 100
    xdo("mousemove_relative -- 0 -30");
    xdo("mouseup 1");
    EXPECT_EQ(fader->pos, 30);
    xdo("click 4");
    EXPECT_EQ(fader->pos, 30);
    xdo("keydown ctrl click 4 keyup ctrl");
    EXPECT_EQ(fader->pos, 31);
    win->setKeyCtrl(fader);
    xdo("key Down Prior Prior Next");
    EXPECT_EQ(fader->pos, 40);
}

/// With the focus a value is stepped, taken to its ends and reset until something is typed.
TEST_F(ControlTest, ValuesTakeKeys) {
    struct Case {
        const char* keys;
        int value, fader;
    };
    const Case cases[] = {
        {"Up", 41, 41},
        {"Down Down", 38, 38},
        {"Prior", 50, 50},
        {"Next", 30, 30},
        {"Home", 0, 0},
        {"End", 100, 100},
        {"Delete", 25, 25},
        {"7 Up", 8, 8},
        {"Delete 5 Return", 5, 5},
        {"9 9 9 Return", 100, 100},
        {"6 1 Escape", 40, 40},
        {"End Home Up", 1, 1},
        {"6 1 BackSpace Return", 6, 6},
    };
    auto* value = add(new CValue(win.get(), "v", 10, 10, 60, 20));
    auto* fader = add(new CFader(win.get(), "f", 100, 10, 20, 116));
    value->resetValue = fader->resetPos = 25;
    for (const Case& c : cases) {
        value->showValue(40);
        fader->setPos(40);
        for (CCtrl* ctrl : {static_cast<CCtrl*>(value), static_cast<CCtrl*>(fader)}) {
            win->setKeyCtrl(ctrl);
            xdo(std::string("key ") + c.keys);
        }
        win->setKeyCtrl(nullptr);
        EXPECT_EQ(value->value, c.value) << c.keys;
        EXPECT_EQ(fader->pos, c.fader) << c.keys;
    }
    // A key in the text edits the text.
    value->showValue(40);
    win->setKeyCtrl(value);
    xdo("key Left Delete Return");
    EXPECT_EQ(value->value, 4);
}
