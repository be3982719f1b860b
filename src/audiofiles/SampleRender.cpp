#include "audiofiles/SampleRender.h"

#include "audiofiles/CSample.h"
#include "base/Clones.h"
#include "base/Floats4.h"
#include "base/Numbers.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

constexpr int piece = 64; // frames whose places are worked out at a time
/// Frames that the interpolation may read beyond the last whole step: the fraction of the position
/// carries it up to one further, and two neighbours lie behind.
constexpr int framesBehind = 4;
constexpr double maxPosition = 2147483000.0; // frames; as long as a sample can be

/// The cubic through y0 to y3, at `t` between y1 and y2. T is a float or several.
template <class T>
[[gnu::always_inline]] inline T cubic(const T& y0, const T& y1, const T& y2, const T& y3,
                                      const T& t) {
    const T a = (y1 - y2) * 1.5f + (y0 - y3) * -0.5f;
    const T b = 2.0f * y2 + y0 + (5.0f * y1 + y3) * -0.5f;
    const T c = (y2 - y0) * 0.5f;
    return ((a * t + b) * t + c) * t + y1;
}

/// Places of output frames: the whole source frame and the fraction behind it.
struct Places {
    int frame[piece];
    float fraction[piece];
};

/// Four neighbours of each of four places, turned so that a vector holds one neighbour of each.
struct Neighbours {
    Floats4 y0, y1, y2, y3;
};

[[gnu::always_inline]] inline Neighbours loadNeighbours(const float* before, const int* at) {
    Neighbours n{loadFloats(before + at[0]), loadFloats(before + at[1]), loadFloats(before + at[2]),
                 loadFloats(before + at[3])};
    transpose(n.y0, n.y1, n.y2, n.y3);
    return n;
}

/// Of 16 bit frames they come out 65536 times as large, since that is how they widen at least cost.
[[gnu::always_inline]] inline Neighbours loadNeighbours(const std::int16_t* before, const int* at) {
    using Shorts8 = std::int16_t __attribute__((vector_size(16)));
    using Ints4 = std::int32_t __attribute__((vector_size(16)));
    using Longs2 = long long __attribute__((vector_size(16)));
    const auto pair = [&](int a, int b) {
        Longs2 v;
        std::memcpy(&v, before + a, 8);
        std::memcpy(reinterpret_cast<char*>(&v) + 8, before + b, 8);
        return __builtin_shufflevector(Shorts8(v), Shorts8(v), 0, 4, 1, 5, 2, 6, 3, 7);
    };
    const Ints4 first = Ints4(pair(at[0], at[1])), second = Ints4(pair(at[2], at[3]));
    const Shorts8 low = Shorts8(__builtin_shufflevector(first, second, 0, 4, 1, 5));
    const Shorts8 high = Shorts8(__builtin_shufflevector(first, second, 2, 6, 3, 7));
    const Shorts8 zero{};
    const auto widen = [](const Shorts8& v) { return __builtin_convertvector(Ints4(v), Floats4); };
    return {widen(__builtin_shufflevector(zero, low, 0, 8, 1, 9, 2, 10, 3, 11)),
            widen(__builtin_shufflevector(zero, low, 4, 12, 5, 13, 6, 14, 7, 15)),
            widen(__builtin_shufflevector(zero, high, 0, 8, 1, 9, 2, 10, 3, 11)),
            widen(__builtin_shufflevector(zero, high, 4, 12, 5, 13, 6, 14, 7, 15))};
}

/// The factors that make 1 of full scale, of single frames and of `Neighbours`.
constexpr float unitOf(const float*) {
    return 1.0f;
}
constexpr float unitOf(const std::int16_t*) {
    return 1.0f / 32768.0f;
}
constexpr float wideUnitOf(const float*) {
    return 1.0f;
}
constexpr float wideUnitOf(const std::int16_t*) {
    return 1.0f / 32768.0f / 65536.0f;
}

/// Reads `count` frames, up to `piece`, of `source` at `places`. Four at a time are loaded with
/// their neighbours and turned, so that a vector holds one neighbour of each. The unit is a power
/// of two, so it may wait for the end.
template <class Value>
[[gnu::always_inline]] inline void readPlaces(const Value* source, const Places& places, int count,
                                              float* out) {
    const Value* before = source - 1;
    constexpr float unit = unitOf(static_cast<const Value*>(nullptr));
    constexpr float wide = wideUnitOf(static_cast<const Value*>(nullptr));
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        const int* at = places.frame + i;
        const Neighbours n = loadNeighbours(before, at);
        saveFloats(out + i, cubic(n.y0, n.y1, n.y2, n.y3, loadFloats(places.fraction + i)) * wide);
    }
    for (; i < count; i++) {
        const Value* y = before + places.frame[i];
        out[i] =
            cubic(float(y[0]), float(y[1]), float(y[2]), float(y[3]), places.fraction[i]) * unit;
    }
}

/// Whether every place is a whole frame, one after the other: the cubic is that frame there.
bool areFrames(double fraction, double speed) {
    return fraction == 0.0 && speed == 1.0;
}

void makePlaces(double fraction, double speed, int from, int count, Places& places) {
    for (int i = 0; i < count; i++) {
        const double x = fraction + (from + i) * speed;
        places.frame[i] = int(x);
        places.fraction[i] = float(x - places.frame[i]);
    }
}

/// As it is, frame by frame.
void copyValues(const float* from, int count, float* out) {
    std::copy_n(from, count, out);
}
void copyValues(const std::int16_t* from, int count, float* out) {
    for (int i = 0; i < count; i++) out[i] = float(from[i]) * unitOf(from);
}

/// `count` frames of one or two planes, all of whose neighbours can be read. `fraction` is the
/// position within the first frame; a second plane may be missing.
template <class Value>
[[gnu::always_inline]] inline void readPlanes(const Value* first, const Value* second,
                                              double fraction, double speed, int count, float* left,
                                              float* right) {
    if (areFrames(fraction, speed)) {
        copyValues(first, count, left);
        if (second) copyValues(second, count, right);
        return;
    }
    Places places; // NOLINT(cppcoreguidelines-pro-type-member-init): filled before it is read
    for (int done = 0; done < count; done += piece) {
        const int n = std::min(piece, count - done);
        makePlaces(fraction, speed, done, n, places);
        readPlaces(first, places, n, left + done);
        if (second) readPlaces(second, places, n, right + done);
    }
}

SONDRAVA_CLONES void interpolate(const float* first, const float* second, double fraction,
                                 double speed, int count, float* left, float* right) {
    readPlanes(first, second, fraction, speed, count, left, right);
}

SONDRAVA_CLONES void interpolateShorts(const std::int16_t* source, double fraction, double speed,
                                       int count, float* out) {
    readPlanes<std::int16_t>(source, nullptr, fraction, speed, count, out, nullptr);
}

/// The same at the ends of a sample of `frames` frames and beyond: outside all is zero.
void interpolateEdge(const float* source, int frames, double pos, double speed, int count,
                     float* out) {
    for (int i = 0; i < count; i++) {
        const double x = pos + i * speed;
        const bool near = x > -(CSample::padFrames - 1) && x < frames + CSample::padFrames - 3;
        const int n = near ? int(std::floor(x)) : 0;
        const float* y = source + n;
        out[i] = near ? cubic(y[-1], y[0], y[1], y[2], float(x - n)) : 0.0f;
    }
}

/// The same of 16 bit frames, which have no zeros around them.
void interpolateShortsEdge(const std::int16_t* source, int frames, double pos, double speed,
                           int count, float* out) {
    const auto value = [&](int i) {
        return i >= 0 && i < frames ? float(source[i]) * unitOf(source) : 0.0f;
    };
    for (int i = 0; i < count; i++) {
        const double x = pos + i * speed;
        const bool near = x > -2.0 && x < frames + 1.0;
        const int n = near ? int(std::floor(x)) : 0;
        out[i] =
            near ? cubic(value(n - 1), value(n), value(n + 1), value(n + 2), float(x - n)) : 0.0f;
    }
}

void renderShorts(const std::int16_t* source, int frames, double pos, double speed, int count,
                  float* out) {
    if (pos >= 1.0 && speed >= 0.0 && pos + (count - 1) * speed < frames - 2)
        interpolateShorts(source + int(pos), pos - int(pos), speed, count, out);
    else
        interpolateShortsEdge(source, frames, pos, speed, count, out);
}

/// Two frames of stereo at two places, from the four interleaved frames around each.
[[gnu::always_inline]] inline Floats4 readPair(const float* a, const float* b, float ta, float tb) {
    const Floats4 a01 = loadFloats(a), a23 = loadFloats(a + 4);
    const Floats4 b01 = loadFloats(b), b23 = loadFloats(b + 4);
    const Floats4 y0 = __builtin_shufflevector(a01, b01, 0, 1, 4, 5);
    const Floats4 y1 = __builtin_shufflevector(a01, b01, 2, 3, 6, 7);
    const Floats4 y2 = __builtin_shufflevector(a23, b23, 0, 1, 4, 5);
    const Floats4 y3 = __builtin_shufflevector(a23, b23, 2, 3, 6, 7);
    return cubic(y0, y1, y2, y3, Floats4{ta, ta, tb, tb});
}

/// As `interpolate`, of interleaved stereo from the frame before position 0 on.
SONDRAVA_CLONES void interpolateStereo(const float* source, double fraction, double speed,
                                       int count, float* left, float* right) {
    if (areFrames(fraction, speed)) {
        for (int i = 0; i < count; i++) {
            left[i] = source[2 + i * 2];
            right[i] = source[3 + i * 2];
        }
        return;
    }
    Places places; // NOLINT(cppcoreguidelines-pro-type-member-init): filled before it is read
    for (int done = 0; done < count; done += piece) {
        const int n = std::min(piece, count - done);
        makePlaces(fraction, speed, done, n, places);
        for (int i = 0; i < n; i += 2) {
            const int j = std::min(i + 1, n - 1); // an odd one out is read twice
            const Floats4 out = readPair(source + places.frame[i] * 2, source + places.frame[j] * 2,
                                         places.fraction[i], places.fraction[j]);
            left[done + i] = out[0];
            right[done + i] = out[1];
            left[done + j] = out[2];
            right[done + j] = out[3];
        }
    }
}

/// Frames that `count` output frames read, with the one before; too many to count are 2^31.
long long sourceFrames(int count, double speed) {
    return 1 + framesBehind + std::min<long long>(asInt64(count * speed), 1ll << 31);
}

bool fitsScratch(const CSample& sample, long long wanted) {
    return wanted * sample.frameBytes <= maxScratchRead;
}

/// Where the pass begins in the source; a mirrored one from its other end.
double firstPosition(const SampleSpan& span, int count) {
    if (!span.reverse) return span.pos;
    return double(span.start) + span.end - span.pos - count * span.speed;
}

bool canStream(double pos, double speed) {
    return std::fabs(pos) < maxPosition && speed >= 0.0;
}

void renderStreamed(const CSample& sample, const SampleSpan& span, int count, float* left,
                    float* right, unsigned char* scratch, ReadMode mode) {
    const double pos = firstPosition(span, count);
    if (!canStream(pos, span.speed) || !fitsScratch(sample, sourceFrames(count, span.speed))) {
        if (canStream(pos, span.speed)) CSample::notices.fetchOr(noticeBufferTooSmall);
        std::fill_n(left, count, 0.0f);
        std::fill_n(right, count, 0.0f);
        return;
    }
    const int frame = int(std::floor(pos));
    getData32(sample, scratch, frame, count, span.speed, mode, span.reverse != 0);
    const float* source = reinterpret_cast<const float*>(scratch);
    if (sample.chs == 1)
        interpolate(source + 1, nullptr, pos - frame, span.speed, count, left, right);
    else
        interpolateStereo(source, pos - frame, span.speed, count, left, right);
}

} // namespace

double wholeSteps(double placeOrSpeed, int frames) {
    constexpr int exactBits = 52, most = 30;
    const int bits = exactBits - std::min(most, int(std::bit_width(unsigned(frames) | 0xFFFFFu)));
    const double unit = 1.0 / double(std::int64_t(1) << bits);
    return std::nearbyint(placeOrSpeed / unit) * unit;
}

int renderMemory(const CSample& sample, double pos, double speed, int count, float* left,
                 float* right) {
    if (const std::int16_t* shorts = sample.shortData()) {
        renderShorts(shorts, sample.frames, pos, speed, count, left);
        return 1;
    }
    const float* first = sample.floatData(0);
    if (!first) return 0;
    const float* second = sample.floatData(1);
    const int frames = sample.frames;
    const double last = pos + (count - 1) * speed;
    if (pos >= 0.0 && last < frames && speed >= 0.0) {
        const int start = int(pos);
        interpolate(first + start, second ? second + start : nullptr, pos - start, speed, count,
                    left, right);
    } else {
        interpolateEdge(first, frames, pos, speed, count, left);
        if (second) interpolateEdge(second, frames, pos, speed, count, right);
    }
    return second ? 2 : 1;
}

bool render(const CSample& sample, const SampleSpan& span, int count, float* left, float* right,
            unsigned char* scratch, ReadMode mode) {
    if (!sample.valid || sample.chs < 1 || sample.chs > 2 || count < 1) return false;
    if (renderMemory(sample, firstPosition(span, count), span.speed, count, left, right) == 0)
        renderStreamed(sample, span, count, left, right, scratch, mode);
    if (sample.chs == 1) std::copy_n(left, count, right);
    if (span.reverse) {
        std::reverse(left, left + count);
        std::reverse(right, right + count);
    }
    return true;
}

void primeReader(const CSample& sample, const SampleSpan& span, int count) {
    const double pos = firstPosition(span, count);
    if (!sample.valid || !sample.reader || !canStream(pos, span.speed)) return;
    const long long wanted = sourceFrames(count, span.speed);
    if (!fitsScratch(sample, wanted)) return;
    sample.reader->prime(std::int64_t(std::floor(pos)) - 1, int(wanted), span.reverse != 0);
}

bool render_2(const CSample& sample, double pos, double speed, int count, float* left,
              float* right) {
    if (sample.bits != 16) return false;
    const int sides = renderMemory(sample, pos, speed, count, left, right);
    if (sides == 1) std::copy_n(left, count, right);
    return sides > 0;
}

void getData32(const CSample& sample, unsigned char* out, int frame, int count, double speed,
               ReadMode mode, bool backward) {
    const long long wanted = sourceFrames(count, speed);
    if (!fitsScratch(sample, wanted)) {
        CSample::notices.fetchOr(noticeBufferTooSmall);
        std::memset(out, 0, maxScratchRead);
        return;
    }
    float* values = reinterpret_cast<float*>(out);
    const std::int64_t first = std::int64_t(frame) - 1;
    if (mode != ReadMode::direct && sample.reader)
        sample.reader->getData(first, int(wanted), values, backward, mode == ReadMode::live);
    else
        sample.readFrames(first, int(wanted), values);
}
