#include "SoundFixture.h"

#include "instruments/FactoryPrograms.h"

#include <numbers>

namespace {

constexpr int block = 256;
constexpr double rate = 44100;

struct Take {
    std::vector<float> left, right;
    int voicesAtEnd = 0;

    double peak(double from, double to) const {
        double most = 0;
        for (size_t i = size_t(from * rate); i < size_t(to * rate); i++)
            most = std::max({most, double(std::fabs(left[i])), double(std::fabs(right[i]))});
        return most;
    }
    /// RMS of both channels.
    double level(double from, double to) const {
        const size_t a = size_t(from * rate), b = size_t(to * rate);
        return std::hypot(rms(left, a, b), rms(right, a, b)) / std::numbers::sqrt2;
    }
};

/// Plays keys on a factory program: held for `held` seconds, recorded for `total`.
Take play(TestHost& host, int program, const std::vector<int>& keys, double held, double total,
          int velocity = 100) {
    const GraphMark mark(host.host);
    CSampler sampler(host.host);
    sampler.createChannels();
    sampler.createBuffers(block);
    sampler.listKind = listComps;
    sampler.progs.add(buildFactoryProg(host.host, &sampler, program));
    Take take;
    const int release = int(held * rate / block), blocks = int(total * rate / block) + 1;
    for (int i = 0; i < blocks; i++) {
        sampler.prepare(block);
        for (int key : keys) {
            if (i == 0) sampler.inPort()->addMidiEvent(0, asData(midiNoteOn, key, velocity));
            if (i == release) sampler.inPort()->addMidiEvent(0, asData(midiNoteOff, key, 0));
        }
        sampler.process(block);
        const COutputChannel* out = sampler.output();
        take.left.insert(take.left.end(), out->bufL, out->bufL + block);
        take.right.insert(take.right.end(), out->bufR, out->bufR + block);
    }
    for (const CVoice& v : sampler.voices) take.voicesAtEnd += v.state == CVoice::sounding;
    return take;
}

double decibels(double v) {
    return 20 * std::log10(v + 1e-9);
}

/// Power of the mix of both channels near `hz`, through a Hann window, by Goertzel's recursion.
double powerAt(const Take& t, double hz, double from, double seconds) {
    const size_t start = size_t(from * rate), count = size_t(seconds * rate);
    const double turn = 2 * std::cos(2 * std::numbers::pi * hz / rate);
    const double slow = 2 * std::cos(2 * std::numbers::pi / double(count));
    double one = 0, two = 0, window = 1, before = slow / 2; // a cosine by the same recursion
    for (size_t i = start; i < start + count; i++) {
        const double x = double(t.left[i] + t.right[i]) * (0.5 - 0.5 * window);
        const double next = x + turn * one - two;
        two = one;
        one = next;
        const double later = slow * window - before;
        before = window;
        window = later;
    }
    return one * one + two * two - turn * one * two;
}

/// Where the power around `hz` is centred, in cents off it.
double centsAround(const Take& t, double hz) {
    double sum = 0, weighted = 0;
    for (int cents = -90; cents <= 90; cents += 10) {
        const double p = powerAt(t, hz * std::pow(2, cents / 1200.0), 0.3, 1.0);
        sum += p;
        weighted += p * cents;
    }
    return weighted / sum;
}

/// How strong the partials of a note of `hz` and what lies between them are in its first and its
/// last tenths of a second: dB of all of it, -60 at least.
std::vector<double> colourOf(const Take& t, double hz) {
    constexpr int partials = 24;
    std::vector<double> powers;
    double sum = 0;
    for (double from : {0.02, 0.65})
        for (int i = 2; i <= 2 * partials + 1; i++) {
            powers.push_back(powerAt(t, hz * i / 2, from, 0.2));
            sum += powers.back();
        }
    for (double& p : powers) p = std::max(-60.0, 10 * std::log10(p / sum + 1e-12));
    return powers;
}

/// The usual difference of two colours, dB.
double apart(const std::vector<double>& a, const std::vector<double>& b) {
    double sum = 0;
    for (size_t i = 0; i < a.size(); i++) sum += (a[i] - b[i]) * (a[i] - b[i]);
    return std::sqrt(sum / double(a.size()));
}

} // namespace

/// A chord peaks at -12 to -6 dB, is as loud as its neighbours, and dies within 5 s of the keys.
/// The first program is louder, as it was given.
TEST(FactoryPrograms, AreBalancedAndEnd) {
    TestHost host(block);
    for (int p = 0; p < factoryCount; p++) {
        const Take t = play(host, p, {60, 64, 67}, 1.5, 7.0);
        const double peak = decibels(t.peak(0, 7));
        double loudest = -200;
        for (double at = 0; at < 1.2; at += 0.1)
            loudest = std::max(loudest, decibels(t.level(at, at + 0.4)));
        if (p > 0) {
            EXPECT_GT(peak, -12.5) << factoryName(p);
            EXPECT_LT(peak, -5.5) << factoryName(p);
            EXPECT_NEAR(loudest, -18, 2.5) << factoryName(p);
        }
        EXPECT_EQ(t.voicesAtEnd, 0) << factoryName(p);
        EXPECT_LT(t.peak(6.6, 6.95), t.peak(0, 2) * 1e-3) << factoryName(p);
    }
}

/// Note 69 has its power around 440 Hz or an octave beside, within a few cents: vibratos swing
/// around the note.
TEST(FactoryPrograms, AreInTune) {
    TestHost host(block);
    for (int p = 0; p < factoryCount; p++) {
        const Take t = play(host, p, {69}, 1.4, 1.5);
        double best = 0, hz = 0;
        for (double candidate : {220.0, 440.0, 880.0}) {
            double power = 0;
            for (int cents = -30; cents <= 30; cents += 10)
                power += powerAt(t, candidate * std::pow(2, cents / 1200.0), 0.3, 1.0);
            if (power > best) best = power, hz = candidate;
        }
        EXPECT_NEAR(centsAround(t, hz), 0, 6) << factoryName(p) << " at " << hz << " Hz";
    }
}

/// Each program must differ from every other in its colour: in the power of its partials, early and
/// late, and not in its loudness alone.
TEST(FactoryPrograms, AreDistinct) {
    TestHost host(block);
    std::vector<std::vector<double>> colours;
    for (int p = 0; p < factoryCount; p++) {
        colours.push_back(colourOf(play(host, p, {45}, 0.9, 1.0), 110.0));
        for (int other = 0; other < p; other++)
            EXPECT_GT(apart(colours.back(), colours[size_t(other)]), 2.0)
                << factoryName(p) << " is like " << factoryName(other);
    }
}

/// The whole keyboard at any velocity stays finite and below what a strip can take.
TEST(FactoryPrograms, HoldOnTheWholeKeyboard) {
    TestHost host(block);
    for (int p = 0; p < factoryCount; p++)
        for (int key : {0, 24, 96, 127}) {
            const Take t = play(host, p, {key}, 0.4, 0.6, key % 2 ? 127 : 1);
            for (float v : t.left) ASSERT_TRUE(std::isfinite(v)) << factoryName(p);
            EXPECT_LT(t.peak(0, 0.59), 1.2) << factoryName(p) << " key " << key;
        }
}
