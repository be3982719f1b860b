#pragma once

#include <cstdint>
#include <vector>

/// Brings two signals to another rate, piece by piece, through `readSinc`. The first frame out is
/// the first one in, and as many come out as last as long. Not on the audio thread.
class RateChange {
public:
    const double step; ///< source frames per frame out

    /// A step above 0 and up to `maxSincStep`.
    explicit RateChange(double step);

    void put(const float* left, const float* right, int count);
    void end(); ///< that was all of the source
    /// Up to `most` frames of what can be made so far; returns how many.
    int take(float* left, float* right, int most);

private:
    void append(const float* left, const float* right, int count);

    const int reach;
    std::vector<float> lefts, rights; ///< of the source, from frame `first` on
    std::int64_t first;
    std::int64_t frames = 0; ///< of the source so far
    std::int64_t next = 0;   ///< frame out
    std::int64_t total = -1; ///< of them; -1 not known yet
};
