#pragma once

#include <algorithm>
#include <chrono>

/// When frames are made: at once where nothing was made for a while, else 60 in a second.
class FrameClock {
public:
    using Time = std::chrono::steady_clock::time_point;
    static constexpr std::chrono::microseconds period{16667};
    /// What follows by itself is asked for so long after it has last changed.
    static constexpr std::chrono::milliseconds followTime{100};

    bool due(Time now) const { return now >= next; }
    Time dueAt() const { return next; }
    /// Late frames do not delay those that follow, and one that was not due moves none.
    void made(Time now) { next = std::clamp<Time>(next + period, now + period / 2, now + period); }

private:
    Time next{};
};
