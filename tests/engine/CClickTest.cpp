#include "engine/CClick.h"
#include "audiofiles/CSample.h"
#include "engine/CSnap.h"
#include "engine/SeqStub.h"
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

/// A count-in of two beats ends with a block, where the song's first beat follows; what is missing
/// to a whole number of blocks is silence before it. Its clicks keep their distance to where the
/// user stood within the beat.
TEST(CClick, CountInLeadsIntoTheSong) {
    for (const int frames : {1000, 441, 1024}) {
        Fixture t(frames, clickCountIn | clickRecord);
        t.host->rec();
        const int blocks = (44100 + frames - 1) / frames;
        t.run(blocks + 30);
        const std::vector<int> expected = t.beatsFrom(blocks * frames - 44100), got = t.places();
        ASSERT_EQ(got.size(), expected.size()) << frames;
        for (size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], expected[i], 1) << frames;
    }
    Fixture t(441, clickCountIn);
    t.host->setPos(1280.0); // a third of a beat in
    t.host->rec();
    t.run(100);
    EXPECT_EQ(t.places(), (std::vector{0, 14700, 36750}));
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
