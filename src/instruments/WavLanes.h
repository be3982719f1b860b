#pragma once

#include "instruments/Lanes.h"

/// Up to eight strips side by side that are fed with frames.
struct alignas(64) WavLanes {
    static constexpr int ringFrames = 256; ///< holds the longest slice; a power of two

    float input[ringFrames * maxLanes] = {}; ///< by frame of the call, then by lane
    StripLanes strip;

    StripLanes& stripOf(int) { return strip; }

    /// The next slice of a lane: `n` frames from frame `at` of the call on.
    void put(int lane, int at, const float* frames, int n);
    /// Adds `n` frames from frame `at` on, of lanes 0 to `lanes` - 1, to outputs of the call.
    void run(int lanes, int at, float* left, float* right, int n);
};
