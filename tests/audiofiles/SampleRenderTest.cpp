#include "audiofiles/SampleRender.h"
#include "SampleFixture.h"
#include "support/Rows.h"

#include <cmath>

using SampleRenderTest = SampleFiles;

namespace {

/// The cubic with the slopes of its neighbours, as a Hermite form in double.
double hermite(const std::vector<float>& values, int chs, int side, double x) {
    const auto at = [&](long n) {
        const long frames = long(values.size()) / chs;
        return n < 0 || n >= frames ? 0.0 : double(values[std::size_t(n * chs + side)]);
    };
    const long n = long(std::floor(x));
    const double t = x - double(n), p1 = at(n), p2 = at(n + 1);
    const double m1 = (p2 - at(n - 1)) / 2, m2 = (at(n + 2) - p1) / 2;
    return (2 * t * t * t - 3 * t * t + 1) * p1 + (t * t * t - 2 * t * t + t) * m1 +
           (-2 * t * t * t + 3 * t * t) * p2 + (t * t * t - t * t) * m2;
}

const Rows<double, double, int> cases = {
    {0, 1, 64},       {0, 1, 1},         {10.25, 1, 100}, {0.5, 0.1, 65},
    {17.9, 0.02, 44}, {3.99, 1.999, 63}, {900, 0.5, 300}, {990.5, 1, 30},
    {-2.5, 0.7, 40},  {998.7, 0.25, 20}, {5000, 1, 10},   {-5000, 1, 10},
    {100, 7.3, 128},  {1, 250, 9},       {0, 4096, 5},    {0.3, 1.0 / 4096, 1024}};

alignas(float) unsigned char scratch[sampleScratchBytes];

} // namespace

/// Each output frame is the cubic at its place: in memory and from disk, of both kinds of values,
/// forward and backward, inside and across the ends, where all is zero.
TEST_F(SampleRenderTest, FramesLieOnTheCubicOfTheirNeighbours) {
    constexpr int frames = 1000;
    const auto expectCubic = [&](const CSample& sample, const auto& row, int reverse) {
        const auto& [pos, speed, count] = row;
        const Values values = allFrames(sample);
        Values left(std::size_t(count) + 1, 9.0f), right = left;
        ASSERT_TRUE(render(sample, {pos, speed, reverse, 20, 970}, count, left.data(), right.data(),
                           scratch));
        const double from = reverse ? 20 + 970 - pos - count * speed : pos;
        for (int i = 0; i < count; i++) {
            const std::size_t o = std::size_t(reverse ? count - 1 - i : i);
            const double x = from + i * speed;
            ASSERT_NEAR(double(left[o]), hermite(values, sample.chs, 0, x), 2e-6)
                << pos << " speed " << speed << " frame " << i << " way " << reverse << " streamed "
                << sample.streamed << " bits " << sample.bits;
            ASSERT_NEAR(double(right[o]), hermite(values, sample.chs, sample.chs - 1, x), 2e-6);
        }
        EXPECT_EQ(left.back() + right.back(), 18.0f) << "one frame too many";
    };
    for (int bits : {16, 32})
        for (int chs : {1, 2}) {
            write(path("s.wav"), 44100, bits, chs, noise(frames, 5), noise(frames, 6));
            for (int streamed : {0, 1}) {
                const auto sample = opened(path("s.wav"), streamed);
                for (const auto& row : cases)
                    for (int reverse : {0, 1}) expectCubic(*sample, row, reverse);
            }
        }
}

TEST_F(SampleRenderTest, WhatCannotPlayIsRefused) {
    float left[8] = {7}, right[8] = {7};
    CSample closed, many;
    many.setFormat(44100, 16, 3);
    many.takeData(static_cast<unsigned char*>(std::calloc(300, 6)), 300);
    for (const CSample* sample : {&closed, &many})
        EXPECT_FALSE(render(*sample, {}, 8, left, right, nullptr));
    EXPECT_EQ(left[0], 7.0f) << "nothing may be written";
}

/// A read from disk that the scratch can't hold is silence, with a notice that is taken once.
TEST_F(SampleRenderTest, ReadsBeyondTheScratchAreSilence) {
    write(path("b.wav"), 44100, 16, 2, noise(1000, 1), noise(1000, 2));
    const auto sample = opened(path("b.wav"), 1);
    constexpr int fits = maxScratchRead / 4 - 5; // frames of 4 bytes, and the neighbours
    CSample::notices.exchange(0);
    for (int frames : {fits, fits + 1}) {
        Values left(std::size_t(frames), 9.0f), right = left;
        EXPECT_TRUE(render(*sample, {}, frames, left.data(), right.data(), scratch));
        EXPECT_EQ(left[0] == 0.0f, frames > fits);
        EXPECT_EQ(CSample::notices.exchange(0), unsigned(frames > fits ? noticeBufferTooSmall : 0));
    }
}
