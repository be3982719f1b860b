#include "TakeFixture.h"

namespace {

using Moves = std::multimap<int, int>; ///< percent by block

/// Moves of the fader of an audio track that has a part, and whose lane is selected.
struct MoveFixture : TakeFixture {
    CSongTrack* t = track(trackAudio);
    CObject* fader = t->track->output();
    CSubTrack* lane = t->track->findLane(fader, 0);
    CPart* part = nullptr;
    int sent = 0; ///< values that the lane played after the first move, in the pass of that move

    void addPart(int pos, const Ticks& points) {
        part = new CAudioPart;
        static_cast<CAudioPart*>(part)->multiclip = 1;
        part->pos = pos;
        part->setSelected(true);
        for (auto [tick, value] : points)
            part->addEventParam(tick, createEnvEvent(nullptr, float(value) / 100.0f), 0);
        t->addPart(part, nullptr);
        lane->setFlag(laneSelected, true);
        idle();
    }
    void take(double from, int blocks, const Moves& moves) {
        begin(from);
        bool moved = false;
        for (int i = 0; i < blocks; i++) {
            for (auto [it, end] = moves.equal_range(i); it != end; ++it)
                host.addMap(fader, 0, float(it->second) / 100.0f);
            play(1);
            if (prog()->loopCount > 0) continue;
            sent += moved ? t->track->inPort()->count : 0;
            moved = moved || moves.contains(i);
        }
        end();
    }
};

} // namespace

/// Points on a grid of 240 ticks. A take over automation replaces it from the punch to its end, and
/// is not contradicted by what the lane has; each pass of a loop does so anew.
TEST(AutomationTake, MovesBecomePoints) {
    struct Case {
        const char* name;
        double from;
        int loopEnd, partPos; ///< 0 no loop
        Ticks had;
        int blocks;
        Moves moves;
        Ticks expected;
    };
    const Case cases[] = {
        {"empty lane: held from the part's start",
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
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MoveFixture f;
        f.addPart(c.partPos, c.had);
        if (c.loopEnd) f.loop(0, c.loopEnd);
        const std::string before = dump(f.seq);
        f.take(c.from, c.blocks, c.moves);
        EXPECT_EQ(pointsOf(f.part, 0), c.expected);
        EXPECT_EQ(f.sent, 0);
        EXPECT_EQ(f.host.undoIndex, c.moves.empty() ? -1 : 0);
        if (!c.moves.empty()) f.expectOneStep(before);
        EXPECT_TRUE(f.host.samples.empty()) << "only the lane was selected";
    }
}

/// A parameter without a lane gets one; two of them do not thin each other out; what belongs to
/// another track, or to none that is armed, is left alone. Between moves a lane plays.
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
    EXPECT_EQ(pointsOf(part, f.lane->slot), (Ticks{{0, 50}, {240, 50}}));
    f.expectOneStep(before);
}
