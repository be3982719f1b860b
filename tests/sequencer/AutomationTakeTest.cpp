#include "TakeFixture.h"

namespace {

/// Values in percent, by block.
using Moves = std::multimap<int, int>;

struct MoveCase {
    const char* name;
    double from;
    int loopEnd; ///< 0 none
    int partPos; ///< of the part that is there, -1 none
    Ticks had;   ///< its points
    int blocks;
    Moves moves;
    Ticks expected;
};

/// A lane's worth of moves on an audio track with a part, whose lane is selected.
struct MoveFixture : TakeFixture {
    CSongTrack* t = track(trackAudio);
    CObject* fader = t->track->output();

    CSubTrack* lane() { return t->track->findLane(fader, 0); }
    void move(int blocks, const Moves& moves) {
        for (int i = 0; i < blocks; i++) {
            for (auto [it, end] = moves.equal_range(i); it != end; ++it)
                host.addMap(fader, 0, float(it->second) / 100.0f);
            play(1);
        }
    }
};

} // namespace

/// Points on a grid of 240 ticks; a take over automation replaces it from the punch to its end.
TEST(AutomationTake, MovesBecomePoints) {
    const MoveCase cases[] = {
        {"empty lane: held from the part's start, thinned to the grid",
         1920,
         0,
         960,
         {},
         100,
         {{10, 50}, {12, 51}, {13, 52}, {14, 53}, {40, 60}},
         {{0, 50}, {960, 50}, {1200, 51}, {1440, 60}}},
        {"replaces from the punch on",
         960,
         0,
         0,
         {{0, 1}, {900, 2}, {960, 3}, {2000, 4}, {3000, 5}},
         100,
         {{30, 50}, {70, 60}},
         {{0, 1}, {900, 2}, {960, 50}, {1200, 50}, {1680, 60}}},
        {"within a loop, pass by pass",
         0,
         1920,
         0,
         {{100, 1}, {1500, 2}, {1920, 3}},
         300,
         {{1, 10}, {100, 20}, {193, 30}, {240, 40}},
         {{0, 30}, {480, 40}, {1920, 3}}},
        {"nothing moved", 960, 0, 0, {{0, 1}, {2000, 4}}, 50, {}, {{0, 1}, {2000, 4}}},
    };
    for (const MoveCase& c : cases) {
        SCOPED_TRACE(c.name);
        MoveFixture f;
        auto* part = new CAudioPart;
        part->multiclip = 1;
        part->pos = c.partPos;
        for (auto [tick, value] : c.had)
            part->addEventParam(tick, createEnvEvent(nullptr, float(value) / 100.0f), 0);
        part->setSelected(true);
        f.t->addPart(part, nullptr);
        f.lane()->setFlag(laneSelected, true);
        if (c.loopEnd) f.loop(0, c.loopEnd);
        f.idle();
        const std::string before = dump(f.seq);
        f.begin(c.from);
        f.play(1); // armed by the first block
        f.move(c.blocks - 1, [&] {
            Moves later;
            for (auto [block, value] : c.moves) later.emplace(block - 1, value);
            return later;
        }());
        f.end();
        EXPECT_EQ(pointsOf(part, 0), c.expected);
        const std::string after = dump(f.seq);
        if (after != before) f.undo();
        EXPECT_EQ(dump(f.seq), before);
        EXPECT_EQ(f.host.undoIndex, -1);
        if (!c.moves.empty()) f.redo();
        EXPECT_EQ(dump(f.seq), after);
        EXPECT_TRUE(f.host.samples.empty()) << "only the lane was selected";
    }
}

/// A parameter without a lane gets one; two of them do not thin each other out; what belongs to
/// another track, or to none that is armed, is left alone.
TEST(AutomationTake, LanesComeAsTheyAreNeeded) {
    MoveFixture f;
    CSongTrack* other = f.track(trackAudio);
    f.seq->selectTrack(f.t, true);
    f.idle();
    const std::string before = dump(f.seq);
    f.begin(0);
    f.play(30);
    f.seq->recParam(f.fader, 3, 0.3f);
    f.seq->recParam(f.fader, 0, 0.5f);
    f.seq->recParam(other->track->output(), 3, 0.7f);
    f.seq->recParam(&f.host, 0, 0.7f);
    f.play(80);
    f.end();
    CSubTrack* made = f.t->track->findLane(f.fader, 3);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(f.t->track->subTracks.getCount(), 2);
    EXPECT_EQ(other->track->subTracks.getCount(), 1);
    CPart* part = f.partOf(f.t);
    EXPECT_EQ(pointsOf(part, made->slot), (Ticks{{0, 30}, {240, 30}}));
    EXPECT_EQ(pointsOf(part, f.lane()->slot), (Ticks{{0, 50}, {240, 50}}));
    const std::string after = dump(f.seq);
    f.undo();
    EXPECT_EQ(dump(f.seq), before);
    f.redo();
    EXPECT_EQ(dump(f.seq), after);
}

/// From the first move to the end of the pass the lane leaves the parameter to the hand.
TEST(AutomationTake, RecordedLanesAreNotPlayed) {
    MoveFixture f;
    auto* part = new CAudioPart;
    part->multiclip = 1;
    part->length = 7680;
    for (auto [tick, value] : Ticks{{0, 10}, {480, 20}, {960, 30}, {2000, 40}})
        part->addEventParam(tick, createEnvEvent(nullptr, float(value) / 100.0f), 0);
    f.t->addPart(part, nullptr);
    f.lane()->setFlag(laneSelected, true);
    f.loop(0, 1920);
    std::vector<float> sent;
    int heard = 0;
    f.begin(0);
    for (int i = 0; i < 240; i++) {
        if (i == 60) f.host.addMap(f.fader, 0, 0.9f);
        f.play(1);
        for (CMIDIBytes* e = f.t->track->inPort()->first(); e; e = e->next) {
            if (i > 60 && i < 190) sent.push_back(e->value);
            if (i >= 192) heard++;
        }
    }
    EXPECT_TRUE(sent.empty()) << "nothing speaks against the hand";
    EXPECT_GT(heard, 0) << "the next pass plays it";
    EXPECT_EQ(pointsOf(part, 0), (Ticks{{0, 90}, {720, 90}, {2000, 40}}));
    f.end();
}
