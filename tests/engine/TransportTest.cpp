#include "engine/CClick.h"
#include "engine/SeqStub.h"
#include "engine/TransportRing.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <thread>

namespace {

using Log = std::vector<std::string>;

struct Fixture : TestHost {
    explicit Fixture(int blockFrames = 1024) : TestHost(blockFrames) {
        seq = add(new SeqStub(host));
    }
    SeqStub* seq;
};

} // namespace

TEST(Transport, ActsAtOnceWithoutBlocks) {
    Fixture t;
    t.host->setPos(1920.0);
    EXPECT_EQ(t.host->pos, 1920.0);
    t.host->start();
    EXPECT_EQ(t.host->playing, 1);
    EXPECT_EQ(t.host->startPos, 1920);
    EXPECT_EQ(t.host->inQueue->count, 1) << "the tempo map";
    t.host->start();
    t.host->stop();
    EXPECT_EQ(t.host->playing, 0);
    EXPECT_EQ(t.seq->log, (Log{"pos 1920", "start", "stop"}));
}

TEST(Transport, WaitsForTheNextBlockWhileBlocksCome) {
    Fixture t;
    t.run();
    t.host->setPos(960.0);
    t.host->start();
    EXPECT_EQ(t.host->pos, 0.0);
    EXPECT_EQ(t.host->playing, 0);
    t.run();
    EXPECT_EQ(t.host->playing, 1);
    EXPECT_EQ(t.seq->log, (Log{"pos 960", "start"}));
    EXPECT_DOUBLE_EQ(t.host->pos, 960.0 + t.host->framesToTicks(1024)) << "the block has advanced";
    EXPECT_TRUE(t.seq->jumped);
    t.run();
    EXPECT_FALSE(t.seq->jumped) << "for one block only";
    EXPECT_EQ(t.host->framesPlayed, 2048);
}

/// More calls than the ring holds arrive in order all the same.
TEST(Transport, FullRingLosesNothing) {
    Fixture t;
    t.run();
    const int calls = TransportRing::capacity + 50;
    for (int i = 0; i < calls; ++i) t.host->setPos(i);
    t.run();
    ASSERT_EQ(int(t.seq->log.size()), calls);
    for (int i = 0; i < calls; ++i) ASSERT_EQ(t.seq->log[size_t(i)], "pos " + std::to_string(i));
}

TEST(Transport, HoldServesWhatWaited) {
    Fixture t;
    t.run();
    t.host->start();
    const GraphHold hold(t.host);
    EXPECT_EQ(t.host->playing, 1);
    t.host->stop();
    EXPECT_EQ(t.host->playing, 0) << "who holds the graph does not wait";
}

TEST(Transport, SecondStopSilencesEverything) {
    Fixture t;
    t.host->start();
    t.host->stop();
    for (CComp* c : each<CComp>(t.host->comps)) EXPECT_EQ(c->allNotesOff, 0);
    t.host->stop();
    for (CComp* c : each<CComp>(t.host->comps)) EXPECT_EQ(c->allNotesOff, 1);
}

TEST(Transport, Limits) {
    Fixture t;
    const float nan = std::nanf("");
    struct Tempo {
        float asked, got;
    };
    for (const Tempo& c : {Tempo{5, 10}, {300, 250}, {nan, 10}, {10, 10}, {250, 250}, {99, 99}}) {
        t.host->setTempo(c.asked);
        EXPECT_EQ(t.host->tempo, c.got) << c.asked;
    }
    struct Pos {
        double asked, got;
    };
    const double inf = std::numeric_limits<double>::infinity();
    for (const Pos& c : {Pos{-1, 0}, {double(nan), 0}, {7.5, 7.5}, {inf, 1073741824.0}}) {
        t.host->setPos(c.asked);
        EXPECT_EQ(t.host->pos, c.got) << c.asked;
    }
}

TEST(Transport, TempoChangesAtTheBorderOfABlock) {
    Fixture t;
    t.host->setTempo(240.0f);
    EXPECT_EQ(t.host->tempoNow, 120.0f);
    t.run();
    EXPECT_EQ(t.host->tempoNow, 240.0f);
    // 960 ticks a beat: 4 beats a second.
    EXPECT_DOUBLE_EQ(t.host->framesToTicks(44100), 4 * 960.0);
    EXPECT_DOUBLE_EQ(t.host->ticksToFrames(4 * 960.0), 44100.0);
}

TEST(Transport, SyncedFormsNeedSync) {
    Fixture t;
    for (const int sync : {0, 2, 1}) {
        t.host->sync = sync;
        t.host->setTempoSynced(77.0f);
        t.host->setPosSynced(480.0);
        t.host->startSynced();
        const bool acts = sync == 1;
        EXPECT_EQ(t.host->tempo, acts ? 77.0f : 120.0f);
        EXPECT_EQ(t.host->pos, acts ? 480.0 : 0.0);
        EXPECT_EQ(t.host->playing, acts);
        t.host->stopSynced();
        EXPECT_EQ(t.host->playing, 0);
    }
}

/// The host's own position wraps in sync only, and keeps the overshoot.
TEST(Transport, LoopWraps) {
    struct Case {
        int sync, loop, from, end;
        double start;
    };
    const Case cases[] = {{1, 1, 0, 960, 950},    {0, 1, 0, 960, 950}, {1, 0, 0, 960, 950},
                          {1, 1, 960, 960, 950},  {1, 1, 0, 1, 0.5},   {1, 1, 1000, 1010, 5e8},

                          {1, 1, 960, 1920, 1919}};
    for (const Case& c : cases) {
        Fixture t;
        t.host->sync = c.sync;
        t.host->loop = c.loop;
        t.host->loopStart = c.from;
        t.host->loopEnd = c.end;
        t.host->setPos(c.start);
        t.host->start();
        t.run();
        double expected = c.start + t.host->framesToTicks(1024);
        const int length = c.end - c.from;
        if (c.sync && c.loop && length > 0 && expected >= c.end)
            expected -= std::floor((expected - c.from) / length) * length;
        EXPECT_NEAR(t.host->pos, expected, 1e-6) << c.start;
    }
}

/// A block that ends on the loop's end has left the loop.
TEST(Transport, LoopEndItselfWraps) {
    TestHost t(1000, 48000.0); // 40 ticks a block
    t.host->sync = 1;
    t.host->loopEnd = 960;
    t.host->setPos(920.0);
    t.host->start();
    t.run();
    EXPECT_EQ(t.host->pos, 0.0);
}

// Recording

TEST(Transport, RecordingBeginsAtTheQuarterOrWherePlayed) {
    for (const int sync : {0, 1}) {
        Fixture t;
        t.host->sync = sync;
        t.host->setPos(2000.6);
        t.host->rec();
        EXPECT_EQ(t.host->pos, 1920.0);
        EXPECT_EQ(t.host->recording, 1);
        t.run();
        EXPECT_EQ(t.host->playing, !sync) << "in sync the start comes from outside";
    }
    Fixture t;
    t.host->click->enabled = 1;
    t.host->start();
    t.host->rec();
    EXPECT_EQ(t.host->recording, 1);
    t.host->setPos(5000.0);
    EXPECT_EQ(t.host->pos, 0.0) << "not while recording";
    t.host->rec();
    EXPECT_TRUE(t.host->playing && !t.host->recording);
}

/// The transport starts at the border of the block where the count-in ends, not before.
TEST(Transport, CountIn) {
    for (const int frames : {1024, 1000, 441}) {
        Fixture t(frames);
        t.host->click->enabled = 1;
        t.host->click->beats = 2;
        t.host->rec();
        EXPECT_EQ(t.host->recording, 1);
        const int blocks = (44100 + frames - 1) / frames; // two beats of half a second
        EXPECT_EQ(t.host->click->countIn, blocks * frames);
        t.host->setTempo(200.0f);
        t.run(blocks);
        EXPECT_EQ(t.host->playing, 0);
        EXPECT_EQ(t.host->click->countIn, 0);
        EXPECT_EQ(t.host->tempoNow, 120.0f) << "held meanwhile";
        t.host->rec();
        t.run();
        EXPECT_EQ(t.host->playing, 1);
        EXPECT_EQ(t.host->tempoNow, 200.0f);
        EXPECT_EQ(t.host->framesPlayed, frames);
        Fixture stopped(frames);
        stopped.host->click->enabled = 1;
        stopped.host->rec();
        stopped.run(3);
        stopped.host->stop();
        stopped.run(200);
        EXPECT_FALSE(stopped.host->playing || stopped.host->recording);
    }
}

/// A take is one open step; what the sequencer still holds is fetched before it is closed.
TEST(Transport, TakeIsOneStep) {
    Fixture t;
    t.host->start();
    t.host->rec();
    t.host->idle();
    ASSERT_NE(t.host->recUndo, nullptr);
    EXPECT_FALSE(t.host->undoBusy());
    t.host->idle();
    t.host->rec();
    const int before = t.seq->idles;
    t.host->idle();
    EXPECT_EQ(t.host->recUndo, nullptr);
    EXPECT_EQ(t.seq->idles, before + 2);
    EXPECT_EQ(t.seq->log.back(), "afterRec");
    EXPECT_EQ(t.host->undoIndex, -1) << "an empty take leaves no step";
}

/// Calls of another thread at random while blocks run: each comes through, in order.
TEST(Transport, CallsFromAnotherThread) {
    Fixture t(64);
    std::atomic<bool> stop{false};
    std::thread driver([&] {
        float l[64], r[64];
        float* bufs[] = {l, r};
        while (!stop) {
            libio(bufs, bufs, 2, 2, 64, nullptr, 0);
            std::this_thread::yield();
        }
    });
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
    stop = true;
    driver.join();
    EXPECT_EQ(t.seq->log.back(), "pos 4321");
}
