#include "sequencer/song/TempoMap.h"

#include "base/CList.h"
#include "base/Numbers.h"
#include "sequencer/song/Points.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>

int snapped(int grid, int value, bool round) {
    if (grid < 1) return value;
    std::int64_t wide = value;
    if (round && grid >= 2) wide += value < 0 ? -(grid / 2) : grid / 2;
    wide -= wide % grid;
    return saturate(wide);
}

double ticksToX(double ticks, double zoom) {
    return ticks * zoom / quarterTicks;
}

double XToTicks(double x, double zoom) {
    return x * quarterTicks / zoom;
}

CStr ticksToStr(int ticks) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3d:%.3d", ticks / quarterTicks + 1, ticks % quarterTicks);
    return text;
}

double TempoStretch::frames(double ticks, double rate) const {
    if (slope == 0.0) return ticks * rate / (bpm * ticksPerSecondPerBpm);
    return rate / (slope * ticksPerSecondPerBpm) * std::log1p(slope * ticks / bpm);
}

double TempoStretch::ticks(double frames, double rate) const {
    if (slope == 0.0) return frames * ticksPerSecondPerBpm * bpm / rate;
    return bpm / slope * std::expm1(frames * ticksPerSecondPerBpm * slope / rate);
}

void TempoMap::refresh(const ListOf<CTempoPart>& tempos, unsigned changes) {
    if (made && version == tempos.version() && knownChanges == changes) return;
    made = true;
    version = tempos.version();
    knownChanges = changes;
    points.clear();
    for (auto* part : tempos) {
        const double tick = part->pos, bpm = double(part->getTempo());
        double seconds = 0.0;
        if (!points.empty()) {
            Point& last = points.back();
            const double span = tick - last.tick;
            if (last.part->ramp && span > 0.0) last.on.slope = (bpm - last.on.bpm) / span;
            seconds = last.seconds + last.on.frames(span, 1.0);
        }
        points.push_back({tick, seconds, {bpm, 0.0}, part});
    }
}

TempoMap::Room TempoMap::roomFor(size_t count) {
    Room room;
    room.reserve(count);
    return room;
}

void TempoMap::takeRoom(Room& room) {
    if (room.capacity() <= points.capacity()) return;
    points.swap(room);
    made = false;
}

size_t TempoMap::begun(double tick) const {
    return size_t(std::ranges::upper_bound(points, tick, {}, &Point::tick) - points.begin());
}

size_t TempoMap::passed(double tick) const {
    return size_t(std::ranges::lower_bound(points, tick, {}, &Point::tick) - points.begin());
}

/// How it goes on from a tick, where so many points hold, the last of which may yet be to come.
TempoStretch TempoMap::stretch(float before, size_t begunPoints, double tick) const {
    if (begunPoints == 0) return {double(before), 0.0};
    const Point& last = points[begunPoints - 1];
    return {last.on.bpmAt(std::max(0.0, tick - last.tick)), last.on.slope};
}

double TempoMap::bpmAt(float before, double tick) const {
    return stretch(before, begun(tick), tick).bpm;
}

double TempoMap::ticksToFrames(float before, double from, double ticks, int rate) const {
    if (rate < 1 || !(ticks > 0.0)) return 0.0;
    const double to = from + ticks;
    const size_t first = begun(from), last = begun(to);
    const TempoStretch begin = stretch(before, first, from);
    if (first == last) return begin.frames(ticks, rate);
    const Point &second = points[first], &end = points[last - 1];
    const double sum = begin.frames(second.tick - from, rate) +
                       (end.seconds - second.seconds) * rate + end.on.frames(to - end.tick, rate);
    // What makes up whole frames by their stretches does so in sum.
    const double whole = std::floor(sum + 0.5);
    return std::fabs(sum - whole) < 1e-6 ? whole : sum;
}

double TempoMap::framesToTicks(float before, double from, double frames, int rate) const {
    if (rate < 1) return 0.0;
    double left = frames, ticks = 0.0;
    for (size_t next = passed(from);; next++) {
        const TempoStretch now = stretch(before, next, from);
        const auto advance = [&](std::int64_t whole) {
            ticks = std::trunc(ticks + now.ticks(double(whole), rate));
            left -= double(whole);
        };
        if (next == points.size()) {
            if (left > 0.0) advance(asInt64(left));
            return ticks;
        }
        const double tick = points[next].tick;
        const double span = double(asInt64(tick - from));
        const std::int64_t whole = std::min(asInt64(now.frames(span, rate)), asInt64(left));
        if (whole > 0) {
            advance(whole);
            from = tick;
        }
        if (left == 0.0) return ticks;
    }
}

namespace {

/// Frames of a stride on a line, so that it is never further off than a fraction of a frame.
constexpr int mostOnLine = 256;

} // namespace

TempoMap::Stride TempoMap::stride(float before, double from, int most, double rate) const {
    size_t next = begun(from);
    TempoStretch now = stretch(before, next, from);
    if (rate < 1.0) return {now.bpm, most};
    if (now.slope != 0.0) most = std::min(most, mostOnLine);
    int frames = most;
    for (; next < points.size(); now = stretch(before, ++next, from)) {
        const int whole = asRound(now.frames(points[next].tick - from, rate));
        frames = std::min(most, whole);
        if (whole > 0) break; // else it is nearer than half a frame, and holds from here on
    }
    frames = std::max(1, next < points.size() ? frames : most);
    if (now.slope == 0.0) return {now.bpm, frames};
    return {now.ticks(frames, rate) * rate / (frames * ticksPerSecondPerBpm), frames};
}

CTempoPart* TempoMap::lastAt(double tick) const {
    const size_t count = begun(tick);
    return count ? points[count - 1].part : nullptr;
}

CTempoPart* TempoMap::nextAfter(double tick) const {
    const size_t next = begun(tick);
    return next < points.size() ? points[next].part : nullptr;
}

CTempoPart* TempoMap::nextFrom(double tick) const {
    const size_t next = passed(tick);
    return next < points.size() ? points[next].part : nullptr;
}
