#include "TakeFixture.h"

namespace {

using Moves = std::multimap<int, int>; ///< percent by block

/// Moves of the fader of an audio track, whose lane is selected.
struct MoveFixture : TakeFixture {
    CSongTrack* t = track(trackAudio);
    CObject* fader = t->track->output();
    CSubTrack* lane = t->track->findLane(fader, 0);
    int late = 0; ///< blocks

    /// What the fader moves is so late.
    void delay(int blocks) {
        auto* insert = device.add(new Late(&host, blocks * block));
        const GraphHold hold(&host);
        host.comps.remove(insert);
        insert->ownerChannel = t->track->output();
        t->track->output()->inserts.add(insert);
        late = blocks;
    }

    CPart* addPart(int pos, const Ticks& points) {
        auto* part = new CAudioPart;
        part->multiclip = 1;
        part->pos = pos;
        part->setSelected(true);
        for (auto [tick, value] : points)
            part->addEventParam(tick, createEnvEvent(nullptr, float(value) / 100.0f), 0);
        t->addPart(part, nullptr);
        lane->setFlag(laneSelected, true);
        idle();
        return part;
    }
    /// Returns how many values the lane played after the first move, in the pass of that move.
    int take(double from, int blocks, const Moves& moves) {
        int sent = 0;
        bool moved = false;
        begin(from);
        for (int i = 0; i < blocks + late; i++) {
            for (auto [it, end] = moves.equal_range(i - late); it != end; ++it)
                host.addMap(fader, 0, float(it->second) / 100.0f);
            play(1);
            if (prog()->loopCount > 0) continue;
            sent += moved ? t->track->inPort()->count : 0;
            moved = moved || moves.contains(i - late);
        }
        end();
        return sent;
    }
};

} // namespace

/// Points on a grid of 240 ticks. A take over automation replaces it from the punch to its end, and
/// is not contradicted by what the lane has; each pass of a loop does so anew. A move counts where
/// the sound is that it acts on.
TEST(AutomationTake, MovesBecomePoints) {
    struct Case {
        double from;
        int loopEnd, partPos; ///< 0 no loop
        Moves moves;
        Ticks had, expected;
    };
    const Moves soon{{10, 50}, {12, 51}, {13, 52}, {14, 53}, {40, 60}};
    const Moves behind{{30, 50}, {70, 60}};
    const Moves passes{{1, 10}, {100, 20}, {178, 25}, {193, 30}, {240, 40}};
    const Ticks old{{0, 1}, {900, 2}, {960, 3}, {2000, 4}, {3000, 5}};
    const Case cases[] = {
        // held from the part's start
        {1920, 0, 960, soon, {}, {{0, 50}, {960, 50}, {1200, 51}, {1440, 60}}},
        // replaces from the punch on
        {960, 0, 0, behind, old, {{0, 1}, {900, 2}, {960, 50}, {1200, 50}, {1680, 60}}},
        // within a loop, pass by pass
        {0, 1920, 0, passes, {{100, 1}, {1500, 2}, {1920, 3}}, {{0, 30}, {480, 40}, {1920, 3}}},
        // nothing moved
        {960, 0, 0, {}, old, old},
    };
    const auto take = [&](const Case& c, int late) {
        SCOPED_TRACE(testing::Message() << &c - cases << " late by " << late);
        MoveFixture f;
        if (late) f.delay(late);
        CPart* part = f.addPart(c.partPos, c.had);
        if (c.loopEnd) f.loop(0, c.loopEnd);
        const std::string before = dump(f.seq);
        EXPECT_EQ(f.take(c.from, 300, c.moves), 0);
        EXPECT_EQ(pointsOf(part, 0), c.expected);
        EXPECT_EQ(f.host.undoIndex, c.moves.empty() ? -1 : 0);
        if (!c.moves.empty()) f.expectOneStep(before);
        EXPECT_TRUE(f.host.samples.empty()) << "only the lane was selected";
    };
    for (const Case& c : cases)
        for (const int late : {0, 20}) take(c, late);
}

/// What is moved behind the end of the part lies in it as well.
TEST(AutomationTake, ThePartGrowsWithIt) {
    MoveFixture f;
    CPart* part = f.addPart(0, {});
    part->length = 960;
    const std::string before = dump(f.seq);
    f.take(0, 180, {{10, 50}, {80, 60}, {150, 70}});
    EXPECT_EQ(pointsOf(part, 0), (Ticks{{0, 50}, {720, 60}, {1440, 70}}));
    EXPECT_EQ(part->length, 1920);
    EXPECT_EQ(f.seq->renderDuration(), 1920);
    f.expectOneStep(before);
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
    EXPECT_EQ(pointsOf(part, f.lane->slot), (Ticks{{0, 50}, {240, 50}}));
    f.expectOneStep(before);
}
