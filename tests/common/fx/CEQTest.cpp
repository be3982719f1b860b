#include "common/fx/CEQ.h"
#include "FxFixture.h"

#include <atomic>
#include <complex>
#include <limits>
#include <thread>

namespace {

using Complex = std::complex<double>;

struct Setting {
    int type;
    float hz, db, q;
};

const Setting settings[] = {{0, 100, 6, 0.1f}, {0, 20, -12, 0.71f},  {1, 2000, -9, 1},
                            {1, 20, 24, 3},    {2, 10000, 12, 0.7f}, {2, 20000, -24, 0.1f},
                            {3, 440, 9, 2},    {3, 20000, 0, 12},    {4, 50, 0, 0.71f},
                            {5, 1000, 0, 5},   {6, 15000, 0, 0.5f},  {6, 60, 0, 12}};

EqCoeffs coeffsOf(const Setting& s, float rate) {
    return eqCoeffs(s.type, double(s.hz), double(s.db), double(s.q), double(rate));
}

/// The analog filter that a form stands for, at `s` in parts of its corner.
Complex analog(const Setting& of, Complex s) {
    const double A = std::pow(10, double(of.db) / 40), q = double(of.q), r = std::sqrt(A) / q;
    const Complex pass = s * s + s / q + 1.0;
    const Complex forms[] = {A * (s * s + r * s + A) / (A * s * s + r * s + 1.0),
                             (s * s + s * A / q + 1.0) / (s * s + s / (A * q) + 1.0),
                             A * (A * s * s + r * s + 1.0) / (s * s + r * s + A),
                             1.0 / pass,
                             s * s / pass,
                             s / q / pass,
                             (s * s + 1.0) / pass};
    return forms[of.type];
}

/// One side of a band, frame by frame.
struct Told {
    EqCoeffs c;
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;

    double run(double x) {
        const double y = c.b0 * x + c.b1 * x1 + c.b2 * x2 - c.a1 * y1 - c.a2 * y2;
        x2 = std::exchange(x1, x);
        y2 = std::exchange(y1, y);
        return y;
    }
};

/// Bands in a row over a sound, in blocks of `block`.
template <class Run>
Stereo play(Run run, std::vector<EqBand> bands, Stereo sound, int block) {
    std::vector<EqBand*> row;
    for (EqBand& band : bands) row.push_back(&band);
    for (int at = 0; at < sound.frames(); at += block) {
        const size_t o = size_t(at);
        run(row.data(), int(row.size()), &sound.left[o], &sound.right[o],
            std::min(block, sound.frames() - at));
    }
    return sound;
}

} // namespace

/// By the tangents of half the angles a filter has the response of the analog one.
TEST(CEQ, ResponseIsThatOfTheAnalogFilter) {
    for (const float rate : fxRates)
        for (const Setting& s : settings) {
            const EqCoeffs c = coeffsOf(s, rate);
            for (double hz = 20; hz < 20001; hz *= std::pow(10, 0.25)) {
                const double half = M_PI / double(rate);
                const Complex z = std::polar(1.0, -2 * half * hz);
                const Complex got = (c.b0 + z * (c.b1 + z * c.b2)) / (1.0 + z * (c.a1 + z * c.a2));
                const double turn = std::tan(half * hz) / std::tan(half * double(s.hz));
                EXPECT_LT(std::abs(got - analog(s, Complex(0, turn))), 1e-7)
                    << "type " << s.type << " at " << s.hz << " of " << rate << ", " << hz << " Hz";
            }
        }
}

/// One to four bands, in any cut, and the same bits on other machines.
TEST(CEQ, BandsInARowFollowTheFormulaInAnyCut) {
    Stereo in = fxSignal(5000);
    for (std::vector<float>* side : {&in.left, &in.right})
        for (float& x : *side) x *= 0.01f;
    size_t next = 0;
    for (const float rate : fxRates)
        for (const int block : {1, 2, 5, 6, 7, 64, 333, 1024})
            for (int count = 1; count <= maxEqBands; count++) {
                std::vector<EqBand> bands;
                std::vector<Told> left;
                for (int k = 0; k < count; k++) {
                    bands.push_back({coeffsOf(settings[next++ * 5 % 12], rate)});
                    left.push_back({bands.back()});
                }
                std::vector<Told> right = left;
                const Stereo out = play(runBands, bands, in, block);
                const Stereo pairs = play(runBandsInPairs, bands, in, block);
                EXPECT_TRUE(out.left == pairs.left && out.right == pairs.right) << block;
                const auto row = [&](double inL, double inR, double& outL, double& outR) {
                    for (Told& band : left) inL = band.run(inL);
                    for (Told& band : right) inR = band.run(inR);
                    outL = inL;
                    outR = inR;
                };
                expectLike(in, out, row, 1e-5,
                           std::to_string(count) + " bands in " + std::to_string(block));
            }
}

TEST(CEQ, SettersClampAndTakeEffectWithTheNextBlock) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    CEQ eq(eqPeaking);
    for (const auto& [value, kept] : {std::pair{0.01f, 0.1f}, {20.0f, 12.0f}, {nan, 12.0f}}) {
        eq.setQ(value);
        EXPECT_EQ(eq.getQ(), kept);
    }
    eq.setFrequency(1e9f);
    EXPECT_EQ(eq.getFrequency(), 20000.0f);
    EXPECT_EQ(eq.ready()->b1, eq.a1) << "peaking at 0 dB changes nothing";
    EXPECT_EQ(eq.b2, eq.a2);
    eq.setGain(100);
    EXPECT_EQ(eq.getGain(), 24.0f);
    EXPECT_EQ(eq.b0, 1.0);
    EXPECT_GT(eq.ready()->b0, 1.0);
    eq.setRate(22050); // the field keeps a frequency that is beyond half of it
    Stereo sound = fxSignal(20000);
    runFx(eq, sound, sound, 64);
    EXPECT_LT(*std::max_element(sound.left.begin(), sound.left.end()), 200.0f) << "unstable";
    eq.setFilterType(9);
    EXPECT_EQ(eq.ready()->b0, 0.0) << "an unknown form is silent";
}

/// Two threads set while a third one plays: it must never meet half a filter, and end with the
/// last.
TEST(CEQ, FilterIsNeverSeenHalf) {
    CEQ eq(eqPeaking);
    std::atomic<int> setting{2};
    const auto setter = [&](float db) {
        for (int i = 0; i < 100000; i++) eq.setGain(i % 2 ? db : -db);
        --setting;
    };
    std::thread one(setter, 24.0f), two(setter, 6.0f);
    while (setting > 0) {
        const EqBand* band = eq.ready();
        // Of a peaking band b0 + b2 and 1 + a2 are both 2 / a0, in every whole set.
        ASSERT_NEAR(band->b0 + band->b2, 1 + band->a2, 1e-12);
    }
    one.join();
    two.join();
    EXPECT_EQ(eq.ready()->b0, coeffsOf({eqPeaking, 4000, eq.gain, eq.q}, 44100).b0);
}
