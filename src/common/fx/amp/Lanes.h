#pragma once

#include <algorithm>
#include <cmath>

/// Both sides of one frame: left, right.
using Sides = double __attribute__((vector_size(16)));

/// Four consecutive samples of the left side, then the same four of the right. Passed by reference,
/// as machines with and without such registers disagree on how to pass it by value.
using Floats8 = float __attribute__((vector_size(32)));

/// The last sample of `before` and the first three of `now`, of each side.
[[gnu::always_inline]] inline void delayByOne(const Floats8& before, const Floats8& now,
                                              Floats8& out) {
    out = __builtin_shufflevector(before, now, 3, 8, 9, 10, 7, 12, 13, 14);
}
/// The last two of `before` and the first two of `now`.
[[gnu::always_inline]] inline void delayByTwo(const Floats8& before, const Floats8& now,
                                              Floats8& out) {
    out = __builtin_shufflevector(before, now, 2, 3, 8, 9, 6, 7, 12, 13);
}
/// The last sample of each side, four times.
[[gnu::always_inline]] inline void spreadLast(const Floats8& in, Floats8& out) {
    out = __builtin_shufflevector(in, in, 3, 3, 3, 3, 7, 7, 7, 7);
}
[[gnu::always_inline]] inline void squareRoots(const Floats8& in, Floats8& out) {
    for (int i = 0; i < 8; i++) out[i] = std::sqrt(in[i]);
}

/// Below this a state that rings out is cut to 0, far from where numbers become slow.
constexpr double stateFloor = 1e-20;

/// Whether all that the vectors hold is 0.
template <class... Vector>
inline bool allZero(const Vector&... states) {
    const auto zero = [](const auto& v) {
        for (int i = 0; i < int(sizeof v / sizeof v[0]); i++)
            if (v[i] != 0) return false;
        return true;
    };
    return (zero(states) && ...);
}

/// The states of one filter, side by side: none goes before the others have died away too.
template <class... Vector>
inline void cutTiny(Vector&... states) {
    constexpr int lanes = std::min({int(sizeof(Vector) / sizeof(states[0]))...});
    for (int i = 0; i < lanes; i++)
        if ((std::fabs(double(states[i])) + ...) < stateFloor) ((states[i] = 0), ...);
}
