#include "common/fx/CEQ.h"
#include "FxFixture.h"

#include <atomic>
#include <complex>
#include <limits>
#include <thread>

namespace {

constexpr double pi = 3.14159265358979323846;

/// The table of the seven forms, not divided: b0, b1, b2, a0, a1, a2.
struct Forms {
    double b[3], a[3];

    Forms(int type, double hz, double db, double q, double rate) {
        const double A = std::pow(10, db / 40), S = 2 * std::sqrt(A);
        const double w = 2 * pi * std::min(hz, 0.49 * rate) / rate, c = std::cos(w);
        const double al = std::sin(w) / 2 / q;
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
        std::copy_n(table[type], 3, b);
        std::copy_n(table[type] + 3, 3, a);
    }
    /// Power of one of the polynomials by its closed form, `p` radians a frame.
    static double power(const double* v, double p) {
        const double q2 = std::pow(std::sin(p / 2), 2);
        return std::pow(v[0] + v[1] + v[2], 2) -
               4 * (v[0] * v[1] + 4 * v[0] * v[2] + v[1] * v[2]) * q2 + 16 * v[0] * v[2] * q2 * q2;
    }
    double gain(double p) const { return std::sqrt(power(b, p) / power(a, p)); }
};

struct Setting {
    int type;
    float hz, db, q;
};

const Setting settings[] = {{0, 100, 6, 0.1f}, {0, 20, -12, 0.71f},  {1, 2000, -9, 1},
                            {1, 20, 24, 3},    {2, 10000, 12, 0.7f}, {2, 20000, -24, 0.1f},
                            {3, 440, 9, 2},    {3, 20000, 0, 12},    {4, 50, 0, 0.71f},
                            {5, 1000, 0, 5},   {6, 15000, 0, 0.5f},  {6, 60, 0, 12}};

void set(CEQ& eq, const Setting& s, float rate) {
    eq.setRate(rate);
    eq.setFilterType(s.type);
    eq.setFrequency(s.hz);
    eq.setGain(s.db);
    eq.setQ(s.q);
}

std::string nameOf(const Setting& s, float rate) {
    return "type " + std::to_string(s.type) + " at " + std::to_string(s.hz) + " of " +
           std::to_string(rate);
}

/// One side of one band, a frame at a time.
struct Reference {
    Forms f;
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;

    double run(double x) {
        const double y =
            (f.b[0] * x + f.b[1] * x1 + f.b[2] * x2 - f.a[1] * y1 - f.a[2] * y2) / f.a[0];
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        return y;
    }
};

/// The response to one frame of 1 of all bands, long enough to have died away.
Stereo impulseResponse(EqBand* const* bands, int count) {
    Stereo out(1 << 18);
    out.left[0] = out.right[0] = 1.0f;
    runBands(bands, count, out.left.data(), out.right.data(), out.frames());
    return out;
}

using RunBands = decltype(runBands);

void runRow(RunBands* run, EqBand* const* row, int count, Stereo& sound, int block) {
    for (int at = 0; at < sound.frames(); at += block) {
        const std::size_t o = std::size_t(at);
        run(row, count, &sound.left[o], &sound.right[o], std::min(block, sound.frames() - at));
    }
}

std::vector<EqBand> copyOf(EqBand* const* row, int count) {
    std::vector<EqBand> bands;
    for (int k = 0; k < count; k++) bands.push_back(*row[k]);
    return bands;
}

double gainAt(const std::vector<float>& impulse, double p) {
    const std::complex<double> turn = std::polar(1.0, -p);
    std::complex<double> sum = 0, phase = 1;
    for (float x : impulse) {
        sum += double(x) * phase;
        phase *= turn;
    }
    return std::abs(sum);
}

} // namespace

/// The measured response of each form, from 20 Hz to 20 kHz.
TEST(CEQ, ResponseIsThatOfItsClosedForm) {
    for (const float rate : fxRates)
        for (const Setting& s : settings) {
            CEQ eq(s.type);
            set(eq, s, rate);
            EqBand* band = eq.ready();
            const Stereo impulse = impulseResponse(&band, 1);
            const Forms forms(s.type, double(s.hz), double(s.db), double(s.q), double(rate));
            for (double hz = 20; hz < 20001; hz *= std::pow(10, 0.25)) {
                const double p = 2 * pi * hz / double(rate), told = forms.gain(p);
                const double got = gainAt(impulse.left, p);
                if (told < 1e-4)
                    EXPECT_NEAR(got, told, 1e-6) << nameOf(s, rate);
                else
                    EXPECT_NEAR(20 * std::log10(got / told), 0, 0.01)
                        << nameOf(s, rate) << ", " << hz;
            }
        }
}

/// Rows of one to four bands, in any cut, in place or not.
TEST(CEQ, BandsInARowFollowTheFormulaInAnyCut) {
    for (const float rate : fxRates)
        for (const int block : {1, 2, 5, 6, 7, 64, 333, 1024})
            for (int count = 1; count <= maxEqBands; count++) {
                CEQ eqs[maxEqBands] = {CEQ(1), CEQ(1), CEQ(1), CEQ(1)};
                EqBand* row[maxEqBands];
                std::vector<Reference> left, right;
                for (int k = 0; k < count; k++) {
                    // Another four of the settings for each length.
                    const Setting& s = settings[std::size_t(count * 3 + k * 4 + block) % 12];
                    set(eqs[k], s, rate);
                    row[k] = eqs[k].ready();
                    const Forms f(s.type, double(s.hz), double(s.db), double(s.q), double(rate));
                    left.push_back({f});
                    right.push_back({f});
                }
                Stereo in = fxSignal(5000), out = in;
                for (std::vector<float>* v : {&in.left, &in.right, &out.left, &out.right})
                    for (float& x : *v) x *= 0.01f;
                const std::vector<EqBand> start = copyOf(row, count);
                Stereo pairs = out;
                runRow(runBandsInPairs, row, count, pairs, block);
                for (int k = 0; k < count; k++) *row[k] = start[std::size_t(k)];
                runRow(runBands, row, count, out, block);
                EXPECT_EQ(out.left, pairs.left) << "on another machine";
                EXPECT_EQ(out.right, pairs.right);
                const auto both = [&](double inL, double inR, double& outL, double& outR) {
                    for (int k = 0; k < count; k++) {
                        inL = left[std::size_t(k)].run(inL);
                        inR = right[std::size_t(k)].run(inR);
                    }
                    outL = inL;
                    outR = inR;
                };
                expectLike(in, out, both, 1e-5,
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
    EXPECT_EQ(eq.b0, 1.0);
    eq.setGain(100);
    EXPECT_EQ(eq.getGain(), 24.0f);
    EXPECT_EQ(eq.b0, 1.0);
    EXPECT_GT(eq.ready()->b0, 1.0);
    eq.setFilterType(9);
    EXPECT_EQ(eq.ready()->b0, 0.0) << "an unknown form is silent";
}

TEST(CEQ, BandBeyondHalfTheRateStaysStable) {
    CEQ eq(eqHighShelf);
    set(eq, {eqHighShelf, 20000, 24, 12}, 22050);
    EXPECT_EQ(eq.getFrequency(), 20000.0f);
    Stereo sound = fxSignal(20000);
    runFx(eq, sound, sound, 64);
    for (float x : sound.left) ASSERT_LT(std::fabs(x), 200.0f);
}

TEST(CEQ, OneSampleThatIsNoNumberDoesNotSilenceItForEver) {
    CEQ eq(eqLowPass);
    Stereo sound = fxSignal(128);
    sound.left[3] = std::numeric_limits<float>::infinity();
    runFx(eq, sound, sound, 64);
    for (int i = 64; i < 128; i++) ASSERT_TRUE(std::isfinite(sound.left[std::size_t(i)])) << i;
}

/// Two threads set, a third one plays: it must never meet half a filter, and end with the last one.
TEST(CEQ, FilterIsNeverSeenHalf) {
    CEQ eq(eqPeaking);
    std::atomic<int> setting{2};
    const auto setter = [&](float db) {
        for (int i = 0; i < 200000; i++) eq.setGain(i % 2 ? db : -db);
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
    const double al = std::sin(2 * pi * 4000 / 44100) / 0.2, A = std::pow(10, double(eq.gain) / 40);
    EXPECT_NEAR(eq.ready()->b0, (1 + al * A) / (1 + al / A), 1e-7);
}
