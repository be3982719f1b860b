#pragma once

#include "common/fx/CFX.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

/// Rates and blocks that every effect has to stand.
constexpr float fxRates[] = {44100.0f, 48000.0f, 96000.0f};
constexpr int fxBlocks[] = {1, 7, 64, 333, 1024};

struct Stereo {
    std::vector<float> left, right;
    explicit Stereo(int frames = 0) : left(size_t(frames)), right(size_t(frames)) {}
    int frames() const { return int(left.size()); }
};

/// Noise of both sides, with a rest of silence in its middle.
inline Stereo fxSignal(int frames, unsigned seed = 1) {
    Stereo out(frames);
    for (int i = 0; i < frames; i++)
        for (std::vector<float>* side : {&out.left, &out.right}) {
            seed = seed * 1664525u + 1013904223u;
            const bool rest = i > frames / 3 && i < frames / 2;
            (*side)[size_t(i)] = rest ? 0.0f : float(int(seed >> 9) - (1 << 22)) / float(1 << 23);
        }
    return out;
}

/// Runs an effect, or a plain form of one, over `in`, cut into blocks of `block`, onto what stands
/// in `out`; in place if both are the same.
template <class Fx>
void runFx(Fx& fx, Stereo& in, Stereo& out, int block) {
    for (int at = 0; at < in.frames(); at += block) {
        const size_t o = size_t(at);
        fx.process(&in.left[o], &in.right[o], &out.left[o], &out.right[o],
                   std::min(block, in.frames() - at));
    }
}

inline void expectNear(const Stereo& got, const Stereo& wanted, double tolerance,
                       const std::string& name) {
    for (size_t i = 0; i < got.left.size(); i++) {
        ASSERT_NEAR(got.left[i], wanted.left[i], tolerance) << name << ", left of frame " << i;
        ASSERT_NEAR(got.right[i], wanted.right[i], tolerance) << name << ", right of frame " << i;
    }
}

/// Compares with one calculation per frame: `reference(inL, inR, outL, outR)`, in double.
template <class Reference>
void expectLike(const Stereo& in, const Stereo& got, Reference reference, double tolerance,
                const std::string& name) {
    Stereo wanted(in.frames());
    for (size_t i = 0; i < in.left.size(); i++) {
        double left = 0.0, right = 0.0;
        reference(double(in.left[i]), double(in.right[i]), left, right);
        wanted.left[i] = float(left);
        wanted.right[i] = float(right);
    }
    expectNear(got, wanted, tolerance, name);
}

/// Compares an effect with the plain form of it, in place over noise, in blocks of `block`.
template <class Fx, class Plain>
void expectLikePlain(Fx& fx, Plain& plain, int frames, int block, double tolerance,
                     const std::string& name) {
    Stereo out = fxSignal(frames), wanted = out;
    runFx(fx, out, out, block);
    runFx(plain, wanted, wanted, block);
    expectNear(out, wanted, tolerance, name + " in " + std::to_string(block));
}
