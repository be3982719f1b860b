#include "common/fx/CEQ.h"
#include "FxFixture.h"

#include <atomic>
#include <complex>
#include <limits>
#include <numbers>
#include <thread>

namespace {

using std::numbers::pi;

struct Setting {
    int type;
    float hz, db, q;
};

const Setting settings[] = {{0, 100, 6, 0.1f}, {0, 20, -12, 0.71f},  {1, 2000, -9, 1},
                            {1, 20, 24, 3},    {2, 10000, 12, 0.7f}, {2, 20000, -24, 0.1f},
                            {3, 440, 9, 2},    {3, 20000, 0, 12},    {4, 50, 0, 0.71f},
                            {5, 1000, 0, 5},   {6, 15000, 0, 0.5f},  {6, 60, 0, 12}};
constexpr std::size_t settingCount = std::size(settings);

/// A side of a band as it is told: the table of the seven forms, not divided, and its formula.
struct Told {
    double b[3], a[3], x1 = 0, x2 = 0, y1 = 0, y2 = 0;

    Told(const Setting& s, double rate) {
        const double A = std::pow(10, double(s.db) / 40), S = 2 * std::sqrt(A);
        const double w = 2 * pi * double(s.hz) / rate, c = std::cos(w);
        const double al = std::sin(w) / 2 / double(s.q);
        const double table[][6] = {
            {A * (A + 1 - (A - 1) * c + S * al), 2 * A * (A - 1 - (A + 1) * c),
             A * (A + 1 - (A - 1) * c - S * al), A + 1 + (A - 1) * c + S * al,
             -2 * (A - 1 + (A + 1) * c), A + 1 + (A - 1) * c - S * al},
            {1 + al * A, -2 * c, 1 - al * A, 1 + al / A, -2 * c, 1 - al / A},
            {A * (A + 1 + (A - 1) * c + S * al), -2 * A * (A - 1 + (A + 1) * c),
             A * (A + 1 + (A - 1) * c - S * al), A + 1 - (A - 1) * c + S * al,
             2 * (A - 1 - (A + 1) * c), A + 1 - (A - 1) * c - S * al},
            {(1 - c) / 2, 1 - c, (1 - c) / 2, 1 + al, -2 * c, 1 - al},
            {(1 + c) / 2, -(1 + c), (1 + c) / 2, 1 + al, -2 * c, 1 - al},
            {al, 0, -al, 1 + al, -2 * c, 1 - al},
            {1, -2 * c, 1, 1 + al, -2 * c, 1 - al}};
        std::copy_n(table[s.type], 3, b);
        std::copy_n(table[s.type] + 3, 3, a);
    }
    /// Power of one of the polynomials by its closed form, at `p` radians a frame.
    static double power(const double* v, double p) {
        const double q2 = std::pow(std::sin(p / 2), 2);
        return std::pow(v[0] + v[1] + v[2], 2) -
               4 * (v[0] * v[1] + 4 * v[0] * v[2] + v[1] * v[2]) * q2 + 16 * v[0] * v[2] * q2 * q2;
    }
    double gain(double p) const { return std::sqrt(power(b, p) / power(a, p)); }
    double run(double x) {
        const double y = (b[0] * x + b[1] * x1 + b[2] * x2 - a[1] * y1 - a[2] * y2) / a[0];
        x2 = std::exchange(x1, x);
        y2 = std::exchange(y1, y);
        return y;
    }
};

EqBand bandOf(const Setting& s, float rate) {
    CEQ eq(s.type);
    eq.setRate(rate);
    eq.setFrequency(s.hz);
    eq.setGain(s.db);
    eq.setQ(s.q);
    return *eq.ready();
}

/// Bands in a row over a sound, in blocks of `block`.
template <class Run>
Stereo play(Run run, std::vector<EqBand> bands, Stereo sound, int block) {
    std::vector<EqBand*> row;
    for (EqBand& b : bands) row.push_back(&b);
    for (int at = 0; at < sound.frames(); at += block) {
        const std::size_t o = std::size_t(at);
        run(row.data(), int(row.size()), &sound.left[o], &sound.right[o],
            std::min(block, sound.frames() - at));
    }
    return sound;
}

double gainAt(const std::vector<float>& impulse, double p) {
    const std::complex<double> turn = std::polar(1.0, -p);
    std::complex<double> sum = 0, phase = 1;
    for (const float x : impulse) {
        sum += double(x) * phase;
        phase *= turn;
    }
    return std::abs(sum);
}

} // namespace

/// Measured by an impulse that is followed until it has died away.
TEST(CEQ, ResponseIsThatOfItsClosedForm) {
    Stereo impulse(1 << 18);
    impulse.left[0] = 1.0f;
    for (const float rate : fxRates)
        for (const Setting& s : settings) {
            const Stereo out = play(runBands, {bandOf(s, rate)}, impulse, impulse.frames());
            for (double hz = 20; hz < 20001; hz *= std::pow(10, 0.25)) {
                const double p = 2 * pi * hz / double(rate), told = Told(s, double(rate)).gain(p);
                const double got = gainAt(out.left, p), tolerance = std::pow(10, 0.01 / 20) - 1;
                EXPECT_NEAR(got, told, told * tolerance + 1e-7)
                    << "type " << s.type << " at " << s.hz << " of " << rate << ", " << hz << " Hz";
            }
        }
}

/// One to four bands, in any cut, and the same bits on other machines.
TEST(CEQ, BandsInARowFollowTheFormulaInAnyCut) {
    Stereo in = fxSignal(5000);
    for (std::vector<float>* side : {&in.left, &in.right})
        for (float& x : *side) x *= 0.01f;
    std::size_t next = 0;
    for (const float rate : fxRates)
        for (const int block : {1, 2, 5, 6, 7, 64, 333, 1024})
            for (int count = 1; count <= maxEqBands; count++) {
                std::vector<EqBand> bands;
                std::vector<Told> left;
                for (int k = 0; k < count; k++) {
                    const Setting& s = settings[next++ * 5 % settingCount];
                    bands.push_back(bandOf(s, rate));
                    left.emplace_back(s, double(rate));
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
    for (const auto& [value, kept] : {std::pair{10.0f, 20.0f}, {1e9f, 20000.0f}, {nan, 20000.0f}}) {
        eq.setFrequency(value);
        EXPECT_EQ(eq.getFrequency(), kept);
    }
    EXPECT_EQ(eq.ready()->b1, eq.a1) << "peaking at 0 dB changes nothing";
    EXPECT_EQ(eq.b2, eq.a2);
    eq.setGain(100);
    EXPECT_EQ(eq.getGain(), 24.0f);
    EXPECT_EQ(eq.b0, 1.0);
    EXPECT_GT(eq.ready()->b0, 1.0);
    eq.setRate(22050); // the field keeps a frequency that is beyond half of it
    Stereo sound = fxSignal(20000);
    sound.left[3] = std::numeric_limits<float>::infinity();
    runFx(eq, sound, sound, 64);
    for (std::size_t i = 64; i < sound.left.size(); i++)
        ASSERT_LT(std::fabs(sound.left[i]), 200.0f) << "stable, and it forgets the infinite";
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
    const EqCoeffs last = eqCoeffs(eqPeaking, 4000, double(eq.gain), double(eq.q), 44100);
    EXPECT_EQ(eq.ready()->b0, last.b0);
}
