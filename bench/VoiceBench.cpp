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

struct BareFilter {
    float low = 0.0f, band = 0.0f;
    float next(float x) {
        low += 0.6f * band;
        const float high = x - low - 0.6f * band;
        band += 0.6f * high;
        return low;
    }
};

void countBare(benchmark::State& state) {
    state.counters["voices"] = benchmark::Counter(double(state.iterations()) * blockFrames / rate,
                                                  benchmark::Counter::kIsRate);
    state.counters["ns_per_frame"] =
        benchmark::Counter(double(state.iterations()) * blockFrames * 1e-9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// One stereo synthesizer voice: two pairs of operators, two filters, gains, sums.
void bareSynth(benchmark::State& state) {
    createSinus();
    struct Pair {
        double car = 0, mod = 0, lastCar = 0, lastMod = 0;
        BareFilter filter;
    } pairs[2];
    float out[2][blockFrames] = {};
    const auto sine = [](double x) { return sinus[int(x * 65535.0) & 0xFFFF]; };
    for (auto _ : state) {
        for (int i = 0; i < blockFrames; i++) {
            for (int side = 0; side < 2; side++) {
                Pair& p = pairs[side];
                const double m = p.lastMod = sine(0.02 * p.lastMod + p.mod);
                p.mod += 0.01;
                const double c = sine(0.16 * m * (m * 0.0 - 1.0) + 0.05 * p.lastCar + p.car);
                p.lastCar = c * (c * 0.0 - 1.0);
                p.car += 0.005;
                out[side][i] += p.filter.next(float(p.lastCar)) * (0.3f + 1e-6f * float(i));
            }
        }
        for (Pair& p : pairs) p.car = p.mod = 0.0;
        benchmark::DoNotOptimize(out[0][0]);
    }
    countBare(state);
}

/// One mono sample voice: four-point interpolation of floats, a filter, two gains and sums.
void bareSample(benchmark::State& state) {
    std::vector<float> data(8 * blockFrames, 0.1f);
    BareFilter filter;
    float left[blockFrames] = {}, right[blockFrames] = {};
    for (auto _ : state) {
        for (int i = 0; i < blockFrames; i++) {
            const double x = 1.0 + i * 1.37;
            const int n = int(x);
            const float t = float(x - n);
            const float* y = &data[size_t(n - 1)];
            const float a = (y[1] - y[2]) * 1.5f + (y[0] - y[3]) * -0.5f;
            const float b = 2.0f * y[2] + y[0] + (5.0f * y[1] + y[3]) * -0.5f;
            const float c = (y[2] - y[0]) * 0.5f;
            const float v = filter.next(((a * t + b) * t + c) * t + y[1]);
            left[i] += v * (0.3f + 1e-6f * float(i));
            right[i] += v * (0.2f + 1e-6f * float(i));
        }
        benchmark::DoNotOptimize(left[0]);
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
