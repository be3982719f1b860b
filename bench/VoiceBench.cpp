#include "base/Denormals.h"
#include "common/WaveTables.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "instruments/COSCSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "instruments/CWavSound.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdlib>
#include <memory>

// How many voices one core renders in real time, at 44.1 kHz in blocks of 1024 frames. The counter
// "voices" is that number. The bare loops do the arithmetic of one voice after the other without
// modulation, slices or a sampler around them, in the same run.

namespace {

constexpr int blockFrames = 1024;
constexpr double rate = 44100.0;
constexpr int voiceCount = CSampler::voiceCount;
constexpr int noteBlocks = 200; ///< length of each note, 4.6 seconds

CQV* benchHost() {
    static CQV* host = [] {
        flushDenormals();
        qv = new CQV;
        qv->settingsEnabled = false;
        qv->setFrames(blockFrames);
        return qv;
    }();
    return host;
}

/// A sampler with one sound, all of whose voices play it.
struct FullSampler {
    CSampler sampler{benchHost()};
    CSynthProg* prog = new CSynthProg(benchHost(), &sampler);
    CLayer* layer = prog->addLayer();

    FullSampler() {
        sampler.createChannels();
        sampler.createBuffers(blockFrames);
        sampler.progs.add(prog);
    }

    /// Modulation as a patch of some life has it: filter envelope, vibrato, a filter LFO, velocity.
    void modulate(CSound& s) {
        s.cutoff = 0.8f;
        s.q = 0.4f;
        s.envelope[0]->decay = 0.5f;
        s.envelope[0]->sustain = 0.7f;
        s.envelope[1]->decay = 0.6f;
        s.envelope[1]->dc = 0.3f;
        s.envelope[1]->sustain = 0.5f;
        s.lfo[0]->setSlot(0, targetPitch, 0.1f);
        s.lfo[3]->setSlot(0, targetCutoff, 0.2f);
        s.vel->setSlot(0, targetVolume, 0.5f);
    }

    void startVoices(CSound* s, int voices) {
        for (int i = 0; i < voices; i++) {
            CVoice* v = sampler.addVoice(s, asData(midiNoteOn, 40 + i % 40, 60 + i), 0);
            v->host = benchHost();
            s->initVoice(v);
        }
    }

    void run(benchmark::State& state, CSound* s, int voices) {
        layer->addSound(s);
        modulate(*s);
        int age = noteBlocks;
        for (auto _ : state) {
            if (age++ == noteBlocks) {
                age = 1;
                sampler.allNotesOff();
                startVoices(s, voices);
            }
            const GraphMark mark(sampler.host);
            sampler.prepare(blockFrames);
            sampler.render(blockFrames, 0);
            benchmark::DoNotOptimize(sampler.output()->bufL[0]);
        }
        const double seconds = double(state.iterations()) * blockFrames / rate;
        state.counters["voices"] =
            benchmark::Counter(voices * seconds, benchmark::Counter::kIsRate);
        state.counters["ns_per_frame"] =
            benchmark::Counter(double(state.iterations()) * voices * blockFrames * 1e-9,
                               benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    }
};

COSCSound* makeSynth(FullSampler& f, float detune) {
    auto* s = new COSCSound(f.layer, benchHost());
    s->feed1 = 0.5f;
    s->feed2 = 0.3f;
    s->phaseMod = 0.4f;
    s->coarse2 = 12.0f;
    s->detune = detune;
    s->width = 0.5f;
    return s;
}

void synthStereo(benchmark::State& state) {
    FullSampler f;
    f.run(state, makeSynth(f, 0.3f), int(state.range(0)));
}

void synthEqualChannels(benchmark::State& state) {
    FullSampler f;
    f.run(state, makeSynth(f, 0.0f), int(state.range(0)));
}

CSampleClip* makeClip(int chs) {
    constexpr int frames = 4 * 44100;
    auto* clip = new CSampleClip;
    clip->setFormat(44100, 16, chs);
    auto* data = static_cast<short*>(std::malloc(size_t(frames) * size_t(chs) * sizeof(short)));
    for (int i = 0; i < frames * chs; i++) data[i] = short(20000 * std::sin(i * 0.06));
    clip->takeData(reinterpret_cast<unsigned char*>(data), frames);
    clip->playAll();
    clip->setLoop(loopForward);
    clip->setLoopStart(1000);
    return clip;
}

void sampleVoices(benchmark::State& state, int chs) {
    FullSampler f;
    auto* s = new CWavSound(f.layer, benchHost());
    CSampleClip* clip = makeClip(chs);
    f.sampler.clips.add(clip);
    s->addSample(clip);
    f.run(state, s, int(state.range(0)));
}

void sampleMono(benchmark::State& state) {
    sampleVoices(state, 1);
}
void sampleStereo(benchmark::State& state) {
    sampleVoices(state, 2);
}

struct BareLine {
    float value, step;
    float at(int i) const { return value + float(i) * step; }
};

struct BareFilter {
    float low = 0.0f, band = 0.0f, high = 0.0f;
    void next(float x, float f, float damp) {
        low += f * band;
        high = x - low - damp * band;
        band += f * high;
    }
};

/// The settings of a bare voice, out of the compiler's sight.
struct BareVoice {
    BareLine feed1{0.25f, 1e-7f}, feed2{0.1f, 1e-7f}, phaseMod{0.16f, 1e-7f}, cut{0.6f, 1e-7f};
    BareLine gain[2] = {{0.3f, 1e-7f}, {0.3f, 1e-7f}};
    float damp = 0.6f, width = 0.5f, inv = 1.0f, peak[2] = {};
    double oscRing = 0.0, modRing = 0.0, pmMul = 1.0, speed = 1.37;
    double carPhase[2] = {}, carIncr[2] = {0.005, 0.0051}, carLast[2] = {};
    double modPhase[2] = {}, modIncr[2] = {0.01, 0.0101}, modLast[2] = {};
    BareFilter filter[2];

    void meter(int side, float y) {
        if (y > peak[side])
            peak[side] = y;
        else if (-y > peak[side])
            peak[side] = -y;
    }
};

double bareSine(double x) {
    return sinus[int(x * 65535.0) & 0xFFFF];
}

double bareOperators(BareVoice& v, int side, int i) {
    const double m = bareSine(double(v.feed2.at(i)) * 0.2 * v.modLast[side] + v.modPhase[side]);
    v.modLast[side] = m;
    v.modPhase[side] += v.modIncr[side];
    const double c =
        bareSine(v.pmMul * double(v.phaseMod.at(i)) * ((v.modRing - 1) * m + v.modRing * m * m) +
                 double(v.feed1.at(i)) * 0.2 * v.carLast[side] + v.carPhase[side]);
    v.carLast[side] = (v.oscRing - 1) * c + v.oscRing * c * c;
    v.carPhase[side] += v.carIncr[side];
    return v.carLast[side];
}

void countBare(benchmark::State& state) {
    state.counters["voices"] = benchmark::Counter(double(state.iterations()) * blockFrames / rate,
                                                  benchmark::Counter::kIsRate);
    state.counters["ns_per_frame"] =
        benchmark::Counter(double(state.iterations()) * blockFrames * 1e-9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// One stereo synthesizer voice: two pairs of operators, two filters, gains, meters, sums.
void bareSynth(benchmark::State& state) {
    createSinus();
    float left[blockFrames] = {}, right[blockFrames] = {};
    BareVoice start;
    for (auto _ : state) {
        benchmark::DoNotOptimize(start);
        BareVoice v = start;
        for (int i = 0; i < blockFrames; i++) {
            const double l = bareOperators(v, 0, i), r = double(v.inv) * bareOperators(v, 1, i);
            const double w = double(v.width);
            v.filter[0].next(float((w * l + l + (1 - w) * r) * 0.5), v.cut.at(i), v.damp);
            const float y = v.filter[0].low * v.gain[0].at(i);
            v.meter(0, y);
            left[i] += y;
            v.filter[1].next(float(((1 - w) * l + r + w * r) * 0.5), v.cut.at(i), v.damp);
            const float z = v.filter[1].low * v.gain[1].at(i);
            v.meter(1, z);
            right[i] += z;
        }
        benchmark::DoNotOptimize(v);
    }
    countBare(state);
}

/// One mono sample voice: four-point interpolation of floats, a filter, two gains, meters, sums.
void bareSample(benchmark::State& state) {
    std::vector<float> data(8 * blockFrames, 0.1f);
    float left[blockFrames] = {}, right[blockFrames] = {};
    BareVoice start;
    for (auto _ : state) {
        benchmark::DoNotOptimize(start);
        BareVoice v = start;
        for (int i = 0; i < blockFrames; i++) {
            const double x = 1.0 + i * v.speed;
            const int n = int(x);
            const float t = float(x - n);
            const float* y = &data[size_t(n - 1)];
            const float a = (y[1] - y[2]) * 1.5f + (y[0] - y[3]) * -0.5f;
            const float b = 2.0f * y[2] + y[0] + (5.0f * y[1] + y[3]) * -0.5f;
            const float c = (y[2] - y[0]) * 0.5f;
            v.filter[0].next(((a * t + b) * t + c) * t + y[1], v.cut.at(i), v.damp);
            const float l = v.filter[0].low * v.gain[0].at(i);
            const float r = v.filter[0].low * v.gain[1].at(i);
            v.meter(0, l);
            v.meter(1, r);
            left[i] += l;
            right[i] += r;
        }
        benchmark::DoNotOptimize(v);
    }
    countBare(state);
}

} // namespace

BENCHMARK(bareSynth);
BENCHMARK(synthStereo)->Arg(voiceCount)->Arg(4)->Arg(1);
BENCHMARK(synthEqualChannels)->Arg(voiceCount)->Arg(4)->Arg(1);
BENCHMARK(bareSample);
BENCHMARK(sampleMono)->Arg(voiceCount)->Arg(4)->Arg(1);
BENCHMARK(sampleStereo)->Arg(voiceCount);

BENCHMARK_MAIN();
