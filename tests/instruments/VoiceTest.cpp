#include "SoundFixture.h"

#include <functional>
#include <numbers>

namespace {

constexpr double agreement = 1e-4;

struct Voices {
    std::vector<float> left, right;
};

/// What the voices of a sound give, in calls of the given lengths in turn; the keys are let go
/// after `held` frames.
Voices renderVoices(SoundBench& b, CSound* s, const std::vector<int>& keys, int frames, int held,
                    const std::vector<int>& calls, bool together) {
    std::vector<CVoice*> voices;
    for (size_t i = 0; i < keys.size(); i++) {
        voices.push_back(&b.sampler.voices[i]);
        b.sampler.voices[i] = CVoice();
        b.play(s, keys[i], 60 + 7 * int(i));
    }
    Voices out{std::vector<float>(size_t(frames)), std::vector<float>(size_t(frames))};
    for (int at = 0, k = 0; at < frames; k++) {
        int n = std::min(calls[size_t(k) % calls.size()], frames - at);
        if (at < held) n = std::min(n, held - at);
        if (at == held)
            for (int key : keys) b.event(asData(midiNoteOff, key, 0));
        if (together)
            s->processVoices(voices.data(), int(voices.size()), &out.left[at], &out.right[at], n);
        else
            for (CVoice* v : voices)
                if (v->state == CVoice::sounding) s->process(&out.left[at], &out.right[at], v, n);
        at += n;
    }
    return out;
}

/// One voice by the formulas, in the same calls.
Voices renderReference(SoundBench& b, CSound* s, int key, int velocity, int frames, int held,
                       const std::vector<int>& calls) {
    VoiceReference v(s, double(float(b.host.host->rate)), key, velocity);
    v.bend = double(float(b.prog->bend[0]));
    for (int at = 0, k = 0; at < frames; k++) {
        int n = std::min(calls[size_t(k) % calls.size()], frames - at);
        if (at < held) n = std::min(n, held - at);
        if (at == held) v.release();
        v.render(n);
        at += n;
    }
    return {{v.left.begin(), v.left.end()}, {v.right.begin(), v.right.end()}};
}

/// Largest difference, relative to full scale of the chord.
double distance(const Voices& a, const Voices& b, size_t voices) {
    double most = 0;
    for (size_t i = 0; i < a.left.size(); i++) {
        most = std::max(most, double(std::fabs(a.left[i] - b.left[i])));
        most = std::max(most, double(std::fabs(a.right[i] - b.right[i])));
        if (std::isnan(a.left[i]) || std::isnan(b.left[i])) return 1.0;
    }
    return most / double(voices);
}

/// Chords of every size in `sizes`, side by side and one after the other, against the formulas.
void expectAgreement(SoundBench& b, CSound* s, const char* name, const std::vector<size_t>& sizes) {
    const std::vector<int> keys = {45, 57, 60, 64, 69, 71, 76, 48, 81};
    const int frames = 5000, held = 3000;
    const std::vector<int> calls = {1024, 300, 1, 64};
    Voices wanted{std::vector<float>(frames), std::vector<float>(frames)};
    size_t summed = 0;
    for (size_t n : sizes) {
        for (; summed < n; summed++) {
            const Voices one =
                renderReference(b, s, keys[summed], 60 + 7 * int(summed), frames, held, calls);
            for (size_t i = 0; i < frames; i++) {
                wanted.left[i] += one.left[i];
                wanted.right[i] += one.right[i];
            }
        }
        const std::vector<int> chord(keys.begin(), keys.begin() + long(n));
        const Voices lanes = renderVoices(b, s, chord, frames, held, calls, true);
        const Voices plain = renderVoices(b, s, chord, frames, held, calls, false);
        EXPECT_LT(distance(lanes, wanted, n), agreement) << name << ", voices: " << n;
        EXPECT_LT(distance(lanes, plain, n), 1e-5) << name << ", voices: " << n;
        EXPECT_GT(rms(wanted.left, 0, frames), 0.002) << name << " is silent";
    }
}

struct OscCase {
    const char* name;
    void (*set)(COSCSound&);
};

const OscCase oscCases[] = {
    {"plain sine", [](COSCSound&) {}},
    {"detuned and wide",
     [](COSCSound& s) {
         s.detune = 0.5f;
         s.width = 0.25f;
         s.pan = -0.5f;
         s.phase = 0.3f;
     }},
    {"phase modulation",
     [](COSCSound& s) {
         s.phaseMod = 0.5f;
         s.coarse2 = 12.0f;
         s.pmMul = 2;
         s.phase2 = 0.5f;
     }},
    {"feedback and shapers",
     [](COSCSound& s) {
         s.feed1 = 0.5f;
         s.feed2 = 0.25f;
         s.phaseMod = 0.25f;
         s.oscRing = 0.5f;
         s.modRing = 0.25f;
     }},
    {"inverted pair and distortion",
     [](COSCSound& s) {
         s.oscInv = -1.0f;
         s.width = 0.5f;
         s.dist = 1;
         s.volume = 0.75f;
         s.detune = 0.25f;
     }},
    {"inverted pair, one lane",
     [](COSCSound& s) {
         s.oscInv = -1.0f;
         s.width = 0.75f;
         s.pan = 0.25f;
     }},
    {"band filter, envelopes",
     [](COSCSound& s) {
         s.feed1 = 0.5f;
         s.filter = filterBand;
         s.cutoff = 0.5f;
         s.q = 0.75f;
         s.envelope[0]->attack = 0.05f;
         s.envelope[0]->decay = 0.1f;
         s.envelope[0]->sustain = 0.5f;
         s.envelope[0]->dc = 0.25f;
         s.envelope[1]->initial = 0.25f;
         s.envelope[1]->attack = 0.06f;
         s.envelope[1]->ac = -0.5f;
         s.envelope[1]->sustain = 0.25f;
         s.envelope[1]->decay = 0.12f;
         s.envelope[1]->release = 0.1f;
         s.envelope[2]->attack = 0.08f;
         s.envelope[2]->setSlot(1, targetPan, 0.5f);
         s.envelope[2]->setSlot(2, targetDetune, 0.5f);
         s.detune = 0.25f;
     }},
    {"high filter, LFOs, velocity",
     [](COSCSound& s) {
         s.filter = filterHigh;
         s.cutoff = 0.25f;
         s.phaseMod = 0.25f;
         s.lfo[0]->setSlot(0, targetPitch, 0.5f);
         s.lfo[0]->rate = 20.0f;
         s.lfo[1]->wave = lfoSaw;
         s.lfo[1]->setSlot(0, targetVolume, 0.5f);
         s.lfo[1]->delay = 20;
         s.lfo[2]->wave = lfoPulse;
         s.lfo[2]->setSlot(0, targetPan, 0.5f);
         s.lfo[2]->sync = 1;
         s.lfo[2]->div = 16;
         s.lfo[3]->wave = lfoSin;
         s.lfo[3]->setSlot(0, targetCutoff, -0.5f);
         s.lfo[3]->setSlot(3, targetPhaseMod, 0.5f);
         s.vel->setSlot(0, targetVolume, 0.75f);
         s.vel->setSlot(2, targetQ, 0.5f);
         s.q = 0.5f;
     }},
    {"bend and tuning",
     [](COSCSound& s) {
         s.coarse = 12.0f;
         s.fine = 0.25f;
         s.bendRange = 2;
         s.detune = 0.5f;
         s.layer->prog->bend[0] = -0.5f;
     }},
};

} // namespace

/// Batches of all sizes must give what a plain calculation per voice gives, at any rate.
TEST(COSCSound, AgreesWithTheFormulas) {
    for (const OscCase& c : oscCases) {
        for (double rate : {44100.0, 8000.0}) {
            SoundBench b(rate);
            COSCSound* s = b.addOsc();
            c.set(*s);
            expectAgreement(b, s, c.name, {1, 2, 3, 5, 9});
        }
    }
}

/// A note so long that its phase leaves 32 bits reads the table's first value: silence, no fault.
TEST(COSCSound, FallsSilentAfter32768Cycles) {
    SoundBench b(8000.0);
    COSCSound* s = b.addOsc();
    s->detune = 0.5f;
    CVoice* v = b.play(s, 120);
    std::vector<float> l(1024), r(1024);
    const double hz = 440.0 * std::pow(2.0, (120 - 69) / 12.0);
    const int calls = int(32768.0 / hz * 8000.0 / 1024.0);
    for (int i = 0; i < calls - 5; i++) s->process(l.data(), r.data(), v, 1024);
    std::fill(l.begin(), l.end(), 0.0f);
    s->process(l.data(), r.data(), v, 1024);
    EXPECT_GT(rms(l, 0, 1024), 0.05);
    for (int i = 0; i < 40; i++) s->process(l.data(), r.data(), v, 1024);
    std::fill(l.begin(), l.end(), 0.0f);
    s->process(l.data(), r.data(), v, 1024);
    EXPECT_LT(rms(l, 0, 1024), 1e-6);
}

namespace {

std::vector<float> someWave(int frames, double cycles) {
    std::vector<float> wave;
    for (int i = 0; i < frames; i++) {
        const double x = 2 * std::numbers::pi * cycles * i / frames;
        wave.push_back(float(0.6 * std::sin(x) + 0.3 * std::cos(2.7 * x)));
    }
    return wave;
}

struct WavCase {
    const char* name;
    int rate;
    bool stereo;
    void (*set)(CWavSound&, CSampleClip&);
};

const WavCase wavCases[] = {
    {"mono, own rate", 44100, false, [](CWavSound&, CSampleClip&) {}},
    {"stereo, other rate", 32000, true,
     [](CWavSound& s, CSampleClip& c) {
         c.setOrgKey(62);
         s.pan = 0.5f;
         s.fine = 0.5f;
     }},
    {"loop", 44100, false,
     [](CWavSound&, CSampleClip& c) {
         c.setRange(10, 1500);
         c.setLoop(loopForward);
         c.setLoopStart(700);
     }},
    {"filter and modulation", 44100, true,
     [](CWavSound& s, CSampleClip&) {
         s.filter = filterBand;
         s.cutoff = 0.5f;
         s.q = 0.5f;
         s.envelope[0]->attack = 0.1f;
         s.envelope[0]->release = 0.15f;
         s.lfo[0]->setSlot(0, targetPitch, 0.25f);
         s.lfo[2]->setSlot(0, targetPan, 0.5f);
         s.lfo[2]->rate = 30.0f;
     }},
};

} // namespace

TEST(CWavSound, AgreesWithTheFormulas) {
    for (const WavCase& c : wavCases) {
        SoundBench b;
        const auto wave = someWave(6000, 90), other = someWave(6000, 61);
        CWavSound* s = b.addWav(wave, c.stereo ? other : std::vector<float>{}, c.rate);
        c.set(*s, *s->clips[0]);
        expectAgreement(b, s, c.name, {1, 3, 9});
    }
}
