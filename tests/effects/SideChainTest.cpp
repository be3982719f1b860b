#include "common/fx/CCompressor.h"
#include "common/fx/CGate.h"
#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "engine/StripFixture.h"

#include <cmath>
#include <memory>
#include <numbers>

namespace {

constexpr float quiet = 0.01f, loud = 0.5f;

float decibels(float amplitude) {
    return 20 * std::log10(amplitude);
}

/// A bass, and a kick that nothing leads from.
struct KickAndBass : StripFixture {
    explicit KickAndBass(int blockFrames = 256) : StripFixture(blockFrames) {
        kick = add(new SignalComp(host));
        bass = addSignal();
        bass->left = bass->right = [](long) { return quiet; };
        kick->left = kick->right = [](long) { return loud; };
    }
    /// An effect on a strip, switched on.
    template <class Fx>
    Fx* insert(CComp* on, int kind) {
        auto* rack = static_cast<CEffect*>(addInsertKind(on, kind));
        racks.push_back(rack);
        return static_cast<Fx*>(effectOf(rack));
    }
    CComp* addInsertKind(CComp* on, int kind) { return ::addInsert(on->output(), kind, -1); }
    CCompressor* compressor(CComp* on) {
        auto* fx = insert<CCompressor>(on, fxCompressor);
        fx->setThreshold(-20.0f);
        fx->setRatio(0.5f);
        fx->setAttack(1.0f);
        fx->setGain(0.0f);
        return fx;
    }
    CGate* gate(CComp* on) {
        auto* fx = insert<CGate>(on, fxGate);
        fx->setThreshold(decibels(loud) - 1);
        fx->setAttack(CGate::shortest);
        fx->setHold(0.0f);
        fx->setRange(CGate::lowest);
        return fx;
    }
    float level() { return left.back(); }

    SignalComp *kick, *bass;
    std::vector<CEffect*> racks;
};

/// What half of what both sides together have over -20 dB leaves of the bass.
float lowered(float key) {
    return quiet *
           std::pow(10.0f, -0.5f * (decibels(key * std::numbers::sqrt2_v<float>) + 20) / 20);
}

} // namespace

/// The sound of the other strip before its fader, and behind its inserts, sets the gain; it goes by
/// undo, and with the strip that it comes from.
TEST(SideChain, AStripLowersAnother) {
    KickAndBass t;
    t.compressor(t.bass);
    t.run(40);
    EXPECT_NEAR(t.level(), quiet, 1e-6f);
    EXPECT_TRUE(setKey(t.racks[0], t.kick->output()));
    EXPECT_FALSE(setKey(t.racks[0], t.kick->output()));
    t.kick->output()->mute = 1;
    t.kick->output()->vol = 0.0f;
    t.run(40);
    EXPECT_NEAR(t.level(), lowered(loud), 1e-5f);
    EXPECT_NEAR(gainReductionDb(t.racks[0]), decibels(quiet / lowered(loud)), 0.01f);
    t.addInsert(t.kick->output(), new GainComp(t.host, 0.5f));
    t.run(300);
    EXPECT_NEAR(t.level(), lowered(loud / 2), 1e-5f);
    t.step([&](CUndo* u) {
        t.host->stripCables(t.kick, u);
        u->asRemove(t.kick, &t.host->comps);
    });
    EXPECT_EQ(t.racks[0]->keyInput().source(), nullptr);
    t.run(300);
    EXPECT_NEAR(t.level(), quiet, 1e-6f);
    t.undo();
    t.run(40);
    EXPECT_NEAR(t.level(), lowered(loud / 2), 1e-5f);
    t.undo();
    EXPECT_EQ(t.racks[0]->keyInput().source(), nullptr);
    t.run(300);
    EXPECT_NEAR(t.level(), quiet, 1e-6f);
    t.redo();
    t.run(40);
    EXPECT_NEAR(t.level(), lowered(loud / 2), 1e-5f);
}

/// A gate lets through what belongs to the moment in which its key rises, whichever of the two is
/// late, in blocks of any size, and where its strip is part of a loop.
TEST(SideChain, MeetsItsKeyOnTime) {
    struct Case {
        int kickLate, bassLate;
        bool loops;
    };
    constexpr long rise = 1500;
    for (const Case& c : {Case{0, 0, false},
                          {300, 0, false},
                          {0, 700, false},
                          {900, 200, false},
                          {0, 0, true},
                          {300, 100, true}}) {
        std::vector<float> first;
        for (const int frames : {32, 256, 1000}) {
            KickAndBass t(1024);
            t.bass->left = t.bass->right = [](long at) { return float(at) * 1e-5f; };
            t.kick->left = t.kick->right = [](long at) { return at >= rise ? loud : 0.0f; };
            t.kick->latency = c.kickLate;
            t.bass->latency = c.bassLate;
            const std::unique_ptr<CAudioCable> away(t.connect(t.bass));
            auto* group = t.add(new CGroupCh(t.host));
            t.connect(t.bass, group);
            t.connect(group);
            const CGate* gate = t.gate(group);
            if (c.loops) {
                auto* back = t.add(new CGroupCh(t.host));
                t.connect(group, back);
                t.connect(back, group);
                back->output()->setVol(0.0f, false);
                back->output()->vol = 0.0f;
            }
            setKey(t.racks[0], t.kick->output());
            t.forget();
            t.bass->at = t.kick->at = 0;
            while (t.left.size() < 4000) t.run(1, frames);
            t.left.resize(4000);
            const auto at = std::ranges::find_if(t.left, [](float x) { return x != 0.0f; });
            const double open = 1 - std::exp(-1000.0 / (double(gate->getAttack()) * 44100));
            const long moment = rise - c.kickLate + c.bassLate;
            ASSERT_NE(at, t.left.end());
            EXPECT_NEAR(*at, double(moment) * 1e-5 * open, 1e-5)
                << c.kickLate << ", " << c.bassLate << " in blocks of " << frames;
            if (first.empty()) first = t.left;
            EXPECT_TRUE(first == t.left) << c.kickLate << " in blocks of " << frames;
        }
    }
}

/// A bus is heard with all that is sent to it; strips that key each other are offered no more, and
/// silent as keys where a file has them so.
TEST(SideChain, BusesAndCircles) {
    KickAndBass t;
    CGroupCh* bus = t.addBus();
    t.compressor(t.bass);
    SignalComp* late = t.addSignal(); // behind the bass in the list
    constexpr float sent = loud / 4;
    late->left = late->right = [](long) { return sent; };
    late->output()->sendLevels[0]->level = 1.0f;
    setKey(t.racks[0], bus->output());
    t.run(40);
    EXPECT_NEAR(t.level() - 2 * sent, lowered(sent), 1e-4f); // the bus and what is sent to it

    t.compressor(t.kick);
    const auto offers = [](CEffect* rack, COutputChannel* strip) {
        return std::ranges::count(keySources(rack), strip) > 0;
    };
    EXPECT_TRUE(offers(t.racks[1], t.bass->output()));
    EXPECT_FALSE(offers(t.racks[1], t.kick->output()));
    EXPECT_FALSE(offers(t.racks[1], t.out->output()));
    setKey(t.racks[0], t.kick->output());
    EXPECT_FALSE(offers(t.racks[1], t.bass->output()));
    setKey(t.racks[1], t.bass->output());
    EXPECT_TRUE(keyWaitsForItself(t.racks[0]) && keyWaitsForItself(t.racks[1]));
    t.run(300);
    EXPECT_NEAR(t.level() - 2 * sent, quiet, 1e-4f);
}
