#include "engine/CClick.h"
#include "engine/SeqStub.h"
#include "engine/StripFixture.h"
#include "engine/TransportRing.h"
#include "support/Rows.h"

#include <cmath>
#include <limits>
#include <random>

namespace {

using Log = std::vector<std::string>;

struct Fixture : StripFixture {
    explicit Fixture(int blockFrames = 1024, double rate = 44100.0)
        : StripFixture(blockFrames, rate), seq(add(new SeqStub(host))) {}
    SeqStub* seq;
};

} // namespace

TEST(Transport, WaitsForTheNextBlockWhileBlocksCome) {
    Fixture t;
    t.run();
    t.host->setPos(960.0);
    t.host->start();
    EXPECT_TRUE(t.host->pos == 0.0 && !t.host->playing);
    t.run();
    EXPECT_EQ(t.seq->log, (Log{"pos 960", "start"}));
    EXPECT_DOUBLE_EQ(t.host->pos, 960.0 + 1024 * t.host->ticksPerFrame())
        << "the block has advanced";
    EXPECT_TRUE(t.seq->jumped);
    t.run();
    EXPECT_TRUE(!t.seq->jumped && t.host->framesPlayed == 2048);
    t.host->stop();
    const GraphHold hold(t.host);
    EXPECT_EQ(t.host->playing, 0) << "who holds the graph does not wait";
}

TEST(Transport, FullRingLosesNothing) {
    Fixture t;
    t.run();
    Log expected;
    for (int i = 0; i < TransportRing::capacity + 50; ++i) {
        t.host->setPos(i);
        expected.push_back("pos " + std::to_string(i));
    }
    t.run();
    EXPECT_EQ(t.seq->log, expected);
}

TEST(Transport, Limits) {
    Fixture t;
    for (const auto& [asked, got] : {std::pair{5.0f, 10}, {300, 250}, {NAN, 10}, {99, 99}}) {
        t.host->setTempo(asked);
        EXPECT_EQ(t.host->tempo, float(got)) << asked;
    }
    for (const auto& [asked, got] : Rows<double, double>{
             {-1, 0}, {NAN, 0}, {7.5, 7.5}, {std::numeric_limits<double>::infinity(), 1 << 30}}) {
        t.host->setPos(asked);
        EXPECT_EQ(t.host->pos, got) << asked;
    }
    t.host->setTempo(240.0f);
    EXPECT_EQ(t.host->tempoNow, 120.0f) << "until the next block";
    t.run();
    // 960 ticks a beat: 4 beats a second.
    EXPECT_DOUBLE_EQ(t.host->framesToTicks(44100), 4 * 960.0);
    EXPECT_DOUBLE_EQ(t.host->ticksToFrames(4 * 960.0), 44100.0);
}

/// The host's own position wraps in sync only, and keeps the overshoot. A block of 40 ticks that
/// ends on the loop's end has left the loop.
TEST(Transport, LoopWraps) {
    for (const auto& [sync, loop, from, end, start, after] :
         Rows<int, int, int, int, double, double>{{1, 1, 0, 960, 950, 30},
                                                  {0, 1, 0, 960, 950, 990},
                                                  {1, 0, 0, 960, 950, 990},
                                                  {1, 1, 960, 960, 950, 990},
                                                  {1, 1, 0, 1, 0.5, 0.5},
                                                  {1, 1, 1000, 1010, 5e8, 1000},
                                                  {1, 1, 0, 960, 920, 0}}) {
        Fixture t(1000, 48000.0);
        t.host->sync = sync;
        t.host->loop = loop;
        t.host->loopStart = from;
        t.host->loopEnd = end;
        t.host->setPos(start);
        t.host->start();
        t.run();
        EXPECT_NEAR(t.host->pos, after, 1e-6) << start;
    }
}

TEST(Transport, RecordingWaitsForTheSyncAndStaysWhereItBegan) {
    for (const int sync : {0, 1}) {
        Fixture t;
        t.host->sync = sync;
        t.host->setPos(960.0);
        t.host->rec();
        t.host->setPos(5000.0);
        EXPECT_EQ(t.host->pos, 960.0);
        t.run();
        EXPECT_EQ(t.host->playing, !sync) << "in sync the start comes from outside";
    }
}

/// The transport starts at the border of the block where the count-in ends, not before; a stop ends
/// the count-in.
TEST(Transport, CountIn) {
    Fixture t(441);
    t.host->click->enabled = 1;
    t.host->rec();
    t.run(3);
    t.host->stop();
    t.run(300);
    EXPECT_FALSE(t.host->playing || t.host->recording || t.host->click->countIn);
    t.host->click->beats = 2;
    t.host->rec();
    t.run();
    t.host->setTempo(200.0f);
    t.run(99);
    EXPECT_FALSE(t.host->playing || t.host->click->countIn);
    EXPECT_EQ(t.host->tempoNow, 120.0f) << "held meanwhile";
    t.run();
    EXPECT_TRUE(t.host->playing && t.host->recording);
    EXPECT_EQ(t.host->tempoNow, 200.0f);
    EXPECT_EQ(t.host->framesPlayed, 441);
}

/// A take is one open step; what the sequencer still holds is fetched before it is closed.
TEST(Transport, TakeIsOneStep) {
    Fixture t;
    t.host->start();
    t.host->rec();
    t.host->idle();
    ASSERT_TRUE(t.host->recUndo && !t.host->undoBusy());
    t.host->rec();
    const int before = t.seq->idles;
    t.host->idle();
    EXPECT_EQ(t.host->recUndo, nullptr);
    EXPECT_EQ(t.seq->idles, before + 2);
    EXPECT_EQ(t.seq->log.back(), "afterRec");
    EXPECT_EQ(t.host->undoIndex, -1) << "an empty take leaves no step";
}

TEST(Transport, CallsFromAnotherThread) {
    Fixture t(64);
    {
        const BlockThread driver([&] { t.block(64); });
        std::mt19937 random(1);
        const std::function<void()> calls[] = {[&] { t.host->start(); },
                                               [&] { t.host->stop(); },
                                               [&] { t.host->setTempo(float(random() % 300)); },
                                               [&] { t.host->rec(); },
                                               [&] { t.host->idle(); },
                                               [&] { t.host->setPos(double(random() % 10000)); }};
        for (int i = 0; i < 3000; ++i) calls[random() % std::size(calls)]();
        t.host->stop();
        t.host->setPos(4321.0);
        { const GraphHold served(t.host); }
        EXPECT_FALSE(t.host->playing || t.host->recording);
        EXPECT_EQ(t.host->pos, 4321.0);
    }
    EXPECT_EQ(t.seq->log.back(), "pos 4321");
}
