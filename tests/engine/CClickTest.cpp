#include "engine/CClick.h"
#include "audiofiles/CSample.h"
#include "engine/CSnap.h"
#include "engine/SeqStub.h"
#include "support/Rows.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

/// The click replaced by a single frame, so that its places can be read off the output.
struct Fixture : TestHost {
    explicit Fixture(int blockFrames, int mode) : TestHost(blockFrames) {
        host->click->enabled = 1;
        host->click->mode = mode;
        auto* values = static_cast<short*>(std::calloc(200, sizeof(short)));
        values[0] = 16384;
        host->click->sound->close();
        host->click->sound->setFormat(44100, 16, 1);
        host->click->sound->takeData(reinterpret_cast<unsigned char*>(values), 200);
    }
    std::vector<int> places() const {
        std::vector<int> all;
        for (size_t i = 0; i < left.size(); ++i)
            if (std::fabs(left[i]) > 0.01f) all.push_back(int(i));
        return all;
    }
    /// From `first` to the end of what was heard, 22050 frames apart: a beat.
    std::vector<int> beatsFrom(int first) const {
        std::vector<int> all;
        for (; first < int(left.size()); first += 22050) all.push_back(first);
        return all;
    }
};

/// Runs in a loop of its own, as a sequencer does.
class LoopingSeq : public SeqStub {
public:
    using SeqStub::SeqStub;
    int from = 0, to = 0; ///< ticks
    void process(int frames) override {
        SeqStub::process(frames);
        if (at > to) at = from + std::fmod(at - from, to - from);
    }
    void getLoopSection(int& left, int& right) override { left = from, right = to; }
};

} // namespace

TEST(CClick, SoundsOnEveryBeatWhateverTheBlocks) {
    for (const int frames : {64, 1000, 4096}) {
        Fixture t(frames, clickPlay);
        t.host->setPos(480.0);
        t.host->start();
        t.run(100000 / frames + 1);
        EXPECT_EQ(t.places(), t.beatsFrom(11025)) << frames;
        EXPECT_NEAR(t.left[11025], 0.5 * 0.8 * 0.8 * 3, 1e-4);
        EXPECT_EQ(t.left[11025], t.right[11025]);
    }
    Fixture t(1000, clickRecord | clickCountIn);
    t.host->start();
    t.run(100);
    EXPECT_TRUE(t.places().empty()) << "nothing is recorded";
}

/// A count-in of two beats ends on its frame, whatever the blocks, where the song goes on from the
/// beat before the place where the user stood.
TEST(CClick, CountInLeadsIntoTheSong) {
    for (const int frames : {1000, 441, 1024})
        for (const double from : {0.0, 960.0, 1280.0, 1440.0, 1919.6}) {
            Fixture t(frames, clickCountIn | clickRecord);
            t.host->setPos(from);
            t.host->rec();
            t.run(80000 / frames);
            EXPECT_EQ(t.places(), t.beatsFrom(0)) << frames << " " << from;
            EXPECT_EQ(t.host->framesPlayed, int(t.left.size()) - 44100);
        }
}

/// Who starts the transport during the count-in has no more of it, and the beats of the song.
TEST(CClick, StartEndsTheCountIn) {
    Fixture t(1000, clickCountIn | clickRecord);
    t.add(new SeqStub(t.host))->at = 1920;
    t.host->rec();
    t.run(3);
    t.host->start();
    t.run(60);
    EXPECT_TRUE(t.host->playing && t.host->recording && !t.host->click->countIn);
    std::vector<int> want = t.beatsFrom(3000);
    want.insert(want.begin(), 0);
    EXPECT_EQ(t.places(), want);
}

/// A loop that is no whole number of beats begins anew on whatever it begins with.
TEST(CClick, StaysOnTheBeatsOfALoop) {
    for (const auto& [from, to, blockFrames] : Rows<int, int, int>{{0, 3000, 64},
                                                                   {500, 2900, 1000},
                                                                   {700, 1400, 441},
                                                                   {0, 3000, 16384},
                                                                   {960, 2880, 1000}}) {
        Fixture t(blockFrames, clickPlay);
        auto* seq = t.add(new LoopingSeq(t.host));
        seq->from = from;
        seq->to = to;
        t.host->start();
        t.run(500000 / blockFrames);
        std::vector<double> want; // frames
        const double framesPerTick = 22050 / 960.0;
        double passAt = 0.0; // frames at which tick 0 of the pass lies
        for (int pass = 0, tick = 0; passAt < double(t.left.size()); ++pass) {
            for (; tick < to; tick += 960) want.push_back(passAt + tick * framesPerTick);
            passAt += (to - from) * framesPerTick;
            tick = (from + 959) / 960 * 960;
        }
        const std::vector<int> got = t.places();
        ASSERT_GT(got.size(), 15u);
        for (size_t i = 0; i < got.size(); ++i) ASSERT_NEAR(got[i], want[i], 2) << to << " " << i;
    }
}

TEST(CSnap, Ticks) {
    struct Case {
        int index, num, den;
        bool dotted, triplet;
        int ticks;
    };
    const Case cases[] = {{0, 4, 4, false, false, 30},   {5, 4, 4, false, false, 960},
                          {6, 6, 8, false, false, 2880}, {6, 1, 7, false, false, 548},
                          {3, 4, 4, true, false, 360},   {3, 4, 4, false, true, 160},
                          {3, 4, 4, true, true, 360},    {7, 4, 4, false, false, 240},
                          {6, 1, 0, false, false, 3840}, {6, -5, 4, false, false, 960}};
    for (const Case& c : cases) {
        CSnap s;
        s.index = c.index;
        s.num = c.num;
        s.den = c.den;
        s.dotted = c.dotted;
        s.triplet = c.triplet;
        EXPECT_EQ(s.val(), c.ticks) << c.index << " " << c.num << "/" << c.den;
        s.active = false;
        EXPECT_EQ(s.val(), 1);
    }
}
