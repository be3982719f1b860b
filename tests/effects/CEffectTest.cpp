#include "effects/CEffect.h"

#include "common/fx/CBitcrusher.h"
#include "common/fx/CDelay.h"
#include "effects/RackParams.h"
#include "engine/EffectSettings.h"
#include "engine/StripFixture.h"
#include "engine/ValueDoor.h"
#include "engine/plan/GraphPlan.h"

#include <cmath>
#include <memory>
#include <numeric>
#include <random>

namespace {

float noise(long at) {
    return float(unsigned(at) * 2654435761u >> 8) / float(1 << 24) - 0.5f;
}

/// Noise into a rack that is an insert of the player or fed by it; `heard` is where it sounds.
struct Studio : StripFixture {
    explicit Studio(bool insert) : StripFixture(256) {
        player = add(new SignalComp(host));
        player->left = noise;
        player->right = [](long at) { return noise(-at); };
        heard = insert ? static_cast<CComp*>(player) : rack;
        if (insert) {
            addInsert(player->output(), rack);
        } else {
            add(rack);
            connect(player, rack);
            connectMIDI(player, rack);
        }
        connect(heard);
    }
    SignalComp* player;
    CEffect* rack = new CEffect(host);
    CComp* heard;
};

/// Of the first effect of the chain.
int paramOf(CEffect* rack, const char* setting) {
    const auto* fx = rack->getProg()->effects.getFirst();
    return rackParamOf(*rack, *fx, *findSetting(settingsOf(*fx), setting)).param;
}

} // namespace

/// All eight in any order, some of them off, against the same effects run by hand.
TEST(CEffect, RunsItsChainInOrder) {
    std::mt19937 random(1);
    int kinds[effectKindCount];
    std::iota(std::begin(kinds), std::end(kinds), 0);
    for (int round = 0; round < 8; ++round) {
        Studio f(round % 2);
        f.host->setTempo(90);
        std::shuffle(std::begin(kinds), std::end(kinds), random);
        CEffectProg* prog = f.rack->addProg(kinds[0]);
        for (int i = 1; i < effectKindCount; ++i)
            prog->effects.add(makeNewEffect(kinds[i], f.host->rate, 256));
        f.rack->setProg(1);
        for (CFX* fx : prog->effects) {
            fx->setEnabled(round < 4 || random() % 3 > 0);
            if (fx->type == fxDelay) static_cast<CDelay*>(fx)->setTicksLeft(1, 32);
        }
        const std::unique_ptr<CEffect> twin(static_cast<CEffect*>(f.rack->copy()));
        rtReset();
        for (int block = 0; block < 9; ++block) {
            std::vector<float> inL(256), inR(256), l(256), r(256);
            std::generate_n(inL.begin(), 256,
                            [at = f.player->at]() mutable { return noise(at++); });
            std::generate_n(inR.begin(), 256,
                            [at = f.player->at]() mutable { return noise(-at++); });
            f.block();
            float *fromL = inL.data(), *fromR = inR.data();
            for (CFX* fx : twin->getProg()->effects) {
                if (!fx->enabled) continue;
                fx->tempo = 90;
                fx->process(fromL, fromR, l.data(), r.data(), 256);
                fromL = l.data();
                fromR = r.data();
            }
            for (size_t i = 0; i < 256; ++i)
                ASSERT_NEAR(f.heard->output()->bufL[i], l[i], 1e-6) << round << ", frame " << i;
        }
        EXPECT_EQ(rtViolations(), 0);
    }
}

/// The power, which fades in 10 ms, and, of an insert, the wet level move in mid block; an event of
/// another is none.
TEST(CEffect, EventsAreExactToTheFrame) {
    for (const bool insert : {false, true}) {
        Studio f(insert);
        CEffectProg* prog = f.rack->addBitCrusher();
        static_cast<CBitcrusher*>(prog->effects.getFirst())->setBits(1);
        static_cast<CBitcrusher*>(prog->effects.getFirst())->setDegrade(1);
        f.rack->setProg(f.rack->progs.indexed(prog));
        f.player->moves = {{37.4, f.rack, paramPower, 0.4f},
                           {60.0, f.player, paramPower, 1.0f},
                           {100.0, f.rack, paramWet, 0.25f},
                           {150.5, f.rack, paramPower, 0.5f},
                           {220.0, f.rack, paramWet, 7.0f}};
        f.block();
        const float step = 1.0f / float(10 * f.host->framesInMs);
        float share = 1.0f;
        for (int i = 0; i < 256; ++i) {
            const bool on = i < 37 || i >= 151;
            share = std::clamp(share + (on ? step : -step), 0.0f, 1.0f);
            const float wet = share * (insert && i >= 100 && i < 220 ? 0.25f : 1.0f);
            const float x = noise(i), crushed = std::floor(x * 2 + 0.5f) / 2;
            ASSERT_NEAR(f.heard->output()->bufL[i], crushed * wet + x * (1 - wet), 1e-5) << i;
        }
    }
}

/// A kind that nobody knows is passed over, and a rack without a program is silent when it is on.
TEST(CEffect, PassesOverWhatItDoesNotKnow) {
    Studio f(false);
    f.rack->progs.add(new CEffectProg);
    f.rack->setProg(1);
    f.rack->getProg()->effects.add(makeNewEffect(42, 44100, 0));
    f.block();
    EXPECT_EQ(f.left[99], noise(99));
    f.rack->curProg = 9;
    f.block();
    EXPECT_EQ(f.left, std::vector<float>(256));
    f.rack->setParam(paramPower, 0.0f);
    f.block();
    EXPECT_EQ(f.left[99], noise(2 * 256 + 99));
    f.rack->setParam(paramWet, 0.456f);
    EXPECT_EQ(f.rack->paramText(paramPower) + f.rack->paramText(paramWet), "Off46%");
}

/// What the user moves of an insert, through the host's values.
TEST(CEffect, ParametersAreUndone) {
    Studio f(true);
    f.host->tasks->audioStopped();
    for (const int param : {int(paramPower), int(paramWet), paramOf(f.rack, "Feedback")}) {
        const float before = f.rack->param(param);
        f.host->values->setParam(f.rack, param, before > 0.5f ? 0.0f : 1.0f);
        f.host->settle();
        EXPECT_NE(f.rack->param(param), before) << param;
        f.host->undoClicked();
        f.host->settle();
        EXPECT_EQ(f.rack->param(param), before) << param;
    }
}

/// A setting of the chain moves with an event, in its own scale; macros go with a copy.
TEST(CEffect, SettingsOfItsChainAreParameters) {
    Studio f(false);
    const auto* delay = static_cast<CDelay*>(f.rack->getProg()->effects.getFirst());
    const int time = paramOf(f.rack, "Time");
    f.player->moves = {
        {10.0, f.rack, time, 0.5f}, {20.0, f.rack, 31, 1.0f}, {30.0, f.rack, 32, 1.0f}};
    rtReset();
    f.block();
    EXPECT_EQ(rtViolations(), 0);
    EXPECT_NEAR(delay->timeLeft, std::sqrt(5000.0f), 0.1f) << "1 to 5000 ms by ratio";
    EXPECT_NEAR(f.rack->param(time), 0.5f, 1e-5f);
    EXPECT_EQ(f.rack->paramName(time), "Delay: Time");
    f.rack->setMacroParam(3, time);
    const std::unique_ptr<CEffect> twin(static_cast<CEffect*>(f.rack->copy()));
    EXPECT_EQ(twin->getMacroParam(3), time);
    EXPECT_EQ(twin->getMacroParam(2), -1);
}

/// Whatever program goes where while blocks run, the current one stays current; one that arrives
/// becomes it, and what waits in the history follows the rate.
TEST(CEffect, IsEditedWhileItPlays) {
    static Studio* studio = nullptr;
    Studio f(false);
    studio = &f;
    messageHooks().pumpIdle = [] { studio->block(64); };
    CEffect* rack = f.rack;
    rtReset();
    for (int kind : {fxReverb, fxChorus}) {
        CEffectProg* added = nullptr;
        f.step([&](CUndo* step) { added = rack->addProg(kind, step); }, {}, rack);
        ASSERT_EQ(rack->getProg(), added);
    }
    for (int place = 0; place < 27; ++place) {
        rack->setProg(place % 3);
        CEffectProg* current = rack->getProg();
        auto* moved = static_cast<CEffectProg*>(rack->progs.items(place / 3 % 3));
        f.step([&](CUndo* step) { step->asMove(moved, &rack->progs, &rack->progs, place / 9); }, {},
               rack);
        ASSERT_EQ(rack->getProg(), current) << place;
        f.undo();
        ASSERT_EQ(rack->getProg(), current) << place << ", taken back";
        if (moved == current) continue;
        f.step([&](CUndo* step) { step->asRemove(moved, &rack->progs); }, {}, rack);
        ASSERT_EQ(rack->getProg(), current) << place << ", less one";
        f.host->setRate(place % 2 ? 44100 : 48000);
        f.undo();
        ASSERT_EQ(moved->effects.getFirst()->rate, float(f.host->rate));
        ASSERT_EQ(rack->progs.getCount(), 3);
    }
    EXPECT_EQ(rtViolations(), 0) << "an edit allocates, frees or locks on the audio thread";
    messageHooks().pumpIdle = nullptr;
}

/// A rack with an amplifier is late, so that what sounds beside it waits; switched off it is not.
TEST(CEffect, ItsLatencyIsCompensated) {
    StripFixture t(64);
    auto* rack = new CEffect(t.host);
    t.addInsert(t.addSignal()->output(), rack);
    rack->curProg = rack->progs.indexed(rack->addGuitarAmp());
    for (bool on : {true, false}) {
        rack->getProg()->effects.getFirst()->setEnabled(on);
        t.host->idle();
        t.run(2);
        EXPECT_EQ(t.host->plans->latency(), on ? 23 : 0);
    }
}
