#pragma once

#include "base/Atomic.h"

#include <chrono>

/// What a piece of work costs per block, in nanoseconds. One thread notes, any reads.
struct WorkTimes {
    Shared<unsigned> last{0}, worst{0};
    Shared<float> mean{0.0f}; ///< of some 64 blocks that were measured

    void note(unsigned ns) {
        last = ns;
        if (ns > worst) worst = ns;
        mean = mean > 0.0f ? mean + (float(ns) - mean) * (1.0f / 64.0f) : float(ns);
    }
    void forgetWorst() { worst = 0; } ///< any thread
};

/// The time between its readings.
class StopWatch {
public:
    unsigned lap() {
        const auto now = std::chrono::steady_clock::now();
        const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(now - before).count();
        before = now;
        return unsigned(ns);
    }

private:
    std::chrono::steady_clock::time_point before = std::chrono::steady_clock::now();
};
