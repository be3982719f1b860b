#pragma once

#include <algorithm>
#include <chrono>
#include <utility>

/// When frames are made: at once where nothing was made for a while, else 60 in a second. What
/// moves by itself does not keep the user waiting: the frame that answers an event comes at once
/// behind one that nobody asked for, which then has to wait so much longer for its next one.
class FrameClock {
public:
    using Time = std::chrono::steady_clock::time_point;
    static constexpr std::chrono::microseconds period{16667};
    /// What follows by itself is asked for so long after it has last changed.
    static constexpr std::chrono::milliseconds followTime{100};

    bool due(Time now) const { return now >= dueAt(); }
    Time dueAt() const {
        if (!asked) return nextOwn;
        return answered ? next : Time();
    }
    /// The user has done something that the next frame shows.
    void ask() { asked = true; }
    /// Late frames do not delay those that follow, and those that were not due only a little.
    void made(Time now) {
        nextOwn = std::clamp<Time>(nextOwn + period, now + period / 2, now + 2 * period);
        next = std::min<Time>(nextOwn, now + period);
        answered = std::exchange(asked, false);
    }

private:
    bool asked = false, answered = false; ///< since the last frame; by it
    Time next{}, nextOwn{};               ///< for the user, and for what moves by itself
};
