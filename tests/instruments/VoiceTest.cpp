#include "SoundFixture.h"

#include <numbers>

namespace {

struct Stereo {
    std::vector<float> left, right;
};

/// What the voices of a chord give, all at once or one after the other, in calls of odd lengths;
/// the keys are let go on the way.
Stereo renderChord(SoundBench& b, CSound* s, const std::vector<int>& keys, bool together) {
    constexpr int frames = 5000, held = 3000, calls[] = {1024, 300, 1, 64};
    std::vector<CVoice*> voices;
    for (int key : keys) {
        CVoice* v = &b.sampler.voices[voices.size()];
        *v = CVoice();
        b.play(s, key, 60 + 7 * int(voices.size()));
        voices.push_back(v);
    }
    Stereo out{std::vector<float>(frames), std::vector<float>(frames)};
    for (int at = 0, k = 0, n = 0; at < frames; at += n) {
        n = std::min(calls[k++ % 4], (at < held ? held : frames) - at);
        if (at == held)
            for (int key : keys) b.event(asData(midiNoteOff, key, 0));
        if (together)
            s->processVoices(voices.data(), int(voices.size()), &out.left[at], &out.right[at], n);
        else
            for (CVoice* v : voices)
                if (v->state == CVoice::sounding) s->process(&out.left[at], &out.right[at], v, n);
    }
    return out;
}

/// Voices side by side sound as they do one after the other, however many there are.
void expectLanesAgree(SoundBench& b, CSound* s, const char* name) {
    const std::vector<int> keys = {45, 57, 60, 64, 69, 71, 76, 48, 81};
    for (long n : {1, 2, 3, 5, 9}) {
        const std::vector<int> chord(keys.begin(), keys.begin() + n);
        const Stereo lanes = renderChord(b, s, chord, true);
        const Stereo plain = renderChord(b, s, chord, false);
        for (size_t i = 0; i < lanes.left.size(); i++) {
            ASSERT_NEAR(lanes.left[i], plain.left[i], 1e-5f * float(n)) << name << ' ' << n;
            ASSERT_NEAR(lanes.right[i], plain.right[i], 1e-5f * float(n)) << name << ' ' << n;
        }
        EXPECT_GT(rms(plain.left, 0, plain.left.size()), 0.002) << name << " is silent";
    }
}

struct OscCase {
    const char* name;
    void (*set)(COSCSound&);
};

const OscCase operatorCases[] = {
    {"one lane", [](COSCSound&) {}},
    {"one lane, inverted",
     [](COSCSound& s) {
         s.oscInv = -1.0f;
         s.width = 0.75f;
         s.pan = 0.25f;
     }},
    {"both operators",
     [](COSCSound& s) {
         s.detune = 0.5f;
         s.width = 0.25f;
         s.pan = -0.5f;
         s.phase = 0.3f;
         s.phase2 = 0.5f;
         s.phaseMod = 0.5f;
         s.pmMul = 2;
         s.feed1 = 0.25f;
         s.feed2 = 0.5f;
         s.coarse2 = 7.0f;
         s.coarse = 12.0f;
         s.fine = 0.25f;
         s.bendRange = 2;
         s.layer->prog->bend[0] = -0.5f;
     }},
    {"shapers, inverted pair and distortion",
     [](COSCSound& s) {
         s.phaseMod = 0.25f;
         s.oscRing = 0.5f;
         s.modRing = 0.25f;
         s.oscInv = -1.0f;
         s.width = 0.5f;
         s.detune = 0.25f;
         s.dist = 1;
         s.volume = 0.75f;
     }},
};

void modulate(CSound& s) {
    s.filter = filterBand;
    s.cutoff = 0.5f;
    s.q = 0.5f;
    s.envelope[0]->attack = 0.1f;
    s.envelope[0]->decay = 0.12f;
    s.envelope[0]->sustain = 0.5f;
    s.envelope[0]->dc = 0.25f;
    s.envelope[0]->release = 0.15f;
    s.envelope[1]->attack = 0.06f;
    s.envelope[1]->sustain = 0.25f;
    s.envelope[2]->attack = 0.08f;
    s.envelope[2]->setSlot(1, targetPan, 0.5f);
    s.lfo[0]->setSlot(0, targetPitch, 0.25f);
    s.lfo[1]->wave = lfoSaw;
    s.lfo[1]->delay = 20;
    s.lfo[1]->setSlot(0, targetVolume, 0.5f);
    s.lfo[2]->wave = lfoPulse;
    s.lfo[2]->rate = 30.0f;
    s.lfo[2]->setSlot(0, targetPan, 0.5f);
    s.vel->setSlot(2, targetQ, 0.5f);
}

/// One side of a sound: two operators, in double and by their formulas.
struct Side {
    double car = 0.0, carLast = 0.0, mod = 0.0, modLast = 0.0;

    static double sine(double cycles) {
        const auto place = int64_t(cycles * 65535) & 0xFFFF;
        return std::sin(2 * std::numbers::pi * double(place) / 65536);
    }
    static double square(float v) { return double(v) * double(v); }

    /// The next frame; `note` in semitones, at a rate of `rate`.
    double next(const COSCSound& s, double note, double rate) {
        const auto step = [rate](double n) { return 440 * std::pow(2, (n - 69) / 12) / rate; };
        const double modRing = double(s.modRing), oscRing = double(s.oscRing);
        modLast = sine(square(s.feed2) * 0.2 * modLast + mod);
        const double m = modLast * (modRing - 1 + modRing * modLast);
        const double c =
            sine(s.pmMul * square(s.phaseMod) * m + square(s.feed1) * 0.2 * carLast + car);
        carLast = c * (oscRing - 1 + oscRing * c);
        mod += step(note + double(s.coarse2));
        car += step(note);
        return carLast;
    }
};

/// What comes out of a sound with the filter open, whose low tap is the input, one frame later.
void expectFormula(SoundBench& b, COSCSound* s, int note, int frames, double tolerance,
                   const char* name) {
    s->cutoff = 1.0f;
    const double rate = double(b.host.host->rate);
    std::vector<float> right;
    const std::vector<float> left = b.render(b.play(s, note), frames, &right);
    Side sides[2];
    sides[1].car = double(s->phase) * 0.5;
    sides[1].mod = (double(s->phase) + double(s->phase2)) * 0.5;
    const double gain = std::pow(0.6 * double(s->volume), 2), pan = double(s->pan);
    const double gainL = gain * (pan >= 0 ? 1 - pan : 1 - pan / 2);
    const double gainR = gain * (pan >= 0 ? 1 + pan / 2 : 1 + pan);
    const double middle =
        note + double(s->coarse) + double(s->fine) + double(b.prog->bend[0]) * s->bendRange;
    const double apart = Side::square(s->detune) / 2, w = double(s->width);
    for (size_t i = 0; i + 1 < size_t(frames); i++) {
        const double l = sides[0].next(*s, middle + apart, rate);
        const double r = double(s->oscInv) * sides[1].next(*s, middle - apart, rate);
        double mixL = (l + w * l + (1 - w) * r) / 2, mixR = (r + w * r + (1 - w) * l) / 2;
        if (s->dist) mixL = std::tanh(mixL), mixR = std::tanh(mixR);
        ASSERT_NEAR(double(left[i + 1]), gainL * mixL, tolerance) << name << ' ' << i;
        ASSERT_NEAR(double(right[i + 1]), gainR * mixR, tolerance) << name << ' ' << i;
    }
}

} // namespace

TEST(COSCSound, OperatorsFollowTheirFormulas) {
    for (const OscCase& c : operatorCases)
        for (double rate : {44100.0, 8000.0}) {
            SoundBench b(rate);
            COSCSound* s = b.addOsc();
            c.set(*s);
            expectFormula(b, s, 57, 2000, 1e-4, c.name);
        }
}

/// A minute of a high note is 250,000 cycles and ends as it began; a modulator at thousands of
/// cycles a frame goes through what a run can hold in each block.
TEST(COSCSound, HeldNotesNeverChange) {
    for (const OscCase& c : operatorCases) {
        SoundBench b(8000);
        COSCSound* s = b.addOsc();
        c.set(*s);
        expectFormula(b, s, 108, 60 * 8000, 2e-3, c.name);
    }
    SoundBench b(8000);
    COSCSound* s = b.addOsc();
    s->coarse = s->coarse2 = 48.0f;
    s->phaseMod = 0.5f;
    b.prog->bend[0] = 1.0f;
    s->bendRange = 8;
    expectFormula(b, s, 127, 4000, 1e-3, "fastest");
}

TEST(COSCSound, VoicesSoundTheSameSideBySide) {
    for (bool modulated : {false, true})
        for (const OscCase& c : operatorCases) {
            SoundBench b;
            COSCSound* s = b.addOsc();
            c.set(*s);
            if (modulated) {
                modulate(*s);
                s->lfo[3]->setSlot(3, targetPhaseMod, 0.5f);
                s->envelope[2]->setSlot(2, targetDetune, 0.5f);
            }
            expectLanesAgree(b, s, c.name);
        }
}

TEST(CWavSound, VoicesSoundTheSameSideBySide) {
    const auto wave = [](double step) {
        std::vector<float> v(6000);
        for (size_t i = 0; i < v.size(); i++)
            v[i] = float(0.6 * std::sin(step * double(i)) + 0.3 * std::cos(2.7 * step * double(i)));
        return v;
    };
    for (bool stereo : {false, true})
        for (bool loops : {false, true}) {
            SoundBench b;
            CWavSound* s = b.addWav(wave(0.09), stereo ? wave(0.06) : std::vector<float>(), 32000);
            s->clips[0]->setRange(10, 2500);
            s->clips[0]->setLoop(loops ? loopForward : 0);
            s->clips[0]->setLoopStart(700);
            modulate(*s);
            expectLanesAgree(b, s, "clip");
        }
}

/// More sounds than are worked out at a time, on chords whose notes begin apart: a sampler gives
/// the very sum of what it gives of each alone.
TEST(CSampler, SoundsAreTheSameTogetherAndAlone) {
    constexpr int block = 256, blocks = 40, sounds = 11;
    const auto render = [&](int alone) {
        SoundBench b(44100.0, block);
        b.sampler.createChannels();
        b.sampler.createBuffers(block);
        for (int i = 0; i < sounds; i++) {
            COSCSound* s = b.addOsc();
            operatorCases[i % 4].set(*s);
            if (i > 3) modulate(*s);
            s->filter = i % 3;
            s->mute = alone >= 0 && alone != i;
        }
        Stereo out;
        for (int k = 0; k < blocks; k++) {
            if (k % 9 == 0 && k < 20) b.event(asData(midiNoteOn, 50 + k, 60 + k));
            if (k == 25) b.event(asData(midiNoteOff, 50, 0));
            const GraphMark mark(b.host.host);
            b.sampler.prepare(block);
            for (int at = 0; at < block; at += block / 2) b.sampler.render(block / 2, at);
            const COutputChannel* channel = b.sampler.output();
            out.left.insert(out.left.end(), channel->bufL, channel->bufL + block);
            out.right.insert(out.right.end(), channel->bufR, channel->bufR + block);
        }
        return out;
    };
    Stereo sum{std::vector<float>(block * blocks), std::vector<float>(block * blocks)};
    for (int i = 0; i < sounds; i++) {
        const Stereo one = render(i);
        EXPECT_GT(rms(one.left, 0, one.left.size()), 0.001) << i;
        for (size_t f = 0; f < sum.left.size(); f++) {
            sum.left[f] += one.left[f];
            sum.right[f] += one.right[f];
        }
    }
    const Stereo all = render(-1);
    for (size_t f = 0; f < sum.left.size(); f++) {
        ASSERT_EQ(all.left[f], sum.left[f]) << f;
        ASSERT_EQ(all.right[f], sum.right[f]) << f;
    }
}

/// A note that is let go is over where its level comes to -100 dB; but
/// not when something else than its envelope takes the volume down, and may bring it back.
TEST(COSCSound, NotesEndWhereNothingIsHeard) {
    constexpr int rate = 44100, held = 1000, slice = rate / 1000 + 1;
    for (const float volume : {1.0f, 0.05f})
        for (const bool trembles : {false, true}) {
            SoundBench b;
            COSCSound* s = b.addOsc();
            s->volume = volume;
            s->envelope[0]->release = std::sqrt(0.2f); // of 5 s
            if (trembles) s->lfo[0]->setSlot(0, targetVolume, 0.5f);
            CVoice* v = b.play(s, 60, 127);
            b.render(v, held);
            b.event(asData(midiNoteOff, 60, 0));
            int frames = 0;
            for (; v->tail == 0 && frames < 2 * rate; frames += 10) b.render(v, 10);
            const double left = std::sqrt(1e-5) / (double(volume) * double(COSCSound::ownGain));
            const double expected = rate * (trembles ? 1.0 : 1.0 - left);
            EXPECT_NEAR(frames, expected, 2 * slice) << volume << trembles;
        }
}
