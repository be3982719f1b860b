#pragma once

#include <vector>

class CSample;

/// What a stretch of a sample is like. `from` to below `to` are frames within it. Any thread that
/// keeps the sample.

struct SampleLevel {
    float peak = 0.0f; ///< of all channels
    float rms = 0.0f;  ///< over all channels
    bool exact = true; ///< from the frames themselves, and not from the image of their peaks
};
/// Long stretches are told by the image, as far as it goes.
SampleLevel levelOf(const CSample& sample, int from, int to);
/// In dB below full scale; silence is -inf, and is told as a number below -200.
double decibels(float level);

/// The frame nearest to one at which the mean of all channels comes to zero or crosses it, not more
/// than `reach` frames away; `frame` itself where there is none.
int zeroCrossing(const CSample& sample, int frame, int reach);
/// The first such frame behind `frame`, or before it for a `way` of -1; `frame + way` where there
/// is none within reach.
int nextZeroCrossing(const CSample& sample, int frame, int way, int reach);

/// The mean power spectrum of a stretch in `bands` bands of equal width from 0 to half the rate, in
/// dB below a sine at full scale, which fills its band with 0. Windows of twice as many frames,
/// weighted by a raised cosine, at most 64 of them, lie evenly over it; `bands` is a power of two.
/// Empty for less than one window.
std::vector<float> spectrumOf(const CSample& sample, int from, int to, int bands);
