#include "PlainAmp.h"
#include "base/Denormals.h"
#include "common/fx/AmpModel.h"

#include <benchmark/benchmark.h>

// How many times faster than real time one core runs each guitar amplifier in stereo, at 44.1 kHz
// in blocks of 1024 frames: the counter "realtime". The plain form, sample after sample, stands
// beside it.

namespace {

constexpr int blockFrames = 1024;
constexpr double rate = 44100.0;

struct Block {
    std::vector<float> left, right;

    Block() {
        for (int i = 0; i < blockFrames; i++) {
            left.push_back(float(0.3 * std::sin(i * 0.03)));
            right.push_back(float(0.3 * std::sin(i * 0.05)));
        }
    }
};

void countRealTime(benchmark::State& state) {
    state.counters["realtime"] = benchmark::Counter(double(state.iterations()) * blockFrames / rate,
                                                    benchmark::Counter::kIsRate);
}

void model(benchmark::State& state) {
    flushDenormals();
    void* amp = Overloud_create(int(state.range(0)));
    Overloud_setfrequency(amp, float(rate));
    Block in, out;
    const float* ins[] = {in.left.data(), in.right.data()};
    float* outs[] = {out.left.data(), out.right.data()};
    for (auto _ : state) {
        Overloud_process(amp, ins, outs, 2, blockFrames);
        benchmark::ClobberMemory();
    }
    countRealTime(state);
    Overloud_destroy(amp);
}

void plain(benchmark::State& state) {
    flushDenormals();
    const AmpVoicing& voicing = ampVoicings[state.range(0)];
    PlainAmp<float> left(voicing, rate), right(voicing, rate);
    Block in, out;
    for (auto _ : state) {
        for (std::size_t i = 0; i < blockFrames; i++) {
            out.left[i] = left.next(in.left[i]);
            out.right[i] = right.next(in.right[i]);
        }
        benchmark::ClobberMemory();
    }
    countRealTime(state);
}

} // namespace

BENCHMARK(model)->ArgName("type")->DenseRange(ampClean, ampDirty);
BENCHMARK(plain)->ArgName("type")->DenseRange(ampClean, ampDirty);

BENCHMARK_MAIN();
