#pragma once

#include <cerrno>
#include <cstdint>
#include <ctime>

constexpr int64_t nsPerSecond = 1'000'000'000;
constexpr int64_t nsPerMs = 1'000'000;

/// Nanoseconds of the monotonic clock.
inline int64_t nowNs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * nsPerSecond + now.tv_nsec;
}

/// Sleeps until `nowNs` reaches `ns`; a time in the past returns at once.
inline void sleepUntilNs(int64_t ns) {
    const timespec until{ns / nsPerSecond, ns % nsPerSecond};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
}

/// The length of `frames` frames at `rate` Hz. Exact to a nanosecond at any count below 2^63.
inline int64_t framesToNs(int64_t frames, int64_t rate) {
    return frames / rate * nsPerSecond + frames % rate * nsPerSecond / rate;
}
