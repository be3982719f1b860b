#include "engine/CClick.h"
#include "audiofiles/CSample.h"
#include "engine/CSnap.h"
#include "engine/SeqStub.h"
#include "support/TestHost.h"

#include "base/Delegates.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

/// The click replaced by a single frame, so that its places can be read off the output.
struct Fixture : TestHost {
    explicit Fixture(int blockFrames = 1000) : TestHost(blockFrames) {
        host->click->enabled = 1;
        host->click->mode = clickPlay;
        auto* values = static_cast<short*>(std::calloc(200, sizeof(short)));
        values[0] = 16384;
        host->click->sound->close();
        host->click->sound->setFormat(44100, 16, 1);
        host->click->sound->takeData(reinterpret_cast<unsigned char*>(values), 200);
    }
    std::vector<int> places() {
        std::vector<int> all;
        for (size_t i = 0; i < left.size(); ++i)
            if (std::fabs(left[i]) > 0.01f) all.push_back(int(i));
        return all;
    }
};

} // namespace

/// Noise below (1 - t)^4, in half periods of one sign each.
TEST(CClick, BuiltInSoundDecaysWithinItsFrames) {
    TestHost t;
    const CSample* s = t.host->click->sound;
    ASSERT_TRUE(s->frames == 4096 && s->chs == 1 && s->bits == 16);
    const auto* values = reinterpret_cast<const short*>(s->data);
    double energy[2] = {};
    for (int i = 0; i < 4096; ++i) {
        ASSERT_LE(std::abs(values[i]), 32767 * 0.3 * std::pow(1.0 - i / 4096.0, 4)) << i;
        energy[i / 2048] += double(values[i]) * values[i];
    }
    EXPECT_GT(energy[0], 1e9);
    EXPECT_LT(energy[1], energy[0] / 100);
    for (int i = 1; i < 39; ++i) EXPECT_TRUE(values[i] >= 0 && values[i + 41] <= 0) << i;
}

TEST(CClick, SoundsOnEveryBeatWhateverTheBlocks) {
    for (const int frames : {64, 1000, 4096}) {
        Fixture t(frames);
        t.host->setPos(480.0);
        t.host->start();
        t.run(100000 / frames + 1);
        // 22050 frames a beat; the first is half a beat away.
        std::vector<int> expected;
        for (int at = 11025; at < int(t.left.size()); at += 22050) expected.push_back(at);
        EXPECT_EQ(t.places(), expected) << frames;
        EXPECT_NEAR(t.left[11025], 0.5 * 0.8 * 0.8 * 3, 1e-4);
        EXPECT_EQ(t.left[11025], t.right[11025]);
    }
}

TEST(CClick, ModesDecideWhenItIsHeard) {
    struct Case {
        int mode;
        bool on, recording, playing;
        int countIn;
        bool heard;
    };
    const Case cases[] = {
        {1, true, false, true, 0, true},   {6, true, false, true, 0, false},
        {2, true, true, true, 0, true},    {4, true, true, true, 0, false},
        {4, true, true, false, 50, true},  {1, true, true, false, 50, false},
        {7, true, false, false, 0, false}, {7, false, true, true, 50, false},
    };
    for (const Case& c : cases) {
        Fixture t;
        t.host->click->mode = c.mode;
        t.host->click->enabled = c.on;
        {
            const GraphHold hold(t.host);
            t.host->recording = c.recording;
            t.host->playing = c.playing;
            t.host->click->countIn = c.countIn * 1000;
            t.host->click->setPos(0.0);
        }
        t.run();
        EXPECT_EQ(!t.places().empty(), c.heard) << c.mode;
    }
}

/// Count-in of 2 beats, 44100 frames: as many clicks, the last block ends with it, and the song's
/// first beat follows.
TEST(CClick, CountInLeadsIntoTheSong) {
    for (const int frames : {1000, 441, 1024}) {
        Fixture t(frames);
        t.host->click->mode = clickCountIn | clickRecord;
        t.host->rec();
        const int lead = (44100 + frames - 1) / frames * frames;
        t.run(lead / frames + 30);
        const int early = lead - 44100; // silence until a whole number of blocks is left
        std::vector<int> expected;
        for (int at = early; at < int(t.left.size()); at += 22050) expected.push_back(at);
        const std::vector<int> got = t.places();
        ASSERT_EQ(got.size(), expected.size()) << frames;
        for (size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], expected[i], 1) << frames;
    }
}

/// The clicks of a count-in keep their distance to where the user stood within the beat.
TEST(CClick, CountInFromWithinABeat) {
    Fixture t(441);
    t.host->click->mode = clickCountIn;
    t.host->setPos(1280.0); // a third of a beat in
    t.host->rec();
    t.run(44100 / 441);
    const std::vector<int> expected = {0, 14700, 36750};
    EXPECT_EQ(t.places(), expected);
}

TEST(CSnap, Ticks) {
    struct Case {
        int index, num, den;
        bool dotted, triplet;
        int ticks;
    };
    const Case cases[] = {
        {0, 4, 4, false, false, 30},   {3, 4, 4, false, false, 240},  {5, 4, 4, false, false, 960},
        {6, 4, 4, false, false, 3840}, {6, 3, 4, false, false, 2880}, {6, 6, 8, false, false, 2880},
        {6, 1, 7, false, false, 548},  {3, 4, 4, true, false, 360},   {3, 4, 4, false, true, 160},
        {3, 4, 4, true, true, 360},    {-1, 4, 4, false, false, 240}, {7, 4, 4, false, false, 240},
        {6, 1, 0, false, false, 3840}, {6, -5, 4, false, false, 960}, {6, 1, 9999, false, true, 2},
    };
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

TEST(CSnap, ValueAsksForTheBarFirst) {
    struct Bar : CObject {
        void ask(CObject* snap) { static_cast<CSnap*>(snap)->setBar(5, 0); }
    } bar;
    CSnap s;
    s.onChange = new _COnChange<Bar>(&bar, &Bar::ask);
    s.indexToSnap(6);
    EXPECT_EQ(s.val(), 960 * 5 * 4);
    s.indexToSnap(7);
    s.indexToSnap(-1);
    EXPECT_EQ(s.asIndex(), 6);
    s.index = 99;
    EXPECT_EQ(s.asIndex(), 3);
}
