#include "FxSettings.h"
#include "PlainFx.h"
#include "base/Denormals.h"

#include <benchmark/benchmark.h>
#include <memory>
#include <string>

// How much faster than real time each effect runs, stereo, at 44.1 kHz in blocks of 1024 frames,
// and beside it the plain loop of its formulas, once both have been found to give the same.

namespace {

constexpr int blockFrames = 1024;
constexpr float rate = 44100.0f;
constexpr int soundFrames = 64 * blockFrames;

struct Stereo {
    std::vector<float> left = std::vector<float>(soundFrames), right = left;
};

/// Noise that swells and dies away, so that a compressor has something to do.
const Stereo& sound() {
    static const Stereo noise = [] {
        Stereo s;
        unsigned seed = 1;
        for (int i = 0; i < soundFrames; i++)
            for (std::vector<float>* side : {&s.left, &s.right}) {
                seed = seed * 1664525u + 1013904223u;
                const float swell = float(i % 16384) / 16384;
                (*side)[size_t(i)] = swell * float(int(seed >> 9) - (1 << 22)) / float(1 << 23);
            }
        return s;
    }();
    return noise;
}

template <class Unit>
void block(Unit& unit, int at, Stereo& out) {
    static Stereo in = sound();
    const size_t o = size_t(at);
    unit.process(&in.left[o], &in.right[o], &out.left[o], &out.right[o], blockFrames);
}

template <class Unit>
Stereo play(Unit& unit) {
    Stereo out;
    for (int at = 0; at < soundFrames; at += blockFrames) block(unit, at, out);
    return out;
}

double farthest(const Stereo& a, const Stereo& b) {
    double most = 0.0;
    for (size_t i = 0; i < size_t(soundFrames); i++)
        most = std::max({most, std::fabs(double(a.left[i]) - double(b.left[i])),
                         std::fabs(double(a.right[i]) - double(b.right[i]))});
    return most;
}

template <class Unit>
void measure(benchmark::State& state, Unit& unit) {
    static Stereo out;
    int at = 0;
    for (auto _ : state) {
        std::fill_n(&out.left[size_t(at)], blockFrames, 0.0f);
        std::fill_n(&out.right[size_t(at)], blockFrames, 0.0f);
        block(unit, at, out);
        at = (at + blockFrames) % soundFrames;
        benchmark::ClobberMemory();
    }
    state.counters["times real time"] = benchmark::Counter(
        double(state.iterations()) * blockFrames / double(rate), benchmark::Counter::kIsRate);
}

template <class Fx, class Plain>
void compare(const char* name, double tolerance) {
    const auto make = [] {
        auto fx = std::make_shared<Fx>(rate, 0);
        loadUp(*fx);
        fx->setEnabled(1);
        return fx;
    };
    const auto fx = make();
    const auto plain = std::make_shared<Plain>(*fx);
    const double differs = farthest(play(*fx), play(*plain));
    const auto run = [=](benchmark::State& state, auto unit) {
        if (!(differs <= tolerance)) state.SkipWithError("differs from the plain loop");
        measure(state, *unit);
        state.counters["differs by"] = differs;
    };
    benchmark::RegisterBenchmark(name, run, fx);
    benchmark::RegisterBenchmark((std::string(name) + ", plain loop").c_str(), run, plain);
}

} // namespace

int main(int argc, char** argv) {
    flushDenormals();
    compare<CDelay, PlainDelay>("delay", 1e-5);
    compare<CChorus, PlainChorus>("chorus", 1e-5);
    compare<CPhaser, PlainPhaser>("phaser", 1e-5);
    compare<CReverb, PlainReverb>("reverb", 1e-4);
    compare<CCompressor, PlainCompressor>("compressor", 1e-4);
    compare<CBitcrusher, PlainBitcrusher>("bit crusher", 1e-5);
    compare<CFilterFX, PlainFilter>("filter", 1e-5);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
