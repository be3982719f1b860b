#pragma once

#include "base/CStr.h"

#include <cmath>
#include <cstdint>
#include <limits>

/// Limit of every tick that is read from a file, either way.
constexpr int maxTicks = 1 << 30;

constexpr int asMin(int a, int b) {
    return a < b ? a : b;
}
constexpr int asMax(int a, int b) {
    return a > b ? a : b;
}
/// Within `lo` to `hi`; `lo` is tested first, so it wins where the two are crossed and `v` is
/// small.
constexpr int asMinMax(int v, int lo, int hi) {
    if (v < lo) return lo;
    return v > hi ? hi : v;
}
/// Puts the smaller one first; `order` is the same.
void sort(int& a, int& b);
void order(int& a, int& b);
inline void inc(int& v, int by) {
    v += by;
}
inline void dec(int& v, int by) {
    v -= by;
}

/// Within `lo` to `hi`; not-a-number gives `lo`. `asTrim` is the same.
constexpr float fLimit(float v, float lo, float hi) {
    if (!(v > lo)) return lo;
    return v > hi ? hi : v;
}
constexpr double fLimit(double v, double lo, double hi) {
    if (!(v > lo)) return lo;
    return v > hi ? hi : v;
}
constexpr float asTrim(float v, float lo, float hi) {
    return fLimit(v, lo, hi);
}

/// Cuts the fraction off. Saturates; not-a-number gives 0.
constexpr int asInt(double v) {
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    if (v >= highest) return std::numeric_limits<int>::max();
    if (v <= lowest) return std::numeric_limits<int>::min();
    return v == v ? int(v) : 0;
}
/// floor(v + 0.5): halves go up, below 0 too. Saturates; not-a-number gives 0.
inline int asRound(double v) {
    return asInt(std::floor(v + 0.5));
}
/// As `asInt`, for frames and other long counts.
constexpr int64_t asInt64(double v) {
    constexpr double bound = 9223372036854775808.0; // 2 to the power of 63
    if (v >= bound) return std::numeric_limits<int64_t>::max();
    if (v < -bound) return std::numeric_limits<int64_t>::min();
    return v == v ? int64_t(v) : 0;
}
inline int64_t asRound64(double v) {
    return asInt64(std::floor(v + 0.5));
}
/// A 64-bit number as the nearest int.
constexpr int saturate(int64_t v) {
    constexpr int64_t lowest = std::numeric_limits<int>::min();
    constexpr int64_t highest = std::numeric_limits<int>::max();
    return int(v < lowest ? lowest : v > highest ? highest : v);
}
/// A tick of unknown origin within plus or minus `maxTicks`.
constexpr int limitTicks(int64_t ticks) {
    return int(ticks < -maxTicks ? -maxTicks : ticks > maxTicks ? maxTicks : ticks);
}

CStr asStr(int v); ///< as %d
CStr asStr(unsigned v);
CStr asStr(long v);
CStr asStr(unsigned long v);
CStr asStr(long long v);
CStr asStr(unsigned long long v);
CStr asStr(float v); ///< as %f
CStr asStr(double v);
/// Through a printf format with exactly one conversion, for integers one of d i u x X c, for floats
/// one of e f g, and any number of %%. Another format is returned as it stands.
CStr asStrFormat(int v, const CStr& format);
CStr asStrFormat(float v, const CStr& format);
CStr asStrFormat(double v, const CStr& format);

/// The number at the start of a text of digits, minus, comma and point, with at most one minus and
/// one comma or point. Anything else, and the empty text, gives `def`, or 0. Saturates.
int strAsInt(const CStr& s);
int strAsIntDef(const CStr& s, int def);
/// What stands in front of the first "="; all of it when there is none.
CStr stripValue(const CStr& s);

/// Reversed byte order.
constexpr uint16_t swap2(uint16_t v) {
    return uint16_t(v << 8 | v >> 8);
}
constexpr uint32_t swap3(uint32_t v) { ///< of the lower three bytes
    return (v & 0xff) << 16 | (v & 0xff00) | (v >> 16 & 0xff);
}
constexpr uint32_t swap4(uint32_t v) {
    return v << 24 | (v & 0xff00) << 8 | (v >> 8 & 0xff00) | v >> 24;
}
constexpr short swapShort(short v) {
    return short(swap2(uint16_t(v)));
}
constexpr int swapInt(int v) {
    return int(swap4(uint32_t(v)));
}
/// Of the four bytes of a float. The result may be any bit pattern: it is for storing.
float swapFloat(float v);

void asSleep(int ms); ///< nothing below 1
/// Milliseconds of the wall clock in 32 bits. It wraps: `msBetween` tells differences.
int asTimeInMS();
constexpr int msBetween(int from, int to) {
    return int(unsigned(to) - unsigned(from));
}
