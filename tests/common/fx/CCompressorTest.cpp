#include "common/fx/CCompressor.h"
#include "FxFixture.h"
#include "PlainFx.h"

/// Against the plain form. Limiting leaves the window of the average as short as it made it.
TEST(CCompressor, FollowsItsFormulasInAnyCut) {
    const struct {
        const char* name;
        float threshold, ratio, attack, release, gain;
        bool limiter; ///< in the second of three parts
    } cases[] = {{"default", -20, 0.3f, 10, 100, 6, false},
                 {"attack slower than release", -40, 0.5f, 300, 20, 0, false},
                 {"lowest and loudest", -100, 0.05f, 1, 5000, 24, false},
                 {"limited for a while", -12, 0.25f, 1, 50, -6, true}};
    for (float rate : fxRates)
        for (const auto& c : cases)
            for (int block : fxBlocks) {
                CCompressor fx(44100, 0);
                fx.setRate(rate);
                fx.setThreshold(c.threshold);
                fx.setRatio(c.ratio);
                fx.setAttack(c.attack);
                fx.setRelease(c.release);
                fx.setGain(c.gain);
                PlainCompressor plain(fx);
                for (int part = 0; part < 3; part++) {
                    const bool limited = c.limiter && part == 1;
                    fx.setLimiter(limited);
                    plain.ratio = limited ? 0.01 : double(c.ratio);
                    if (limited) plain.rms = std::exp(-1000 / (0.001 * double(rate)));
                    expectLikePlain(fx, plain, 8000, block, 1e-4, c.name);
                }
            }
    EXPECT_NEAR(comp::dB2lin(20), 10, 1e-12);
}
