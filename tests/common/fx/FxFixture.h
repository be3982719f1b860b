#pragma once

#include "common/fx/CFX.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

/// Rates and cuts of blocks that every effect has to stand.
constexpr int oddCuts = 0; ///< stands for blocks of 1024 frames that are cut as events would
constexpr float fxRates[] = {44100.0f, 48000.0f, 96000.0f};
constexpr int fxBlocks[] = {1, 7, 64, 1024, oddCuts};

/// Whether one of the blocks, or a cut, ends after this many frames.
inline bool endsBlock(int block, long frames) {
    const long at = frames % 1024;
    if (block == oddCuts) return at == 0 || at == 1 || at == 501 || at == 514 || at == 516;
    return frames % block == 0;
}

struct Stereo {
    std::vector<float> left, right;
    explicit Stereo(int frames = 0) : left(std::size_t(frames)), right(std::size_t(frames)) {}
    int frames() const { return int(left.size()); }
};

/// Noise of both sides, with a rest of silence in its middle.
inline Stereo fxSignal(int frames, unsigned seed = 1) {
    Stereo out(frames);
    for (int i = 0; i < frames; i++)
        for (std::vector<float>* side : {&out.left, &out.right}) {
            seed = seed * 1664525u + 1013904223u;
            const bool rest = i > frames / 3 && i < frames / 2;
            (*side)[std::size_t(i)] =
                rest ? 0.0f : float(int(seed >> 9) - (1 << 22)) / float(1 << 23);
        }
    return out;
}

/// Runs an effect over `in`, cut into blocks of `block`, onto what stands in `out`; in place if
/// both are the same.
inline void runFx(CFX& fx, Stereo& in, Stereo& out, int block) {
    for (int at = 0, count = 0; at < in.frames(); at += count) {
        for (count = 1; at + count < in.frames() && !endsBlock(block, at + count);) count++;
        const std::size_t o = std::size_t(at);
        fx.process(&in.left[o], &in.right[o], &out.left[o], &out.right[o], count);
    }
}

/// Compares with one calculation per frame: `reference(inL, inR, outL, outR)`, in double.
template <class Reference>
void expectLike(const Stereo& in, const Stereo& got, Reference reference, double tolerance,
                const std::string& name) {
    for (int i = 0; i < in.frames(); i++) {
        const std::size_t o = std::size_t(i);
        double left = 0.0, right = 0.0;
        reference(double(in.left[o]), double(in.right[o]), left, right);
        ASSERT_NEAR(double(got.left[o]), left, tolerance) << name << ", left of frame " << i;
        ASSERT_NEAR(double(got.right[o]), right, tolerance) << name << ", right of frame " << i;
    }
}

/// The low oscillators of the effects as they are told: 131072 floats a cycle, 0 sine, 1 triangle,
/// 2 sawtooth.
inline double lfoWave(int waveform, double place) {
    const double p = double(long(place) & 131071) / 131072;
    if (waveform == 1) return p < 0.5 ? 2 * p : 2 - 2 * p;
    if (waveform == 2) return p;
    return double(float(std::sin(2 * double(3.1415927f) * p) * 0.5 + 0.5));
}
