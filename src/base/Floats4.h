#pragma once

#include <cstring>

/// Four floats in one register of every 64-bit machine; `+`, `*`, `<` and the rest act on each.
using Floats4 = float __attribute__((vector_size(16)));

/// From and to four floats, aligned or not.
inline Floats4 loadFloats(const float* p) {
    Floats4 v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
inline void saveFloats(float* p, const Floats4& v) {
    std::memcpy(p, &v, sizeof v);
}

/// Turns four rows into four columns, in place.
[[gnu::always_inline]] inline void transpose(Floats4& r0, Floats4& r1, Floats4& r2, Floats4& r3) {
    const Floats4 low01 = __builtin_shufflevector(r0, r1, 0, 4, 1, 5);
    const Floats4 high01 = __builtin_shufflevector(r0, r1, 2, 6, 3, 7);
    const Floats4 low23 = __builtin_shufflevector(r2, r3, 0, 4, 1, 5);
    const Floats4 high23 = __builtin_shufflevector(r2, r3, 2, 6, 3, 7);
    r0 = __builtin_shufflevector(low01, low23, 0, 1, 4, 5);
    r1 = __builtin_shufflevector(low01, low23, 2, 3, 6, 7);
    r2 = __builtin_shufflevector(high01, high23, 0, 1, 4, 5);
    r3 = __builtin_shufflevector(high01, high23, 2, 3, 6, 7);
}
