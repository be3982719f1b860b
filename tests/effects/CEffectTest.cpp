#include "effects/CEffect.h"
#include "base/CStream.h"
#include "base/Messages.h"
#include "common/fx/CDelay.h"
#include "common/fx/CGuitarAmp.h"
#include "engine/StripFixture.h"
#include "support/RtTrap.h"

#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <random>
#include <string>

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
        if (insert) {
            addInsert(player->output(), rack);
            heard = player;
        } else {
            heard = add(rack);
            connect(player, rack);
            connectMIDI(player, rack);
        }
        connect(heard);
    }
    SignalComp* player;
    CEffect* rack = new CEffect(host);
    CComp* heard;
};

/// The rack by hand.
struct Hand {
    CEffectProg* prog;
    bool insert, on = true;
    float wet = 1.0f;

    /// Replaces `n` frames by what the rack makes of them.
    void run(float* left, float* right, int n) const {
        std::vector<float> l(static_cast<size_t>(n)), r = l;
        bool first = true;
        for (CFX* fx : each<CFX>(prog->effects)) {
            if (!on || !fx->enabled) continue;
            fx->tempo = 90.0f;
            fx->process(first ? left : l.data(), first ? right : r.data(), l.data(), r.data(), n);
            first = false;
        }
        const float share = first ? 0.0f : insert ? wet : 1.0f;
        for (size_t i = 0; i < size_t(n); ++i) {
            left[i] = l[i] * share + left[i] * (1 - share);
            right[i] = r[i] * share + right[i] * (1 - share);
        }
    }
};

/// Moves of a rack in each block, and the frames where they are heard.
const struct {
    double time;
    int frame, param;
    float value;
} moves[] = {{37.4, 37, paramPower, 0.4f},
             {100.0, 100, paramWet, 0.25f},
             {150.5, 151, paramPower, 0.5f},
             {220.0, 220, paramWet, 7.0f}};

std::string dump(CEffect* rack) {
    CMemoryStream stream;
    for (auto* prog : each<CEffectProg>(rack->progs)) rack->saveProg(&stream, prog);
    return {stream.data, stream.data + stream.getPos()};
}

} // namespace

/// All eight in any order, some of them off, with the power and the wet level moved in mid block.
TEST(CEffect, ChainsAndEventsAreExactToTheFrame) {
    std::mt19937 random(1);
    int kinds[effectKindCount];
    std::iota(std::begin(kinds), std::end(kinds), 0);
    for (int round = 0; round < 30; ++round) {
        Studio f(round % 2);
        f.host->setTempo(90);
        std::shuffle(std::begin(kinds), std::end(kinds), random);
        CEffectProg* prog = f.rack->addProg(kinds[0]);
        CUndo* step = f.host->undoStart("Add", f.rack, 0);
        for (int i = 1; i < effectKindCount; ++i) f.rack->addEffect(prog, kinds[i], step);
        f.host->undoEnd(step, true);
        f.rack->setProg(1);
        for (CFX* fx : each<CFX>(prog->effects)) {
            fx->setEnabled(round < 4 || (round > 5 && random() % 3 > 0));
            if (fx->type == fxDelay) static_cast<CDelay*>(fx)->setTicksLeft(1, 32);
            if (fx->type == fxGuitarAmp) static_cast<CGuitarAmp*>(fx)->setThreshold(0.05f);
        }
        const std::unique_ptr<CEffect> twin(static_cast<CEffect*>(f.rack->copy()));
        Hand hand{twin->getProg(), round % 2 == 1};
        for (const int frames : {256, 200, 1, 64, 256, 256, 256, 130, 256}) {
            std::vector<float> l(static_cast<size_t>(frames)), r = l;
            for (int i = 0; i < frames; ++i) {
                l[size_t(i)] = f.player->left(f.player->at + i);
                r[size_t(i)] = f.player->right(f.player->at + i);
            }
            int done = 0;
            const auto runTo = [&](int end) {
                hand.run(&l[size_t(done)], &r[size_t(done)], end - done);
                done = end;
            };
            for (const auto& m : moves) {
                f.player->moves.push_back({m.time, f.rack, m.param, m.value});
                f.player->moves.push_back({m.time, f.player, m.param, 1 - m.value}); // another's
                runTo(std::min(m.frame, frames));
                if (m.param == paramPower)
                    hand.on = m.value == 0.5f;
                else
                    hand.wet = std::min(m.value, 1.0f);
            }
            runTo(frames);
            f.block(frames);
            for (size_t i = 0; i < size_t(frames); ++i) {
                ASSERT_NEAR(f.heard->output()->bufL[i], l[i], 1e-6) << round << ", frame " << i;
                ASSERT_NEAR(f.heard->output()->bufR[i], r[i], 1e-6) << round << ", frame " << i;
            }
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
    EXPECT_EQ(f.rack->paramText(paramPower), "On");
    f.rack->setParam(paramPower, 0.0f);
    f.block();
    EXPECT_EQ(f.left[99], noise(2 * 256 + 99));
    EXPECT_EQ(f.rack->paramText(paramPower), "Off");
    f.rack->setParam(paramWet, 0.456f);
    EXPECT_EQ(f.rack->paramText(paramWet), "46%");
}

/// Random edits of programs and chains while blocks run; then all of them back, and done again.
TEST(CEffect, IsEditedWhileItPlays) {
    static Studio* studio = nullptr;
    Studio f(false);
    studio = &f;
    messageHooks().pumpIdle = [] { studio->block(64); };
    CEffect* rack = f.rack;
    f.block();
    rtReset();
    std::vector<std::string> states = {dump(rack)};
    std::mt19937 random(2);
    const auto any = [&](const CList& list) {
        return static_cast<CObject*>(list.items(int(random() % unsigned(list.getCount()))));
    };
    while (states.size() < 150) {
        auto* prog = static_cast<CEffectProg*>(any(rack->progs));
        CEffectProg* current = rack->getProg();
        CUndo* step = f.host->undoStart("Edit", rack, 0);
        const int kind = int(random() % effectKindCount), place = int(random() % 5) - 1;
        CList& chain = prog->effects;
        const unsigned action = random() % (chain.empty() ? 4 : 6);
        if (action == 0) current = rack->addProg(kind, step);
        if (action == 1) step->asMove(prog, &rack->progs, &rack->progs, place);
        if (action == 2 && prog != current) step->asRemove(prog, &rack->progs);
        if (action == 3) rack->addEffect(prog, kind, step, place);
        if (action == 4) step->asRemove(any(chain), &chain);
        if (action == 5) step->asMove(any(chain), &chain, &chain, place);
        const bool edited = !step->items.empty();
        f.host->undoEnd(step, true);
        ASSERT_EQ(rack->getProg(), current) << "the current program stays, or is the new one";
        if (edited) states.push_back(dump(rack));
    }
    EXPECT_EQ(rtViolations(), 0) << "an edit allocates, frees or locks on the audio thread";
    f.host->setRate(48000);
    for (; f.host->undoIndex >= 0; f.host->settle()) {
        ASSERT_EQ(dump(rack), states[size_t(f.host->undoIndex + 1)]);
        for (auto* prog : each<CEffectProg>(rack->progs))
            for (CFX* fx : each<CFX>(prog->effects)) ASSERT_EQ(fx->rate, 48000.0f);
        f.host->undoClicked();
    }
    EXPECT_EQ(dump(rack), states[0]);
    for (int i = f.host->undoList.getCount(); i > 0; --i) f.host->redoClicked();
    f.host->settle();
    EXPECT_EQ(dump(rack), states.back());
    f.host->undoClear();
    f.block(64);
    messageHooks().pumpIdle = nullptr;
}

/// A rack with an amplifier is late, so that what sounds beside it waits; switched off it is not.
TEST(CEffect, ItsLatencyIsCompensated) {
    StripFixture t(64);
    SignalComp* dry = t.addSignal();
    dry->left = [](long at) { return at == 128 ? 0.5f : 0.0f; };
    SignalComp* other = t.addSignal();
    other->left = other->right = [](long) { return 0.0f; };
    auto* rack = new CEffect(t.host);
    t.addInsert(other->output(), rack);
    rack->addGuitarAmp();
    rack->curProg = 1;
    CFX* amp = static_cast<CFX*>(rack->getProg()->effects.getFirst());
    for (bool on : {true, false}) {
        amp->setEnabled(on);
        t.host->idle();
        t.run(2);
        EXPECT_EQ(t.host->pdcInDelay, on ? 23 : 0);
        t.forget();
        dry->at = 128;
        t.run(1);
        EXPECT_NEAR(t.left[on ? 23 : 0], 0.5f, 1e-4f) << on;
    }
}
