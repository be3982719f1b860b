#pragma once

#include "driver/Clock.h"

#include <algorithm>
#include <cstdint>

/// When a clock without hardware begins its blocks, like a card whose buffer holds `blocksHeld` of
/// them: one that is computed a little late is made up for by those behind it, and only is late
/// where such a card would have run empty. After a longer gap, such as that of a suspended machine,
/// the pace starts anew. Times are nanoseconds of the monotonic clock.
class ClockPace {
public:
    static constexpr int64_t blocksHeld = 3; ///< one that plays, two that are filled in time
    static constexpr int64_t patienceNs = 200 * nsPerMs; ///< behind when a block was due

    /// Blocks of so many frames, 1 or more, the first of them at `startNs`.
    ClockPace(int blockFrames, int hz, int64_t startNs)
        : frames(blockFrames), rate(hz), begunNs(startNs) {}

    /// When the next block begins.
    int64_t beginNs() const { return begunNs + framesToNs(framesDone, rate); }
    /// When the card runs empty without it.
    int64_t dueNs() const {
        return begunNs + framesToNs(framesDone + (blocksHeld - 1) * frames, rate);
    }
    /// How much of its time was over when the system woke the clock, which had `slept` for it, or
    /// still lacks of what was over before.
    int64_t lost() const { return lostNs; }

    /// The block begins.
    void begin(int64_t nowNs, bool slept) {
        const int64_t behind = std::max<int64_t>(nowNs - beginNs(), 0);
        lostNs = slept ? behind : std::min(lostNs, behind);
    }
    /// It has been computed; false after a gap, behind which the pace starts anew.
    bool end(int64_t nowNs) {
        const bool kept = nowNs - dueNs() < patienceNs;
        framesDone += frames;
        if (!kept) *this = ClockPace(frames, rate, nowNs);
        return kept;
    }

private:
    int frames, rate;
    int64_t begunNs;
    int64_t framesDone = 0, lostNs = 0;
};
