#include "common/fx/CChorus.h"
#include "FxFixture.h"
#include "PlainFx.h"

/// Against the plain form; long enough for the line to go round.
TEST(CChorus, FollowsItsFormulasInAnyCut) {
    const struct {
        const char* name;
        float frequency, delay, depth, phase, feedback;
    } cases[] = {{"default", 3, 20, 0.1f, 90, 0},
                 {"deep, fed back", 1, 30, 0.9f, 180, -0.8f},
                 {"read where it is written", 5, 2, 1, 45, 0.5f},
                 {"longest", 2, 300, 0.5f, 0, 0.9f},
                 {"shortest", 10, 1, 0, 0, 0.9f}};
    for (float rate : fxRates)
        for (const auto& c : cases)
            for (int block : fxBlocks) {
                CChorus fx(rate, 0);
                fx.setFrequency(c.frequency);
                fx.setDelay(c.delay);
                fx.setDepth(c.depth);
                fx.setPhase(c.phase);
                fx.setFeedback(c.feedback);
                fx.setWet(0.75f);
                PlainChorus plain(fx);
                fx.setEnabled(1);
                expectLikePlain(fx, plain, 70000, block, 1e-5, c.name);
            }
}

/// Standing still, it is a delay by a straight line between two frames, wherever in its line it
/// writes: it neither jumps nor gets brighter where the line begins anew.
TEST(CChorus, SoundsTheSameAllAlongItsLine) {
    constexpr int frames = 2 * CChorus::bufferFrames + 5000;
    for (float ms : {1.005f, 20.01f, 299.99f}) {
        CChorus fx(44100, 0);
        fx.setDelay(ms);
        fx.setDepth(0.0f);
        fx.setDry(0.0f);
        fx.setWet(1.0f);
        fx.setEnabled(1);
        const auto input = [](double frame) { return std::sin(1.7 * frame); }; // 12 kHz
        Stereo in(frames), out(frames);
        for (size_t i = 0; i < frames; i++) in.left[i] = in.right[i] = float(input(double(i)));
        runFx(fx, in, out, 1000);
        const double late = double(ms) * 44.1 + 1;
        for (size_t i = size_t(late) + 2; i < frames; i++) {
            const double at = std::floor(double(i) - late), part = double(i) - late - at;
            const double wanted = input(at) + (input(at + 1) - input(at)) * part;
            ASSERT_NEAR(double(out.left[i]), wanted, 1e-3) << ms << " ms, frame " << i;
            ASSERT_EQ(out.left[i], out.right[i]);
        }
    }
}
