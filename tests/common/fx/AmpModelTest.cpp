#include "common/fx/AmpModel.h"

#include "FxFixture.h"
#include "PlainAmp.h"
#include "support/RtTrap.h"

#include <algorithm>
#include <atomic>
#include <complex>
#include <limits>
#include <numeric>

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
    /// In place, from frame `at` on.
    void run(Stereo& x, int at, int frames, int channels = 2) {
        float* sides[] = {&x.left[size_t(at)], &x.right[size_t(at)]};
        const float* in[] = {sides[0], sides[1]};
        processing = true;
        Overloud_process(handle, in, sides, channels, frames);
        processing = false;
    }
    /// Continues with `in` on both sides; the left output.
    Signal run(const Signal& in) {
        Stereo both;
        both.left = both.right = in;
        run(both, 0, both.frames());
        return both.left;
    }
};

Signal sine(double hz, double height, double rate, int frames) {
    Signal x(static_cast<size_t>(frames));
    for (int i = 0; i < frames; i++)
        x[size_t(i)] = float(height * std::sin(2 * M_PI * hz * i / rate));
    return x;
}

/// Height of the partial of `cycles` whole cycles in the last `n` frames.
double partial(const Signal& x, int n, long cycles) {
    std::complex<double> sum = 0.0;
    for (long i = 0; i < n; i++)
        sum += double(x[x.size() - size_t(n - i)]) *
               std::polar(1.0, -2 * M_PI * double(cycles * i % n) / n);
    return std::abs(sum) * 2 / n;
}

double toDb(double ratio) {
    return 20 * std::log10(ratio);
}

constexpr int none = -1;
constexpr int parametersOf[] = {4, 5, 6};
constexpr double faint = 1e-5; ///< too low to bend any stage

/// Gain in dB for a faint sine with one parameter set.
double gainDb(int type, int index, float value, double hz) {
    Amp amp(type, 48000);
    if (index != none) amp.set(index, value);
    const Signal out = amp.run(sine(hz, faint, 48000, 24000));
    return toDb(partial(out, 9600, std::lround(hz / 5)) / faint);
}

} // namespace

bool insideCallback() {
    return processing;
}

/// Against the plain form in double. What the first stage gets rounded, the gain behind it makes
/// larger.
TEST(AmpModel, FollowsItsFormulas) {
    for (float rate : fxRates)
        for (int type = 0; type < ampTypes; type++) {
            const Stereo in = fxSignal(12000);
            Stereo out = in;
            Amp(type, double(rate)).run(out, 0, in.frames());
            PlainAmp<double> left(ampVoicings[type], double(rate)), right = left;
            const auto both = [&](double inL, double inR, double& outL, double& outR) {
                outL = double(left.next(float(inL)));
                outR = double(right.next(float(inR)));
            };
            expectLike(in, out, both, type == ampDirty ? 1e-4 : 1e-5, std::to_string(type));
        }
}

/// 5 kHz at full scale and full drive. Every partial and every alias of it falls on a whole bin.
TEST(AmpModel, KeepsAliasesBelow60dB) {
    for (double rate : {44100.0, 96000.0}) {
        Amp amp(ampDirty, rate);
        amp.set(dirtyDrive, 1.0f);
        const int n = int(rate / 50), fifth = 100;
        const Signal out = amp.run(sine(5000, 1.0, rate, int(rate / 2)));
        double strongest = 1e-3, worst = 0.0;
        for (int k = 0; k <= n / 2; k++) {
            double& most = k % fifth == 0 && k > 0 ? strongest : worst;
            most = std::max(most, partial(out, n, k));
        }
        EXPECT_LT(toDb(worst / strongest), -60.0) << rate;
    }
}

/// How much more comes out with a knob at 1 than at 0 where it should act.
TEST(AmpModel, KnobsDoWhatTheyAreCalled) {
    const struct {
        int type, index;
        double hz, least, most;
    } cases[] = {{ampClean, cleanBass, 100, 6, 20},        {ampClean, cleanMid, 600, 5, 20},
                 {ampClean, cleanTreble, 5000, 6, 25},     {ampCrunch, crunchDrive, 500, 20, 40},
                 {ampCrunch, crunchBass, 100, 6, 20},      {ampCrunch, crunchTreble, 5000, 6, 25},
                 {ampCrunch, crunchTopCut, 5000, -20, -6}, {ampDirty, dirtyDrive, 500, 20, 40},
                 {ampDirty, dirtyBass, 100, 6, 20},        {ampDirty, dirtyMid, 600, 5, 20},
                 {ampDirty, dirtyTreble, 5000, 6, 25},     {ampDirty, dirtyPresence, 5000, 6, 12}};
    for (const auto& c : cases) {
        const double range = gainDb(c.type, c.index, 1, c.hz) - gainDb(c.type, c.index, 0, c.hz);
        EXPECT_GT(range, c.least) << c.type << ", " << c.index;
        EXPECT_LT(range, c.most) << c.type << ", " << c.index;
    }
    for (int type = 0; type < ampTypes; type++) { // volume is squared, and last
        const int volume = parametersOf[type] - 1;
        EXPECT_NEAR(gainDb(type, volume, 1, 500) - gainDb(type, volume, 0.5f, 500), toDb(4), 0.01);
        const double body = gainDb(type, none, 0, 3000); // the cabinet has no top nor subsonics
        EXPECT_LT(gainDb(type, none, 0, 8000), body - 18) << type;
        EXPECT_LT(gainDb(type, none, 0, 20), gainDb(type, none, 0, 100) - 20) << type;
    }
}

/// A chord that rings out, high partials first, at -20 dB comes out about as loud by all three.
TEST(AmpModel, ChannelsAreEquallyLoud) {
    Signal chord(88200);
    for (double hz : {82.4, 123.5, 164.8, 246.9})
        for (int k = 1; k < 12; k++)
            for (size_t i = 0; i < chord.size(); i++) {
                const double t = double(i) / 44100;
                chord[i] += float(std::sin(2 * M_PI * k * hz * t) / k * std::exp(-t * k));
            }
    const auto levelOf = [](const Signal& x) {
        return toDb(std::sqrt(std::inner_product(x.begin(), x.end(), x.begin(), 0.0) / 88200));
    };
    const float scale = float(std::pow(10, (-20 - levelOf(chord)) / 20));
    for (float& v : chord) v *= scale;
    for (int type = 0; type < ampTypes; type++)
        EXPECT_NEAR(levelOf(Amp(type, 44100).run(chord)), -20, 4) << type;
}

/// Both sides by themselves, one side alone, in any cut, while the knobs move: the same bits.
/// Nothing allocates.
TEST(AmpModel, CutsAndSidesChangeNothing) {
    constexpr int frames = 3000, movedAt = 100;
    Stereo in, turned;
    in.left = turned.right = sine(220, 0.5, 48000, frames);
    in.right = turned.left = sine(333, 0.1, 48000, frames);
    const auto run = [](int type, double rate, int block, Stereo x, int channels = 2) {
        Amp amp(type, rate);
        for (int at = 0, count = movedAt; at < frames; at += count, count = block) {
            count = std::min(count, frames - at);
            amp.run(x, at, count, channels);
            for (int i = 0; at == 0 && i < parametersOf[type]; i++) amp.set(i, 0.9f);
        }
        return x;
    };
    rtReset();
    for (int type = 0; type < ampTypes; type++)
        for (double rate : {44100.0, 96000.0}) {
            const Stereo whole = run(type, rate, frames, in);
            EXPECT_EQ(run(type, rate, frames, turned).left, whole.right) << type;
            EXPECT_EQ(run(type, rate, frames, in, 1).left, whole.left) << type;
            for (int block : {1, 7, 333})
                expectNear(run(type, rate, block, in), whole, 0.0, std::to_string(block));
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
            for (size_t i = 7; i < 1000; i += 7) {
                bad[i] = i % 3 == 0 ? inf : i % 3 == 1 ? -inf : std::nanf("");
                silenced[i] = 0.0f;
            }
            EXPECT_EQ(amp.run(bad), other.run(silenced)) << type;
            for (float v : amp.run({3e38f, -3e38f, 1e-40f, 3e38f, 3e38f}))
                EXPECT_TRUE(std::isfinite(v));
            amp.run(Signal(384000));
            EXPECT_EQ(amp.run(Signal(100)), Signal(100)) << type << " at " << rate;
        }
}

/// A knob that is thrown from end to end leaves no step in a slow sine: the second difference stays
/// below a hundredth of the height, where a step of the gain from 0 to 1 would be 1 high.
TEST(AmpModel, KnobsMakeNoSteps) {
    for (int type = 0; type < ampTypes; type++)
        for (int index = 0; index < parametersOf[type]; index++) {
            Amp amp(type, 44100);
            Stereo sound(66150);
            sound.left = sine(100, faint, 44100, 66150);
            for (int part : {0, 1, 2}) {
                amp.set(index, float(part % 2));
                amp.run(sound, part * 22050, 22050);
            }
            const Signal& out = sound.left;
            float height = 0.0f, bend = 0.0f;
            for (size_t i = 11025; i + 1 < out.size(); i++) {
                height = std::max(height, std::fabs(out[i]));
                bend = std::max(bend, std::fabs(out[i + 1] - 2.0f * out[i] + out[i - 1]));
            }
            EXPECT_LT(bend, height * 0.01f) << type << ", " << index;
        }
}
