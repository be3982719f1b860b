#include "Blocks.h"
#include "NotesFixture.h"

#include "engine/COutputChannel.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CSplit.h"
#include "notes/EditorBar.h"
#include "notes/KeyStrip.h"
#include "notes/LaneStack.h"
#include "notes/NoteObjects.h"
#include "sequencer/song/Scales.h"
#include "sequencer/song/TrackInstrument.h"
#include "ui/Options.h"
#include "ui/ScaleItems.h"

/// What the editor of notes offers beside drawing and dragging.
class NotesTools : public NotesFixture {
protected:
    std::string muted() {
        std::string text;
        for (const CBaseEvent* e = edited->getEvents(); e; e = e->next)
            text += e->style.muted ? "m" : "-";
        return text;
    }
    testing::AssertionResult holdsMuted(const std::string& wanted) {
        if (pumpUntil([&] { return muted() == wanted; })) return testing::AssertionSuccess();
        return testing::AssertionFailure() << muted() << " instead of " << wanted;
    }
    void run(const char* action) {
        win->runAction(win->commands().getAction(action));
        EXPECT_TRUE(loaded());
    }
    bool toolIs(int tool) {
        return pumpUntil([&] { return seq()->editorComp->tool == tool; });
    }
};

TEST_F(NotesTools, NotesAreMutedAndHeardAgain) {
    open(trackMIDI);
    for (const int tick : {0, 480, 960}) put(tick, 60 + tick / 240, 240);
    click(place(100, 60));
    key("shift+m");
    EXPECT_TRUE(holdsMuted("m--"));
    EXPECT_STREQ(host->undoText().asChar(), "Mute notes");
    Description told;
    notes()->describe(told, 0);
    EXPECT_EQ(told.name, "C4, bar 2, 240 ticks, velocity 100, muted");
    key("ctrl+a");
    key("shift+m");
    EXPECT_TRUE(holdsMuted("mmm")) << "as some play";
    key("shift+m");
    EXPECT_TRUE(holdsMuted("---"));
    EXPECT_STREQ(host->undoText().asChar(), "Unmute notes");
    key("ctrl+z");
    EXPECT_TRUE(holdsMuted("mmm"));
    press(place(600, 62), place(840, 62), "ctrl");
    EXPECT_TRUE(holdsMuted("mmmmmm")) << "copies are as they were";
}

TEST_F(NotesTools, PaintKnifeAndGlue) {
    open(trackMIDI);
    key("b");
    ASSERT_TRUE(toolIs(toolPaint));
    press(place(500, 62), place(1300, 62));
    EXPECT_TRUE(holds("480:62:240:100* 720:62:240:100* 960:62:240:100* 1200:62:240:100* "))
        << "one in each step of the grid";
    EXPECT_STREQ(host->undoText().asChar(), "Paint");
    press(place(300, 62), place(800, 62));
    EXPECT_TRUE(holds("240:62:240:100* 480:62:240:100 720:62:240:100 960:62:240:100 "
                      "1200:62:240:100 "))
        << "none where one is";
    key("ctrl+z");
    press(place(2400, 65), place(2500, 65), "", nullptr, "1", "Escape");
    EXPECT_TRUE(holds("480:62:240:100 720:62:240:100 960:62:240:100 1200:62:240:100 ")) << "Escape";
    key("ctrl+a");
    key("g");
    ASSERT_TRUE(toolIs(toolGlue));
    click(place(600, 62));
    EXPECT_TRUE(holds("480:62:960:100* ")) << "all that is selected";
    key("d");
    ASSERT_TRUE(toolIs(toolKnife));
    click(place(960, 62));
    EXPECT_TRUE(holds("480:62:480:100 960:62:480:100 ")) << "cut at the grid";
    key("g");
    click(place(600, 62));
    EXPECT_TRUE(holds("480:62:960:100* ")) << "it and the next of its key";
    key("Escape");
    EXPECT_TRUE(toolIs(toolPointer));
    host->setPos(barTicks + 720);
    key("ctrl+k");
    EXPECT_TRUE(holds("480:62:240:100 720:62:720:100 ")) << "at the position";
    at(child<CButton>("painttool"), asPoint(5, 5));
    act({"click", "1"});
    EXPECT_TRUE(toolIs(toolPaint));
}

TEST_F(NotesTools, ANewNoteIsLikeTheLast) {
    open(trackMIDI);
    put(0, 60, 480, 100);
    press(place(200, 60), asPoint(place(200, 60).x, place(200, 60).y - 40), "alt");
    ASSERT_TRUE(holds("0:60:480:120* "));
    click(place(1000, 64), "1", 2);
    EXPECT_TRUE(holds("0:60:480:120 960:64:480:120* ")) << "as long and as loud";
    // Several from either edge, each as far as it can.
    key("ctrl+a");
    press(asPoint(place(480, 60).x - 2, place(0, 60).y), place(720, 60));
    EXPECT_TRUE(holds("0:60:720:120* 960:64:720:120* "));
    press(asPoint(place(960, 64).x + 2, place(0, 64).y), place(1200, 64));
    EXPECT_TRUE(holds("240:60:480:120* 1200:64:480:120* "));
}

TEST_F(NotesTools, RowsFoldAndTheStripSelects) {
    open(trackMIDI);
    for (const auto& [tick, note] : {std::pair{0, 40}, {480, 60}, {960, 84}, {1440, 60}})
        put(tick, note, 240);
    auto* strip = child<KeyStrip>("keys");
    at(strip, asPoint(20, place(0, 60).y));
    act({"keydown", "ctrl"});
    act({"click", "1"});
    act({"keyup", "ctrl"});
    EXPECT_TRUE(holds("0:40:240:100 480:60:240:100* 960:84:240:100 1440:60:240:100* "));
    key("f");
    const auto folded = [&] { return notes()->accessParts() == 4; };
    ASSERT_TRUE(pumpUntil(folded)) << "all three rows show";
    const int high = 8;
    click(asPoint(place(100, 0).x, 2 * high + 4), "3"); // the lowest of them
    EXPECT_TRUE(holds("480:60:240:100 960:84:240:100 1440:60:240:100 "));
    press(asPoint(place(600, 0).x, high + 4), asPoint(place(600, 0).x, 4));
    EXPECT_TRUE(holds("480:84:240:100* 960:84:240:100 1440:60:240:100 ")) << "to the next row";
    key("f");
    key("ctrl+a");
    key("w");
    const auto shows = [&](int i, int& left, int& right) {
        Description d;
        notes()->describe(d, i);
        left = d.bounds.left;
        right = d.bounds.right;
    };
    int first = 0, last = 0, unused = 0;
    ASSERT_TRUE(pumpUntil([&] {
        shows(0, first, unused);
        shows(notes()->accessParts() - 1, unused, last);
        return first == 24;
    }));
    EXPECT_NEAR(last, notes()->width - 24, 2) << "what is selected fills the view";
    run("loopvisible");
    EXPECT_NEAR(seq()->getProg()->leftLocator, barTicks + 480 - 24 * 1200.0 / (last - first), 3);
    EXPECT_NEAR(seq()->getProg()->rightLocator, barTicks + 1680 + 24 * 1200.0 / (last - first), 3);
    EXPECT_TRUE(seq()->getProg()->loop && host->loop);
}

TEST_F(NotesTools, TheScaleHelps) {
    open(trackMIDI);
    auto* scale = childOf<CButton>(child<CGroup>("editorbar"), "scale");
    focus(scale);
    inMenu({"m", "Return"}); // Major
    key("Return");
    EXPECT_TRUE(pumpUntil([&] { return scale->text == "C Major"; }));
    EXPECT_STREQ(host->undoText().asChar(), "Scale");
    focus(notes());
    click(place(0, 61), "1", 2);
    EXPECT_TRUE(holds("0:61:240:100* ")) << "nothing is kept back";
    click(place(500, 64), "1", 2);
    key("shift+y");
    EXPECT_TRUE(holds("0:61:240:100* 480:64:240:100 ")) << "what is out of it";
    key("Delete");
    key("y");
    EXPECT_TRUE(pumpUntil([&] { return seq()->editorComp->snapsToScale; }));
    press(place(600, 64), place(600, 66));
    EXPECT_TRUE(holds("480:65:240:100* ")) << "the key below, as near as that above";
    click(place(1000, 68), "1", 2);
    EXPECT_TRUE(holds("480:65:240:100 960:67:240:100* "));
    // Another scale from the bar of the position on, and back.
    const auto choose = [&](const std::vector<std::string>& keys, const char* text) {
        focus(scale);
        inMenu(keys);
        key("Return");
        EXPECT_TRUE(pumpUntil([&] { return scale->text == text; })) << text;
    };
    host->setPos(barTicks);
    choose({"Up", "Up", "Up", "Return"}, "C Major");
    choose({"m", "m", "Return"}, "C Minor");
    EXPECT_EQ(seq()->scales.at(barTicks - 1).kind, scaleMajor);
    focus(notes());
    click(place(1440, 64), "1", 2);
    EXPECT_TRUE(holds("480:65:240:100 960:67:240:100 1440:63:240:100* "));
    key("Delete");
    host->setPos(0);
    EXPECT_TRUE(pumpUntil([&] { return scale->text == "C Major"; }));
    host->setPos(barTicks);
    choose({"Up", "Up", "Up", "Return"}, "C Major");
    EXPECT_EQ(seq()->scales.at(barTicks).kind, scaleMajor);
    // Chords.
    auto* chord = childOf<CButton>(child<CGroup>("editorbar"), "chord");
    focus(chord);
    inMenu({"Down", "Return"}); // behind single notes
    key("Return");
    EXPECT_TRUE(pumpUntil([&] { return seq()->editorComp->chord == 0; }));
    focus(notes());
    key("ctrl+a");
    key("Delete");
    seq()->editorComp->chord = 9;
    ASSERT_STREQ(chordKinds()[9].name, "7");
    click(place(0, 60), "1", 2);
    EXPECT_TRUE(holds("0:60:240:100* 0:64:240:100* 0:67:240:100* 0:70:240:100* "));
    Description told;
    EXPECT_TRUE(pumpUntil([&] {
        child<NoteObjects>("noteobjects")->describe(told, CCtrl::wholeCtrl);
        return told.text == "Chord C7";
    })) << told.text;
    seq()->editorComp->chord = -1;
    seq()->editorComp->snapsToScale = false;
    key("ctrl+z");
}

TEST_F(NotesTools, SelectedPartsAreEditedTogether) {
    open(trackMIDI);
    put(0, 60, 240);
    seq()->addTrack(trackMIDI, seq()->getProg(), nullptr);
    CPart* home = edited;
    CPart* other = addPart(1, barTicks + 480, barTicks);
    edited = other;
    put(0, 64, 240);
    edited = home;
    home->setSelected(true);
    other->setSelected(true);
    const auto both = [&](const std::string& first, const std::string& second) {
        const bool held = pumpUntil([&] {
            edited = other;
            const std::string behind = content();
            edited = home;
            return content() == first && behind == second;
        });
        edited = other;
        const std::string behind = content();
        edited = home;
        EXPECT_TRUE(held) << content() << "and " << behind;
    };
    ASSERT_TRUE(pumpUntil([&] { return notes()->accessParts() == 2; }));
    const int before = host->undoIndex;
    press(place(-20, 70), place(2000, 58));
    both("0:60:240:100* ", "0:64:240:100* ");
    press(place(600, 64), place(840, 66));
    both("240:62:240:100* ", "240:66:240:100* ");
    EXPECT_EQ(host->undoIndex, before + 1) << "one step";
    key("ctrl+Up");
    both("240:63:240:100* ", "240:67:240:100* ");
    const int h = lane()->height;
    press(asPoint(place(240, 0).x + 1, h - 1 - h / 2), asPoint(place(900, 0).x, h - 1 - h / 2), "",
          lane());
    EXPECT_EQ(host->undoIndex, before + 3);
    const int velocity = factsOf(home, home->getEvents(), 240).velocity;
    EXPECT_NEAR(velocity, 64, 3);
    EXPECT_EQ(factsOf(other, other->getEvents(), 240).velocity, velocity) << "in both parts";
    key("ctrl+q");
    key("Delete");
    both("", "");
    for (int i = 0; i < 2; i++) key("ctrl+z");
    key("ctrl+z");
    both("240:62:240:100* ", "240:66:240:100* ");
    run("edittogether");
    click(place(800, 66));
    EXPECT_TRUE(pumpUntil([&] { return seq()->editorComp->part() == other; })) << "it turns to it";
    run("edittogether");
}

TEST_F(NotesTools, LanesStandBelowEachOther) {
    open(trackMIDI);
    put(0, 60, 240);
    auto* stack = child<LaneStack>("lanes");
    const int gridHeight = notes()->height, one = lane()->height;
    key("v");
    ASSERT_TRUE(pumpUntil([&] { return stack->count() == 2; }));
    const auto lanes = [&] {
        std::vector<LaneView*> views;
        for (auto* c : stack->controls)
            if (auto* view = dynamic_cast<LaneView*>(c)) views.push_back(view);
        return views;
    };
    EXPECT_EQ(notes()->height, gridHeight - one - LaneStack::edgeHeight);
    LaneView* second = lanes()[1];
    EXPECT_EQ(second->lane.kind, laneChance);
    press(asPoint(place(0, 0).x, 3), asPoint(place(0, 0).x, second->height / 2), "", second);
    EXPECT_TRUE(pumpUntil([&] { return edited->getEvents()->style.chance < mostChance; }))
        << "each edits its own";
    CSplit* edge = nullptr;
    for (auto* c : stack->controls)
        if (auto* found = dynamic_cast<CSplit*>(c); found && found->target == second) edge = found;
    ASSERT_NE(edge, nullptr);
    const CPoint in = addPos(editor()->getPos(true), editor()->controlPos(edge));
    const auto pointer = [&](int up) {
        act({"mousemove", std::to_string(in.x + 200), std::to_string(in.y + 2 - up)});
    };
    pointer(0);
    act({"mousedown", "1"});
    for (const int up : {10, 30}) pointer(up);
    act({"mouseup", "1"});
    EXPECT_TRUE(pumpUntil([&] { return lanes()[1]->height == one + 30; }));
    key("shift+v");
    ASSERT_TRUE(pumpUntil([&] { return stack->count() == 1; }));
    EXPECT_EQ(notes()->height, gridHeight);
}

/// What the strip plays is heard with the next block, and ends after the release.
TEST_F(NotesTools, AKeyOfTheStripSoundsInTheNextBlock) {
    open(trackMIDI);
    addTrackInstrument(seq(), row(0)->track, nullptr);
    settle();
    const COutputChannel* heard = host->getAudioOut()->output();
    const auto loudest = [&](int blocks) {
        runBlocks(host.get(), blocks);
        float most = 0.0f;
        for (int i = 0; i < host->frames; i++) most = std::max(most, std::abs(heard->bufL[i]));
        return most;
    };
    EXPECT_EQ(loudest(2), 0.0f);
    auto* strip = child<KeyStrip>("keys");
    at(strip, asPoint(100, place(0, 60).y));
    act({"mousedown", "1"});
    EXPECT_TRUE(pumpUntil([&] { return strip->isPushed(); }));
    EXPECT_GT(loudest(1), 1e-4f);
    act({"mouseup", "1"});
    EXPECT_TRUE(pumpUntil([&] { return !strip->isPushed(); }));
    EXPECT_LT(loudest(1000), 1e-4f);
}
