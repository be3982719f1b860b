#include "ArrangeFixture.h"

#include "sequencer/take/Takes.h"
#include "shell/Rooms.h"

/// An audio part of two takes, of which it plays the second.
class TakesTest : public ArrangeFixture {
protected:
    static constexpr int rowHeight = CTrack::leastRow;

    void startWithTakes() {
        startWith({trackAudio});
        host->projectFile = at("song.qv").c_str();
        drop(tone("a.wav"), grid(), 0, yOf(0));
        ASSERT_TRUE(pumpUntil([&] { return parts(0) == 1; }));
        std::unique_ptr<CAudioPart> made(static_cast<CAudioPart*>(part(0, 0)->copy(0)));
        made->takes = new Takes;
        made->takes.load()->takes = {{0, 960, 0, 22049}, {0, 960, 22050, 44099}};
        made->takes.load()->chooseLast();
        made->multiclip = 1;
        made->length = 960;
        playComp(seq(), made.get(), 0);
        CUndo* step = host->undoStart("Takes", seq());
        step->asRemove(part(0, 0), &row(0)->parts);
        row(0)->addPart(made.release(), step);
        host->undoEnd(step, true);
        ASSERT_TRUE(pumpUntil([&] { return takesOf(part(0, 0)) != nullptr; }));
        seq()->songNotices.raise(SeqNotice::parts);
        ASSERT_TRUE(loaded());
        ASSERT_EQ(heard(), "1:0-960 ");
    }
    std::string heard() {
        std::string text;
        for (const Takes::Piece& p : takesOf(part(0, 0))->comp)
            text += std::to_string(p.take) + ":" + std::to_string(p.from) + "-" +
                    std::to_string(p.to) + " ";
        return text;
    }
    bool becomes(const std::string& told) {
        return pumpUntil([&] { return heard() == told; });
    }
};

/// The menu of a part names the take that it plays, where the range is.
TEST_F(TakesTest, AreChosenByTheMenu) {
    startWithTakes();
    part(0, 0)->setSelected(true);
    win->rooms->arrange.range.set({240, 480, {row(0)}});
    inMenu({"p", "Return", "1", "Return"});
    clickAt(point(500, 0), "3");
    EXPECT_TRUE(becomes("1:0-240 0:240-480 1:480-960 ")) << heard();
    key("ctrl+z");
    EXPECT_TRUE(becomes("1:0-960 ")) << heard();
}

/// Takes stand in rows under their track: a swipe plays one there, a click between the cuts, each
/// as a step; a reader finds them by name.
TEST_F(TakesTest, AreSwipedInTheirRows) {
    startWithTakes();
    EXPECT_EQ(grid()->accessParts(), 1);
    seq()->selectTrack(row(0), true);
    key("k");
    ASSERT_TRUE(pumpUntil([&] { return grid()->accessParts() == 3; }));
    const auto in = [&](int take, int tick) {
        return asPoint(xOf(tick), CTrack::usualRow + take * rowHeight + rowHeight / 2);
    };
    drag(in(0, 250), in(0, 700));
    EXPECT_TRUE(becomes("1:0-240 0:240-720 1:720-960 ")) << heard();
    EXPECT_EQ(host->undoText(), "Comp");
    drag(in(1, 480), in(1, 600), "", true);
    EXPECT_EQ(heard(), "1:0-240 0:240-720 1:720-960 ") << "Escape";
    clickAt(in(0, 100));
    EXPECT_TRUE(becomes("0:0-720 1:720-960 ")) << heard();
    key("ctrl+z");
    EXPECT_TRUE(becomes("1:0-240 0:240-720 1:720-960 ")) << heard();
    Description told;
    grid()->describe(told, 1);
    EXPECT_EQ(told.name.substr(0, 9), "Take 1 of");
    EXPECT_NE(told.name.find(", bar 1, 1 beat"), std::string::npos) << told.name;
    EXPECT_TRUE(told.has(stateSelected));
    EXPECT_TRUE(grid()->pressPart(1));
    EXPECT_TRUE(becomes("0:0-960 ")) << heard();
    // The head of a row plays its take all along.
    auto* head = find<CGroup>("heads");
    CCtrl* use = nullptr;
    for (auto* c : head->controls)
        if (c->id == "take" && c->top > CTrack::usualRow + rowHeight / 2)
            use = find<CCtrl>("use", static_cast<CGroup*>(c));
    ASSERT_TRUE(use);
    mouseTo(use, 10, 8);
    act({"click", "1"});
    EXPECT_TRUE(becomes("1:0-960 ")) << heard();
    key("k");
    EXPECT_TRUE(pumpUntil([&] { return grid()->accessParts() == 1; }));
}
