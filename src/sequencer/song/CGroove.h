#pragma once

#include "base/Atomic.h"

/// A track's swing table.
class CGroove {
public:
    static constexpr int maxSteps = 128;

    Shared<int> on{1};
    Shared<int> spare{-1};
    Shared<float> amount{0.0f};      ///< 0 leaves every event where it is
    Shared<int> steps{2};            ///< 1 to 128 when used
    Shared<int> stepTicks{240};      ///< at least 1 when used
    Shared<float> offsets[maxSteps]; ///< of each step, in units of `stepTicks`

    CGroove();
    /// The table of a new track: every second sixteenth late by a third.
    void initGroove();
};
