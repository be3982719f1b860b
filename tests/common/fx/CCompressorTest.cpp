#include "common/fx/CCompressor.h"
#include "FxFixture.h"

namespace {

struct Case {
    const char* name;
    float threshold, ratio, attack, release, gain;
    int limiter; ///< in the second of three parts
};

const Case cases[] = {{"default", -20, 0.3f, 10, 100, 6, 0},
                      {"attack slower than release", -40, 0.5f, 300, 20, 0, 0},
                      {"lowest and loudest", -100, 0.05f, 1, 5000, 24, 0},
                      {"limited for a while", -12, 0.25f, 1, 50, -6, 1},
                      {"no ratio", -30, 1, 10, 100, -24, 0}};

/// The gain frame by frame in doubles, with the window of the average as it is left by limiting.
struct Reference {
    double rate;
    Case c;
    bool limited = false;
    double windowMs = 5.0, square = 1e-25, over = 1e-25;

    double keep(double ms) const { return std::exp(-1000 / (ms * rate)); }
    void operator()(double inL, double inR, double& outL, double& outR) {
        if (limited) windowMs = 0.001;
        const double power = inL * inL + inR * inR + 1e-25;
        square = keep(windowMs) * (square - power) + power;
        const double dB = 20 * std::log10(std::sqrt(square) + 1e-25);
        const double excess = std::fmax(dB - double(c.threshold), 0.0) + 1e-25;
        const double ms = double(excess > over ? c.attack : c.release);
        over = keep(ms) * (over - excess) + excess;
        const double ratio = limited ? 0.01 : double(c.ratio);
        const double gain = std::pow(10, ((ratio - 1) * over + double(c.gain)) / 20);
        outL = inL * gain;
        outR = inR * gain;
    }
};

} // namespace

TEST(CCompressor, FollowsItsFormulasInAnyCut) {
    for (float rate : fxRates)
        for (const Case& c : cases)
            for (int block : fxBlocks) {
                CCompressor fx(44100, 0);
                fx.setRate(rate);
                fx.setThreshold(c.threshold);
                fx.setRatio(c.ratio);
                fx.setAttack(c.attack);
                fx.setRelease(c.release);
                fx.setGain(c.gain);
                Reference reference{double(rate), c};
                for (int part = 0; part < 3; part++) {
                    reference.limited = c.limiter && part == 1;
                    fx.setLimiter(reference.limited);
                    Stereo in = fxSignal(8000, unsigned(part)), out = in;
                    runFx(fx, out, out, block);
                    expectLike(in, out, std::ref(reference), 1e-4,
                               std::string(c.name) + " in " + std::to_string(block));
                }
            }
}

/// One bad frame is over with its block.
TEST(CCompressor, RecoversFromWhatIsNoNumber) {
    for (float bad : {std::nanf(""), INFINITY, -INFINITY}) {
        CCompressor fx(44100, 0), fresh(44100, 0);
        Stereo hit(64), in = fxSignal(2000), out(2000), wanted(2000);
        hit.left[10] = bad;
        runFx(fx, hit, hit, 64);
        runFx(fx, in, out, 64);
        runFx(fresh, in, wanted, 64);
        EXPECT_EQ(out.left, wanted.left) << bad;
    }
}
