#include "SoundFixture.h"

#include "instruments/FactoryPrograms.h"
#include "tools/soundtable/SoundProbe.h"

#include <numbers>
#include <set>

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
};

/// Plays keys on a factory program: held for `held` seconds, recorded for `total`; a message may
/// come before them.
Take play(TestHost& host, int program, const std::vector<int>& keys, double held, double total,
          int velocity = 100, int before = 0) {
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
        if (i == 0 && before != 0) sampler.inPort()->addMidiEvent(0, before);
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

} // namespace

/// What a musician would send back: an offset, a velocity that does nothing or only makes louder, a
/// keyboard that is louder at one end, a program beside which the next one jumps out, one that is
/// like another, a saw that is duller than one. The first program is as it was given.
TEST(FactoryPrograms, KeepTheFiguresOfTheirTable) {
    TestHost host(block);
    std::vector<soundtable::Figures> bank;
    for (int p = 0; p < factoryCount; p++) {
        const auto sounds = soundtable::playProbe(
            host.host, [&](CQV* root, CSampler* s) { return buildFactoryProg(root, s, p); });
        bank.push_back(soundtable::measure(factoryName(p), sounds));
        EXPECT_LE(bank.back().voices, 3) << factoryName(p);
    }
    soundtable::findNearest(bank);
    for (size_t p = 1; p < bank.size(); p++) {
        const soundtable::Figures& f = bank[p];
        SCOPED_TRACE(f.name);
        EXPECT_LT(f.worstDc, -35);
        EXPECT_GT(f.velocitySpan, 15);
        EXPECT_LT(f.velocitySpan, 25);
        EXPECT_GT(f.velocityColour, 3);
        EXPECT_LT(f.range, 6);
        EXPECT_NEAR(f.chordLufs, -17, 1);
        EXPECT_LT(f.chordPeak, -1);
        EXPECT_GT(f.width, -30);
        EXPECT_GT(f.nearest, 10) << f.neighbour;
    }
    // Partials of a plain sawtooth of C4: 1 / k, up to half the rate.
    double all = 0, above2k = 0, above5k = 0;
    for (int k = 1; k * 261.63 < rate / 2; k++) {
        const double power = 1.0 / k / k;
        all += power;
        if (k * 261.63 > 2000) above2k += power;
        if (k * 261.63 > 5000) above5k += power;
    }
    for (int saws : {5, 13, 15, 18, 19, 25}) {
        const soundtable::Figures& f = bank[size_t(saws)];
        EXPECT_GT(f.above2k, 10 * std::log10(above2k / all) - 3) << f.name;
        EXPECT_GT(f.above5k, 10 * std::log10(above5k / all) - 3) << f.name;
    }
}

/// The wheel, pressure, brightness, resonance and the knobs of each program change what is heard; a
/// wheel at rest, which keyboards send without being asked, does not. The pedal holds.
TEST(FactoryPrograms, FollowTheirControllers) {
    TestHost host(block);
    const GraphMark mark(host.host);
    for (int p = 0; p < factoryCount; p++) {
        SCOPED_TRACE(factoryName(p));
        const auto with = [&](int controller, int value) {
            return play(host, p, {60}, 0.3, 0.35, 100, asData(midiController, controller, value));
        };
        const Take plain = play(host, p, {60}, 0.3, 0.35);
        EXPECT_EQ(with(1, 0).left, plain.left);
        for (int controller : {1, 71, 74})
            EXPECT_NE(with(controller, 50).left, plain.left) << controller;
        const Take held = play(host, p, {60}, 0.1, 1.1, 100, asData(midiController, 64, 127));
        const Take kept = play(host, p, {60}, 1.2, 1.1);
        EXPECT_TRUE(held.left == kept.left) << "the pedal holds as the key does";
        const auto pressed = [&](int value) {
            return play(host, p, {60}, 0.3, 0.35, 100, asData(midiPressure, value, 0));
        };
        EXPECT_EQ(pressed(0).left, plain.left);
        EXPECT_EQ(pressed(50).left, with(1, 50).left);
        CSampler sampler(host.host);
        const std::unique_ptr<CSynthProg> prog(buildFactoryProg(host.host, &sampler, p));
        for (const ProgMacro& m : prog->macros) {
            EXPECT_FALSE(m.name.empty());
            const bool moves = with(m.controller, 0).left != plain.left ||
                               with(m.controller, 127).left != plain.left;
            EXPECT_TRUE(moves) << m.name.asChar();
        }
    }
}

/// What is not plucked or struck begins without a click: no step of the first samples is a seventh
/// of the peak.
TEST(FactoryPrograms, BeginSoftly) {
    TestHost host(block);
    const std::set<std::string> struck = {"80's Bass", "Digital pluck", "Digital", "Klang",
                                          "Arpeggio"};
    for (int p = 0; p < factoryCount; p++) {
        if (struck.contains(factoryName(p))) continue;
        const Take t = play(host, p, {60}, 0.3, 0.35);
        float last = 0.0f, step = 0.0f;
        for (size_t i = 0; i < 4; i++) {
            step = std::max(step, std::fabs(t.left[i] - last));
            last = t.left[i];
        }
        EXPECT_LT(double(step), t.peak(0, 0.3) / 7) << factoryName(p);
    }
}

/// Programs die within 5 s of the keys.
TEST(FactoryPrograms, End) {
    TestHost host(block);
    for (int p = 0; p < factoryCount; p++) {
        const Take t = play(host, p, {60, 64, 67}, 1.5, 7.0);
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
