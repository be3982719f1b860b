#include "common/fx/CReverb.h"
#include "FxFixture.h"
#include "PlainFx.h"

/// Against the plain form, with the signs written down.
TEST(CReverb, FollowsItsFormulasInAnyCut) {
    for (float rate : {44100.0f, 48000.0f, 96000.0f, 192000.0f})
        for (const auto& [size, preDelay] : {std::pair{1000, 0}, {2000, 20}, {8000, 250}})
            for (int block : fxBlocks) {
                CReverb fx(rate, 0);
                fx.setSize(size);
                fx.setPreDelay(preDelay);
                fx.setWet(0.5f);
                fx.setDry(0.3f);
                PlainReverb plain(fx);
                for (size_t i = 0; i < CReverb::lineCount; i++) {
                    plain.line[i].signL = "+-+-+-+-+-+-"[i] == '+' ? 1.0f : -1.0f;
                    plain.line[i].signR = "++--++--++--"[i] == '+' ? 1.0f : -1.0f;
                }
                const bool fullPreDelay = rate * float(preDelay) == 48e6f; // all of its line
                expectLikePlain(fx, plain, fullPreDelay ? 60000 : 12000, block, 1e-4,
                                std::to_string(size));
            }
}

/// Each line's gain a round is what takes low notes down by 60 dB in the time told, and the filter
/// what makes the top 2.4 times as fast.
TEST(CReverb, DecaysInItsTime) {
    for (float rate : fxRates)
        for (int size : {1000, 3000}) {
            CReverb fx(44100, 0);
            fx.setSize(size);
            fx.setRate(rate);
            for (int i = 0; i < CReverb::lineCount; i++) {
                const double db = -60.0 * fx.lengths[i] / double(rate) / (size * 0.001);
                const double p = std::log(10.0) * db / 80 * (1 - 2.4 * 2.4);
                const double a = double(fx.filters[i].a), b = double(fx.filters[i].b);
                EXPECT_NEAR(20 * std::log10(a / (1 + b)), db, 1e-4) << size << " at " << rate;
                EXPECT_NEAR(b, -p, 1e-6) << size << " at " << rate;
            }
        }
}

/// Two seconds of silence send it to rest. There time stands still: the next sound brings back what
/// was left, however long the rest was.
TEST(CReverb, RestsInSilence) {
    CReverb fx(44100, 0), longer(44100, 0);
    Stereo burst = fxSignal(2048), silence(512), out(2048), written(512), back(2048), later(2048);
    for (CReverb* unit : {&fx, &longer}) {
        unit->setSize(1000);
        runFx(*unit, silence, out, 512);
        EXPECT_EQ(unit->state, 1) << "silence does not wake it";
        runFx(*unit, burst, out, 512);
        for (int i = 0; unit->state == 2 && i < 5 * 44100 / 512; i++)
            runFx(*unit, silence, out, 512);
        EXPECT_EQ(unit->silence, 88576) << "the first whole block at or past two seconds";
        ASSERT_EQ(unit->state, 1);
    }
    for (int i = 0; i < 20; i++) runFx(longer, silence, written, 512);
    EXPECT_EQ(written.left, silence.left) << "at rest nothing is written";
    runFx(fx, burst, back, 512);
    runFx(longer, burst, later, 512);
    EXPECT_EQ(back.left, later.left);
}

TEST(CReverb, ForgetsItsTailWhenSwitchedOff) {
    CReverb fx(44100, 0), fresh(44100, 0);
    Stereo burst = fxSignal(4096), out(4096), again(4096), first(4096);
    runFx(fx, burst, out, 512);
    fx.setEnabled(0);
    fx.setEnabled(1);
    for (int i = 0; i < CReverb::modLineCount; i++) fresh.modLines[i].phase = fx.modLines[i].phase;
    runFx(fx, burst, again, 512);
    runFx(fresh, burst, first, 512);
    expectNear(again, first, 1e-3, "after the tail");
}
