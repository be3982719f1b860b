#include "Blocks.h"
#include "NotesFixture.h"

#include "engine/CSnap.h"
#include "gui/KeyPlayer.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CEdit.h"
#include "gui/controls/CRangebar.h"
#include "gui/controls/CValue.h"
#include "instruments/CLayer.h"
#include "notes/CEventList.h"
#include "notes/KeyStrip.h"
#include "notes/TransformBar.h"
#include "ui/EventRows.h"
#include "ui/Options.h"

class NotesTest : public NotesFixture {};

TEST_F(NotesTest, NotesAreMadeAndMovedByTheMouse) {
    open(trackMIDI);
    click(place(500, 62), "1", 2);
    EXPECT_TRUE(holds("480:62:240:100* ")) << "on the line before";
    press(place(1000, 60), place(1680, 60), "alt");
    EXPECT_TRUE(holds("480:62:240:100 960:60:960:100* ")) << "its end dragged to the grid at once";
    press(place(600, 62), place(860, 65));
    EXPECT_TRUE(holds("720:65:240:100* 960:60:960:100 ")) << "moved";
    press(place(1300, 60), place(1780, 59), "ctrl");
    EXPECT_TRUE(holds("720:65:240:100 960:60:960:100 1440:59:960:100* ")) << "copied";
    press(asPoint(place(960, 65).x - 2, place(0, 65).y), place(1200, 65));
    EXPECT_TRUE(holds("720:65:480:100* 960:60:960:100 1440:59:960:100 ")) << "its end";
    press(asPoint(place(960, 60).x + 2, place(0, 60).y), place(1200, 60));
    EXPECT_TRUE(holds("720:65:480:100 1200:60:720:100* 1440:59:960:100 ")) << "its start";
    click(place(1700, 59), "3");
    EXPECT_TRUE(holds("720:65:480:100 1200:60:720:100 ")) << "deleted by the right button";
    press(place(1400, 60), place(1900, 64), "", nullptr, "1", "Escape");
    EXPECT_TRUE(holds("720:65:480:100 1200:60:720:100* ")) << "Escape";
    // A band, and with Shift another one.
    press(place(100, 70), place(2000, 58));
    EXPECT_TRUE(holds("720:65:480:100* 1200:60:720:100* "));
    press(place(2500, 70), place(2600, 69));
    EXPECT_TRUE(holds("720:65:480:100 1200:60:720:100 "));
    press(place(700, 66), place(900, 64), "shift");
    press(place(1150, 61), place(1300, 60), "shift");
    EXPECT_TRUE(holds("720:65:480:100* 1200:60:720:100* "));
    // As far as the keys and the part go.
    press(place(900, 65), place(-100, 66));
    EXPECT_TRUE(holds("0:66:480:100* 480:61:720:100* "));
    for (int i = 0; i < 7; i++) key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return content() == "480:62:240:100 "; })) << content();
}

TEST_F(NotesTest, AltTurnsADragWithoutAJump) {
    open(trackMIDI);
    put(480, 60, 480);
    const CPoint from = place(600, 60);
    at(notes(), from);
    act({"mousedown", "1"});
    at(notes(), place(840, 60));
    at(notes(), place(840, 62)); // 240 ticks and two keys on
    act({"keydown", "alt"});
    const CPoint turn = place(840, 62);
    at(notes(), asPoint(turn.x, turn.y - 20)); // 10 louder
    at(notes(), asPoint(place(1080, 0).x, turn.y - 20));
    act({"keyup", "alt"});
    at(notes(), asPoint(place(1320, 0).x, turn.y - 20));
    act({"mouseup", "1"});
    EXPECT_TRUE(holds("960:62:720:110* "));
    key("ctrl+z");
    EXPECT_TRUE(holds("480:60:480:100* ")) << "one step";
}

TEST_F(NotesTest, TheLaneDrawsValues) {
    open(trackMIDI);
    for (const int tick : {0, 960, 1920}) put(tick, 60 + tick / 960, 240);
    key("ctrl+z"); // the last one is gone again
    ASSERT_TRUE(holds("0:60:240:100 960:61:240:100* "));
    press(place(2800, 70), place(2900, 69)); // nothing is selected
    const int h = lane()->height;
    const auto on = [&](int tick, double share) {
        return asPoint(place(tick, 0).x, 3 + asRound((1 - share) * (h - 4)));
    };
    press(on(960, 0.5), on(960, 0.5), "", lane());
    ASSERT_TRUE(loaded());
    NoteFacts second;
    eachEvent(edited->getEvents(),
              [&](CBaseEvent* e, int tick) { second = factsOf(edited, e, tick); });
    EXPECT_NEAR(second.velocity, 64, 1);
    EXPECT_STREQ(host->undoText().asChar(), "Edit Velocity");
    // A line over both.
    press(on(-40, 1.0), on(1000, 0.25), "ctrl", lane());
    eachEvent(edited->getEvents(), [&](CBaseEvent* e, int tick) {
        const double share = 1.0 - 0.75 * (tick + 40) / 1040.0;
        EXPECT_NEAR(factsOf(edited, e, tick).velocity, share * 127, 2) << tick;
    });
    // Messages come on the grid, one in each step.
    lane()->lane = {lanePitchBend, 0};
    press(on(2410, 0.5), on(2900, 0.5), "", lane());
    int bends = 0;
    eachEvent(edited->getEvents(), [&](CBaseEvent* e, int tick) {
        const int data = static_cast<CMIDIEvent*>(e)->data;
        if (statusByte(data) != midiPitchBend) return;
        EXPECT_EQ(tick, 2400 + 240 * bends++);
        EXPECT_NEAR(asByte1(data) + asByte2(data) * 128, 8192, 140);
    });
    EXPECT_EQ(bends, 3);
}

TEST_F(NotesTest, KeysReachAndChangeNotes) {
    open(trackMIDI);
    put(0, 60, 240);
    put(480, 64, 240, 90);
    const struct {
        const char* key;
        const char* content;
    } presses[] = {
        {"Left", "0:60:240:100* 480:64:240:90 "},
        {"shift+Right", "0:60:240:100* 480:64:240:90* "},
        {"ctrl+Right", "240:60:240:100* 720:64:240:90* "},
        {"ctrl+Down", "240:59:240:100* 720:63:240:90* "},
        {"alt+Right", "240:59:480:100* 720:63:480:90* "},
        {"alt+Up", "240:59:480:108* 720:63:480:98* "},
        {"Right", "240:59:480:108* 720:63:480:98* "},
        {"ctrl+d", "240:59:480:108 720:63:480:98 1200:59:480:108* 1680:63:480:98* "},
        {"Delete", "240:59:480:108 720:63:480:98 "},
        {"ctrl+a", "240:59:480:108* 720:63:480:98* "},
        {"ctrl+x", ""},
        {"ctrl+v", "0:59:480:108* 480:63:480:98* "},
        {"n", "0:59:480:108 480:63:480:98 960:63:480:98* "},
        {"ctrl+z", "0:59:480:108* 480:63:480:98* "},
    };
    for (const auto& step : presses) {
        key(step.key);
        ASSERT_TRUE(loaded());
        EXPECT_TRUE(holds(step.content)) << step.key;
    }
    EXPECT_EQ(notes()->accessParts(), 2);
    Description told;
    notes()->describe(told, 0);
    EXPECT_EQ(told.name, "B3, bar 2, 480 ticks, velocity 108");
}

TEST_F(NotesTest, HitsStandOnTheSoundsOfTheKit) {
    open(trackDrum);
    click(place(500, 1), "1", 2);
    EXPECT_TRUE(holds("480:1:240:100* "));
    press(place(560, 1), place(800, 3));
    EXPECT_TRUE(holds("720:3:240:100* "));
    const int below = row(0)->track->drumLayer()->sounds.getCount();
    click(place(500, below + 1), "1", 2);
    EXPECT_TRUE(holds("720:3:240:100 ")) << "no sound is there";
}

TEST_F(NotesTest, TheListTypesAndStepsCells) {
    open(trackMIDI);
    put(0, 60, 240, 100);
    put(480, 64, 240, 80);
    put(960, 67, 480, 60);
    key("shift+e");
    ASSERT_TRUE(pumpUntil([&] { return child<CEventList>("eventlist")->visible; }));
    auto* list = child<CEventList>("eventlist");
    const auto row = [&](int i, const char* button = "1") {
        at(list, asPoint(200, 38 + i * 18 + 9)); // in the column of keys
        act({"click", button});
        EXPECT_TRUE(loaded());
    };
    const auto type = [&](const char* text) {
        key("Return");
        for (const char* c = text; *c; c++) key(*c == '.' ? "period" : std::string(1, *c));
        key("Return");
        EXPECT_TRUE(loaded());
    };
    row(0);
    EXPECT_TRUE(holds("0:60:240:100* 480:64:240:80 960:67:480:60 "));
    type("D4");
    EXPECT_TRUE(holds("0:62:240:100* 480:64:240:80 960:67:480:60 "));
    key("Down");
    key("shift+Down");
    key("Right");
    key("ctrl+Up");
    EXPECT_TRUE(holds("0:62:240:100 480:64:240:81* 960:67:480:61* ")) << "all that is selected";
    type("50");
    EXPECT_TRUE(holds("0:62:240:100 480:64:240:50* 960:67:480:50* "));
    for (int i = 0; i < 4; i++) key("Left");
    type("2.4.0");
    EXPECT_TRUE(holds("0:62:240:100 2400:64:240:50* 2880:67:480:50* ")) << "moved along";
    type("9x");
    EXPECT_TRUE(holds("0:62:240:100 2400:64:240:50* 2880:67:480:50* ")) << "not understood";

    EXPECT_GT(child<CEdit>("rule")->width, 100) << "it can be pressed and read";
    const auto counts = [&](const char* rule, int wanted) {
        child<CEdit>("rule")->enterText(rule);
        return pumpUntil([&] { return list->accessParts() == wanted; });
    };
    for (const auto& [rule, wanted] :
         std::initializer_list<std::pair<const char*, int>>{{"note", 3},
                                                            {"velocity>50", 1},
                                                            {"key=G4 length=0.0.480", 1},
                                                            {"bar=2 beat=4", 1},
                                                            {"controller", 0},
                                                            {"key<E4", 1},
                                                            {"nonsense", 1}})
        EXPECT_TRUE(counts(rule, wanted)) << rule;
    editor()->setKeyCtrl(list);
    key("ctrl+a");
    EXPECT_TRUE(holds("0:62:240:100* 2400:64:240:50 2880:67:480:50 ")) << "what is shown";
    for (int i = 0; i < 5; i++) key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return content().find("0:60:240:100") == 0; }));
}

TEST_F(NotesTest, KeysThatComeFastAllCount) {
    open(trackMIDI);
    put(0, 60, 240);
    key("Right");
    ASSERT_TRUE(holds("0:60:240:100* "));
    act({"key", "--delay", "0", "--repeat", "9", "ctrl+Up"});
    EXPECT_TRUE(holds("0:69:240:100* "));
    act({"key", "--delay", "0", "--repeat", "9", "ctrl+z"});
    EXPECT_TRUE(holds("0:60:240:100* "));
}

TEST_F(NotesTest, StepsAreRecordedFromKeysAndTheMouse) {
    open(trackMIDI);
    row(0)->track->setSelected(true);
    key("F4");
    const auto stepAt = [&](int wanted) {
        return pumpUntil([&] { return seq()->recorder.stepRec.getPos() == wanted; });
    };
    ASSERT_TRUE(pumpUntil([&] { return seq()->recorder.stepRec.getPart() == edited; }));
    key("n");
    EXPECT_TRUE(holds("0:60:240:100* ")) << "the row that is shown";
    EXPECT_TRUE(stepAt(240));
    key("Right");
    EXPECT_TRUE(stepAt(480)) << "a rest";
    key("Up");
    key("n");
    key("ctrl+Right");
    EXPECT_TRUE(holds("0:60:240:100* 480:61:480:100* ")) << "tied";
    EXPECT_TRUE(stepAt(960));

    at(child<KeyStrip>("keys"), asPoint(100, place(0, 64).y));
    act({"click", "1"});
    EXPECT_TRUE(holds("0:60:240:100* 480:61:480:100* 960:64:240:100* ")) << "the strip";
    click(place(2000, 67));
    EXPECT_TRUE(stepAt(1920)) << "the press places the step";
    EXPECT_EQ(seq()->recorder.stepRec.note, 67);
    key("Left");
    key("Left");
    key("Left");
    EXPECT_TRUE(stepAt(1200));
    key("BackSpace");
    EXPECT_TRUE(holds("0:60:240:100 480:61:480:100 ")) << "taken back";

    key("ctrl+shift+k");
    ASSERT_TRUE(pumpUntil([&] { return app->keyPlayer != nullptr; }));
    for (const char* pressed : {"z", "b"}) act({"keydown", pressed});
    runBlocks(win->host(), 2);
    for (const char* released : {"b", "z"}) act({"keyup", released});
    runBlocks(win->host(), 2);
    const auto has = [&](const char* text) {
        return pumpUntil([&] { return content().find(text) != std::string::npos; });
    };
    EXPECT_TRUE(has("960:48:240:100")) << "a chord by places";
    EXPECT_TRUE(has("960:55:240:100"));
    key("Escape");
    EXPECT_EQ(app->keyPlayer, nullptr);
    ASSERT_EQ(seq()->recorder.stepRec.getPart(), edited) << "the keyboard was ended, not the steps";
    key("Escape");
    EXPECT_TRUE(pumpUntil([&] { return !seq()->recorder.stepRec.getPart(); }));
}

TEST_F(NotesTest, NotesAreEditedInTheirTrack) {
    startWith({trackMIDI});
    edited = addPart(0, barTicks, barTicks);
    row(0)->track->setSelected(true);
    seq()->selectTrack(row(0), true);
    grid()->win->setKeyCtrl(grid());
    key("e");
    RowHead* head = nullptr;
    const auto headShown = [&] {
        head = nullptr;
        for (auto* c : find<HeadList>("heads")->controls)
            if (c->id == "notes") head = static_cast<RowHead*>(c);
        return head != nullptr;
    };
    ASSERT_TRUE(pumpUntil(headShown));
    // Without notes the row, 168 pixels high, is about the keys from 48 to 72 and two more to each
    // side: 5 pixels for each of 33 keys, from 76 down.
    const auto keyAt = [&](int tick, int note) {
        const CPoint to = point(barTicks + tick, 0);
        mouseTo(asPoint(to.x, head->top + (76 - note) * 5 + 2));
    };
    keyAt(500, 60);
    act({"click", "--repeat", "2", "--delay", "50", "1"});
    EXPECT_TRUE(holds("480:60:240:100* "));
    keyAt(600, 60);
    act({"mousedown", "1"});
    keyAt(900, 61);
    keyAt(1080, 62);
    act({"mouseup", "1"});
    EXPECT_TRUE(holds("960:62:240:100* ")) << "moved by the grid and two keys";
    key("Delete");
    EXPECT_TRUE(holds("")) << "the note goes";
    EXPECT_EQ(parts(0), 1) << "and the part stays";
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return content().find("960:62") == 0; }));
    // The keys are about these notes, as in the editor.
    keyAt(1000, 62);
    act({"click", "1"});
    const struct {
        const char* key;
        const char* content;
    } presses[] = {
        {"ctrl+Up", "960:63:240:100* "},
        {"alt+Right", "960:63:480:100* "},
        {"ctrl+d", "960:63:480:100 1440:63:480:100* "},
        {"Left", "960:63:480:100* 1440:63:480:100 "},
        {"ctrl+a", "960:63:480:100* 1440:63:480:100* "},
        {"ctrl+x", ""},
        {"ctrl+v", "0:63:480:100* 480:63:480:100* "},
        {"ctrl+g", "0:63:960:100* "},
    };
    for (const auto& step : presses) {
        key(step.key);
        ASSERT_TRUE(loaded());
        EXPECT_TRUE(holds(step.content)) << step.key;
    }
    EXPECT_EQ(parts(0), 1);
    Description told;
    grid()->describe(told, grid()->focusedPart());
    EXPECT_EQ(told.name, "D#4, bar 2, 1 beat, velocity 100");
    for (int i = 0; i < 6; i++) key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return content().find("960:62:240") == 0; })) << content();
    // A right drag moves the keys: four of them.
    keyAt(2000, 70);
    act({"mousedown", "3"});
    const CPoint from = point(barTicks + 2000, 0);
    mouseTo(asPoint(from.x, head->top + (76 - 70) * 5 + 12));
    mouseTo(asPoint(from.x, head->top + (76 - 70) * 5 + 22));
    act({"mouseup", "3"});
    ASSERT_TRUE(loaded());
    ASSERT_TRUE(headShown());
    keyAt(1000, 62 - 4);
    act({"click", "3"});
    EXPECT_TRUE(holds("")) << "the right button deletes";
    key("e");
    EXPECT_TRUE(pumpUntil([&] { return !headShown(); }));
}

TEST_F(NotesTest, TransformsAreOneStep) {
    open(trackMIDI);
    put(10, 60, 240);
    put(500, 64, 240);
    key("ctrl+a");
    key("shift+q");
    auto* bar = child<TransformBar>("transformbar");
    ASSERT_TRUE(pumpUntil([&] { return bar->visible; }));
    EXPECT_TRUE(holds("0:60:240:100* 480:64:240:100* ")) << "quantized at once";
    const int atStep = win->host()->undoIndex;
    childOf<CValue>(bar, "value")->setValue(50);
    EXPECT_TRUE(holds("5:60:240:100* 490:64:240:100* ")) << "from where they stood";
    childOf<CDropdown>(bar, "transform")->setIndex(transformTranspose, true);
    EXPECT_TRUE(holds("10:72:240:100* 500:76:240:100* "));
    EXPECT_EQ(win->host()->undoIndex, atStep) << "one step";
    key("Escape");
    EXPECT_TRUE(holds("10:60:240:100* 500:64:240:100* "));
    EXPECT_TRUE(pumpUntil([&] { return !bar->visible; }));

    key("shift+q");
    EXPECT_TRUE(holds("10:72:240:100* 500:76:240:100* ")) << "as it was left";
    at(childOf<CButton>(bar, "Keep"), asPoint(5, 5));
    act({"click", "1"});
    EXPECT_TRUE(pumpUntil([&] { return !bar->visible; })) << "kept";
    EXPECT_TRUE(holds("10:72:240:100* 500:76:240:100* "));
    key("ctrl+z");
    EXPECT_TRUE(holds("10:60:240:100* 500:64:240:100* "));
}

TEST_F(NotesTest, NotesOfOtherPartsShowAndTurnToTheirs) {
    open(trackMIDI);
    seq()->addTrack(trackMIDI, seq()->getProg(), nullptr);
    CPart* other = addPart(1, barTicks, barTicks);
    std::swap(edited, other);
    put(960, 64, 240);
    std::swap(edited, other);
    const auto shown = [&] { return seq()->editorComp->part(); };
    click(place(1100, 64));
    EXPECT_EQ(shown(), edited) << "it does not show yet";
    click(place(3000, 50)); // no double click with the next
    win->runAction(win->commands().getAction("othernotes"));
    ASSERT_TRUE(loaded());
    click(place(1000, 64));
    EXPECT_TRUE(pumpUntil([&] { return shown() == other; }));
    std::swap(edited, other);
    EXPECT_TRUE(holds("960:64:240:100* ")) << "the note is selected there";
    win->runAction(win->commands().getAction("othernotes"));
}

TEST_F(NotesTest, TheViewGoesAlongWithTheSong) {
    open(trackMIDI);
    const auto* bar = child<CRangebar>("across");
    at(notes(), place(0, 60));
    act({"keydown", "ctrl"});
    act({"click", "--repeat", "8", "--delay", "20", "4"});
    act({"keyup", "ctrl"});
    ASSERT_TRUE(pumpUntil([&] { return bar->span() < barTicks / 2.0; }));
    const double shown = bar->from(), late = 1.9 * barTicks;
    ASSERT_LT(shown + bar->span(), late);
    host->setPos(late);
    host->start();
    EXPECT_TRUE(pumpUntil([&] { return bar->from() <= late && late < bar->from() + bar->span(); }));
}

TEST_F(NotesTest, TheEditorFollowsThePart) {
    open(trackMIDI);
    put(0, 60, 240);
    // What both views have is switched in either.
    const int objects = host->settings.getInt("object-bar", 1);
    key("o");
    EXPECT_TRUE(pumpUntil([&] { return host->settings.getInt("object-bar", 1) != objects; }));
    EXPECT_TRUE(pumpUntil([&] { return find<CCtrl>("objectbar")->visible == !objects; }));
    auto* grids = find<CButton>("grid", child<CGroup>("editorbar"));
    EXPECT_TRUE(pumpUntil([&] { return grids->text == "1/16"; }));
    focus(grids);
    inMenu({"Down", "Down", "Return"}); // the bar's first line is the finest grid
    key("Return");
    EXPECT_TRUE(pumpUntil([&] { return grids->text == "1/32" && seq()->snap->asIndex() == 2; }));
    inMenu({"t", "Return"});
    key("Return");
    EXPECT_TRUE(pumpUntil([&] { return grids->text == "1/32 T" && seq()->snap->triplet; }));
    inMenu({"t", "Return"});
    key("Return");
    focus(notes());
    key("F1");
    ASSERT_TRUE(pumpUntil([&] { return win->pages->current() == page(); }));
    edited->setSelected(true);
    clickAt(point(barTicks + 500, 0));
    key("Delete");
    ASSERT_TRUE(pumpUntil([&] { return parts(0) == 0; }));
    EXPECT_TRUE(pumpUntil([&] { return seq()->editorComp->part() == nullptr; }));
    key("F2");
    ASSERT_TRUE(pumpUntil([&] { return win->pages->current() == editor(); }));
    click(place(100, 60));
    key("F1");
    key("ctrl+z");
    ASSERT_TRUE(pumpUntil([&] { return parts(0) == 1; }));
    clickAt(point(barTicks + 500, 0));
    key("ctrl+e");
    EXPECT_TRUE(pumpUntil([&] {
        return win->pages->current() == editor() && seq()->editorComp->part() == part(0, 0);
    }));
    // It comes back with the project.
    const CStr path = folder.write("song.qv", "");
    host->projectFile = path;
    ASSERT_TRUE(win->flows->saveClicked());
    win->options().savePrompt.set(0);
    ASSERT_TRUE(load(kindEmpty)) << "while it is open";
    EXPECT_EQ(win->pages->editorOf(seq() ? seq()->editorComp.get() : nullptr), nullptr);
    ASSERT_TRUE(load(kindFile, path));
    EXPECT_TRUE(pumpUntil([&] { return editor() && win->pages->current() == editor(); }));
    EXPECT_EQ(seq()->editorComp->part(), part(0, 0));
    // What the menu does is about the page in front.
    edited = part(0, 0);
    click(place(0, 60));
    key("ctrl+a");
    for (const char* k : {"F10", "Right"}) key(k);
    inMenu({"d", "d", "Return"});
    key("Down");
    EXPECT_TRUE(pumpUntil([&] { return !edited->getEvents() && parts(0) == 1; })) << content();
}
