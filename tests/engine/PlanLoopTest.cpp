#include "engine/StripFixture.h"

#include "engine/plan/GraphPlan.h"
#include "engine/plan/GraphProbe.h"
#include "engine/plan/GraphWorkers.h"

#include <random>

namespace {

constexpr int blocksOf[] = {32, 64, 480, 1024, 4096};

/// A source that an impulse of so many frames leaves, and groups behind it.
struct Patch : StripFixture {
    explicit Patch(int frames) : StripFixture(frames) {
        source = add(new SignalComp(host));
        source->left = source->right = [](long at) { return at < 3 ? 1.0f : 0.0f; };
    }
    CGroupCh* group(float level) {
        auto* g = add(new CGroupCh(host));
        g->output()->vol = level;
        g->output()->setVol(level, false);
        return g;
    }
    std::vector<float> play(int all) {
        while (int(left.size()) < all) run();
        left.resize(size_t(all));
        return left;
    }
    SignalComp* source;
};

} // namespace

/// A comb filter: a group that feeds itself, at once or through another one, repeats every 64
/// frames what it plays, by the gain of the way round, whatever the block.
TEST(PlanLoop, ACombIsTheSameInEveryBlock) {
    for (const bool longer : {false, true})
        for (const int frames : blocksOf) {
            Patch p(frames);
            CGroupCh* comb = p.group(0.5f);
            p.connect(p.source, comb);
            CComp* back = comb;
            if (longer) p.connect(comb, back = p.group(1.0f));
            p.connect(back, comb);
            p.connect(comb);
            const std::vector<float> got = p.play(8192);
            float level = 1.0f;
            for (int i = 0; i < 1024; ++i) {
                if (i % 64 == 0) level *= 0.25f;
                ASSERT_EQ(got[size_t(i)], i % 64 < 3 ? level : 0.0f) << i << " of " << frames;
            }
        }
}

/// Two loops through one group, a fader of which follows the song, and a bus that it sends to:
/// every block gives the same samples, and any number of threads. The cables that close the loops
/// are told, and latency is that of the way without them.
TEST(PlanLoop, InterlockedLoopsAreTheSameInEveryBlock) {
    std::vector<float> first;
    for (const int threads : {0, 3})
        for (const int frames : blocksOf) {
            Patch p(frames);
            p.host->workers->setCount(threads);
            p.host->workers->eager = true;
            CGroupCh* const a = p.group(0.8f);
            CGroupCh* const b = p.group(0.85f);
            CGroupCh* const c = p.group(0.75f);
            for (const auto& [from, to] : std::initializer_list<std::pair<CComp*, CComp*>>{
                     {p.source, a}, {a, b}, {b, a}, {b, c}, {c, b}, {c, p.out}})
                p.connect(from, to);
            CGroupCh* bus = p.addBus();
            b->output()->sendLevels[0]->level = 0.5f;
            p.source->latency = 10;
            p.connectMIDI(p.source, b);
            while (p.source->at + frames <= 700) p.run();
            const double at = double(700 - p.source->at);
            p.source->moves = {{at, b->output(), 0, 0.8f},
                               {at, b->output()->sendLevels[0], 0, 1.0f}};
            const std::vector<float> got = p.play(8192);
            if (first.empty()) first = got;
            for (size_t i = 0; i < got.size(); ++i)
                ASSERT_EQ(got[i], first[i]) << i << " of " << frames << ", threads " << threads;
            EXPECT_EQ(p.host->plans->latency(), 10);
            GraphProbe probe(p.host);
            probe.ask();
            p.run();
            ASSERT_TRUE(probe.take());
            int closing = 0;
            for (CComp* to : {static_cast<CComp*>(a), static_cast<CComp*>(b),
                              static_cast<CComp*>(c), static_cast<CComp*>(bus)})
                for (auto* cable : to->audioCables) closing += probe.delayOf(cable).loop;
            EXPECT_EQ(closing, 2);
        }
    EXPECT_GT(std::fabs(first[63 * 64 + 1]), 0.0f);
}

/// Random graphs full of loops sound the same in all blocks.
TEST(PlanLoop, RandomLoopsAreTheSameInEveryBlock) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        std::vector<float> first;
        for (const int frames : {16, 64, 480, 1024}) {
            std::mt19937 random(seed);
            const auto pick = [&random](int n) { return int(random() % unsigned(n)); };
            Patch p(frames);
            std::vector<CComp*> units{p.source};
            for (int i = 2 + pick(8); i > 0; --i) units.push_back(p.group(0.4f));
            for (size_t i = 2 * units.size(); i > 0; --i) {
                CComp* to = units[size_t(1 + pick(int(units.size()) - 1))];
                CComp* from = units[size_t(pick(int(units.size())))];
                if (!getAudioCable(to, from->output(), nullptr)) p.connect(from, to);
            }
            p.connect(units.back());
            if (pick(2)) p.connect(p.out, units[1]);
            const std::vector<float> got = p.play(2048);
            if (first.empty()) first = got;
            for (size_t i = 0; i < got.size(); ++i)
                ASSERT_EQ(got[i], first[i]) << seed << ": " << i << " of " << frames;
        }
    }
}
