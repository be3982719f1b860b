#include "common/fx/AmpModel.h"
#include "support/RtTrap.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <vector>

namespace {

std::atomic<bool> processing{false};

using Signal = std::vector<float>;

struct Amp {
    void* handle;

    Amp(int type, double rate) : handle(Overloud_create(type)) {
        Overloud_setfrequency(handle, float(rate));
    }
    ~Amp() { Overloud_destroy(handle); }
    Amp(const Amp&) = delete;
    void set(int index, float value) { Overloud_setparameter(handle, index, value); }
    /// Continues with `in` on both sides; the left output.
    Signal run(const Signal& in) {
        Signal left(in.size()), right(in.size());
        const float* ins[] = {in.data(), in.data()};
        float* outs[] = {left.data(), right.data()};
        processing = true;
        Overloud_process(handle, ins, outs, 2, int(in.size()));
        processing = false;
        return left;
    }
};

Signal sine(double hz, double height, double rate, int frames) {
    Signal x(static_cast<std::size_t>(frames));
    for (int i = 0; i < frames; i++)
        x[std::size_t(i)] = float(height * std::sin(2 * M_PI * hz * i / rate));
    return x;
}

/// Height of the partial of `cycles` whole cycles in the last `n` frames.
double partial(const Signal& x, int n, long cycles) {
    std::complex<double> sum = 0.0;
    for (long i = 0; i < n; i++)
        sum += double(x[x.size() - std::size_t(n - i)]) *
               std::polar(1.0, -2 * M_PI * double(cycles * i % n) / n);
    return std::abs(sum) * 2 / n;
}

double toDb(double ratio) {
    return 20 * std::log10(ratio);
}

constexpr int none = -1;
constexpr int driveOf[] = {none, crunchDrive, dirtyDrive};
constexpr int parametersOf[] = {4, 5, 6};
constexpr double faint = 1e-5; ///< too low to bend any stage

/// Gain in dB for a faint sine with one parameter set.
double gainDb(int type, int index, float value, double hz) {
    Amp amp(type, 48000);
    if (index != none) amp.set(index, value);
    const Signal out = amp.run(sine(hz, faint, 48000, 24000));
    return toDb(partial(out, 9600, std::lround(hz / 5)) / faint);
}

/// Level in dB of the partials 1 to 3 of a sine of 500 Hz.
std::vector<double> partialsDb(int type, double inDb) {
    const Signal out = Amp(type, 48000).run(sine(500, std::pow(10, inDb / 20), 48000, 48000));
    return {toDb(partial(out, 9600, 100)), toDb(partial(out, 9600, 200)),
            toDb(partial(out, 9600, 300))};
}

} // namespace

bool insideCallback() {
    return processing;
}

/// 5 kHz at full scale and full drive. Every partial and every alias of it falls on a whole bin.
TEST(AmpModel, KeepsAliasesBelow60dB) {
    for (int type = 0; type < ampTypes; type++)
        for (double rate : {44100.0, 48000.0, 96000.0})
            for (double height : {1.0, 0.3}) {
                Amp amp(type, rate);
                if (driveOf[type] != none) amp.set(driveOf[type], 1.0f);
                const int n = int(rate / 50), fifth = 100;
                const Signal out = amp.run(sine(5000, height, rate, int(rate / 2)));
                double strongest = 0.0, worst = 0.0;
                for (int k = 0; k <= n / 2; k++) {
                    double& most = k % fifth == 0 && k > 0 ? strongest : worst;
                    most = std::max(most, partial(out, n, k));
                }
                EXPECT_GT(strongest, 1e-3);
                EXPECT_LT(toDb(worst / strongest), -60.0) << type << " at " << rate;
            }
}

/// How much more comes out with a knob at 1 than at 0 where it should act, and how little it
/// matters elsewhere.
TEST(AmpModel, KnobsDoWhatTheyAreCalled) {
    struct Case {
        int type, index;
        double hz, least, most, elsewhereHz;
    };
    const Case cases[] = {
        {ampClean, cleanBass, 100, 6, 20, 5000},      {ampClean, cleanMid, 600, 5, 20, 80},
        {ampClean, cleanTreble, 5000, 6, 25, 80},     {ampCrunch, crunchDrive, 500, 20, 40, 0},
        {ampCrunch, crunchBass, 100, 6, 20, 5000},    {ampCrunch, crunchTreble, 5000, 6, 25, 80},
        {ampCrunch, crunchTopCut, 5000, -20, -6, 80}, {ampDirty, dirtyDrive, 500, 20, 40, 0},
        {ampDirty, dirtyBass, 100, 6, 20, 5000},      {ampDirty, dirtyMid, 600, 5, 20, 80},
        {ampDirty, dirtyTreble, 5000, 6, 25, 80},     {ampDirty, dirtyPresence, 5000, 6, 12, 80}};
    for (const Case& c : cases) {
        const auto range = [&](double hz) {
            return gainDb(c.type, c.index, 1, hz) - gainDb(c.type, c.index, 0, hz);
        };
        const double there = range(c.hz);
        EXPECT_GT(there, c.least) << c.type << ", " << c.index;
        EXPECT_LT(there, c.most) << c.type << ", " << c.index;
        if (c.elsewhereHz > 0) {
            EXPECT_LT(std::fabs(range(c.elsewhereHz)), 1.5) << c.type << ", " << c.index;
        }
    }
    for (int type = 0; type < ampTypes; type++) { // volume is squared, and last
        const int volume = parametersOf[type] - 1;
        EXPECT_NEAR(gainDb(type, volume, 1, 500) - gainDb(type, volume, 0.5f, 500), toDb(4), 0.01);
        EXPECT_LT(gainDb(type, volume, 0, 500), -200);
        const double body = gainDb(type, none, 0, 3000); // the cabinet has no top nor subsonics
        EXPECT_LT(gainDb(type, none, 0, 8000), body - 18) << type;
        EXPECT_LT(gainDb(type, none, 0, 12000), body - 40) << type;
        EXPECT_LT(gainDb(type, none, 0, 20), gainDb(type, none, 0, 100) - 20) << type;
    }
}

/// A clean amplifier follows the strings, a high-gain one stays where it is, crunch is between and
/// cleans up with them. Tubes bend to one side first, so there are even partials.
TEST(AmpModel, BendsByItsKind) {
    struct Case {
        int type;
        double low, high, least, most, thirdLow, thirdHigh; ///< inputs, rise, partial 3 in each
    };
    constexpr double square = -9.5; // partial 3 of a square wave
    const Case cases[] = {{ampClean, -30, -10, 17, 20, -50, square - 20},
                          {ampCrunch, -40, -10, 5, 20, -30, 0},
                          {ampDirty, -30, -10, -1, 2, 0, 0}};
    for (const Case& c : cases) {
        const auto low = partialsDb(c.type, c.low), high = partialsDb(c.type, c.high);
        EXPECT_GT(high[0] - low[0], c.least) << c.type;
        EXPECT_LT(high[0] - low[0], c.most) << c.type;
        EXPECT_LT(low[2] - low[0], c.thirdLow) << c.type;
        EXPECT_LT(high[2] - high[0], c.thirdHigh) << c.type;
        EXPECT_GT(high[2] - high[0], c.type == ampClean ? -100 : square) << c.type;
        EXPECT_GT(high[1] - high[0], -40) << c.type;
        EXPECT_LT(low[1] - low[0], c.type == ampClean ? -34 : 0) << "under 2 % when clean";
    }
}

/// A chord that rings out, high partials first, at -20 dB comes out about as loud by all three, and
/// without an offset.
TEST(AmpModel, ChannelsAreEquallyLoud) {
    Signal chord(88200);
    for (double hz : {82.4, 123.5, 164.8, 246.9})
        for (int k = 1; k < 12; k++)
            for (std::size_t i = 0; i < chord.size(); i++) {
                const double t = double(i) / 44100;
                chord[i] += float(std::sin(2 * M_PI * k * hz * t) / k * std::exp(-t * k));
            }
    const auto rms = [](const Signal& x) {
        return std::sqrt(std::inner_product(x.begin(), x.end(), x.begin(), 0.0) / double(x.size()));
    };
    const double scale = 0.1 / rms(chord);
    for (float& v : chord) v *= float(scale);
    for (int type = 0; type < ampTypes; type++) {
        const Signal out = Amp(type, 44100).run(chord);
        EXPECT_NEAR(toDb(rms(out)), -20, 4) << type;
        EXPECT_LT(std::fabs(std::accumulate(out.begin(), out.end(), 0.0)), 1e-4 * 88200) << type;
    }
}

/// Both sides by themselves, in place or not, one side alone, in any cut, while the knobs move: the
/// same bits. Nothing allocates.
TEST(AmpModel, CutsAndSidesChangeNothing) {
    constexpr int frames = 3000, movedAt = 100;
    const Signal a = sine(220, 0.5, 48000, frames), b = sine(333, 0.1, 48000, frames);
    const auto run = [](int type, double rate, int block, Signal left, Signal right, int channels) {
        Amp amp(type, rate);
        for (int at = 0, count = movedAt; at < frames; at += count, count = block) {
            count = std::min(count, frames - at);
            const float* in[] = {&left[std::size_t(at)], &right[std::size_t(at)]};
            float* out[] = {&left[std::size_t(at)], &right[std::size_t(at)]};
            processing = true;
            Overloud_process(amp.handle, in, out, channels, count);
            processing = false;
            if (at == 0)
                for (int i = 0; i < parametersOf[type]; i++) amp.set(i, 0.9f);
        }
        return std::pair(left, right);
    };
    rtReset();
    for (int type = 0; type < ampTypes; type++)
        for (double rate : {44100.0, 96000.0}) {
            const auto [left, right] = run(type, rate, frames, a, b, 2);
            EXPECT_EQ(run(type, rate, frames, b, a, 2).first, right) << type;
            EXPECT_EQ(run(type, rate, frames, a, b, 1).first, left) << type;
            for (int block : {1, 7, 64, 333})
                EXPECT_EQ(run(type, rate, block, a, b, 2), std::pair(left, right))
                    << type << " in " << block;
        }
    EXPECT_EQ(rtViolations(), 0);
}

/// What no guitar sends leaves the output finite, what is no number counts as silence, and after a
/// while of silence there is nothing, not even numbers too small to be fast.
TEST(AmpModel, SurvivesAnythingAndFallsSilent) {
    constexpr float inf = std::numeric_limits<float>::infinity();
    for (int type = 0; type < ampTypes; type++)
        for (double rate : {44100.0, 192000.0, 0.0, double(inf)}) {
            Amp amp(type, rate), other(type, rate);
            Signal bad = sine(440, 0.5, 44100, 2000), silenced = bad;
            for (std::size_t i = 7; i < 1000; i += 7) {
                bad[i] = i % 3 == 0 ? inf : i % 3 == 1 ? -inf : std::nanf("");
                silenced[i] = 0.0f;
            }
            EXPECT_EQ(amp.run(bad), other.run(silenced)) << type;
            for (float v : amp.run({3e38f, -3e38f, 1e-40f, 3e38f, 3e38f}))
                EXPECT_TRUE(std::isfinite(v));
            amp.run(Signal(384000));
            for (float v : amp.run(Signal(100))) ASSERT_EQ(v, 0.0f) << type << " at " << rate;
        }
}

/// A knob that is thrown from end to end leaves no step in a slow sine: the second difference stays
/// below a hundredth of the height, where a step of the gain from 0 to 1 would be 1 high.
TEST(AmpModel, KnobsMakeNoSteps) {
    for (int type = 0; type < ampTypes; type++)
        for (int index = 0; index < parametersOf[type]; index++) {
            Amp amp(type, 44100);
            const Signal x = sine(100, faint, 44100, 22050);
            Signal out;
            for (float end : {0.0f, 1.0f, 0.0f}) {
                amp.set(index, end);
                const Signal more = amp.run(x);
                out.insert(out.end(), more.begin(), more.end());
            }
            float height = 0.0f, bend = 0.0f;
            for (std::size_t i = 11025; i + 1 < out.size(); i++) {
                height = std::max(height, std::fabs(out[i]));
                bend = std::max(bend, std::fabs(out[i + 1] - 2.0f * out[i] + out[i - 1]));
            }
            EXPECT_LT(bend, height * 0.01f) << type << ", " << index;
        }
}

TEST(AmpModel, RefusesWhatItLacks) {
    EXPECT_EQ(Overloud_create(ampTypes), nullptr);
    for (int type = 0; type < ampTypes; type++) {
        Amp amp(type, 44100);
        for (int index : {-1, parametersOf[type], 1 << 30}) amp.set(index, 0.7f);
        EXPECT_EQ(Overloud_getparameter(amp.handle, parametersOf[type]), 0.0f);
        for (auto [given, kept] : {std::pair(0.25f, 0.25f), {2, 1}, {-1, 0}, {std::nanf(""), 0}}) {
            amp.set(1, given);
            EXPECT_EQ(Overloud_getparameter(amp.handle, 1), kept);
        }
    }
}
