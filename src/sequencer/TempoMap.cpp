#include "sequencer/TempoMap.h"

#include "base/CList.h"
#include "base/Numbers.h"
#include "sequencer/Points.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace {

/// Walks the points until `visit` answers false.
template <class F>
void eachPoint(const CList& tempos, F visit) {
    for (auto* point : each<CTempoPart>(tempos))
        if (!visit(point)) return;
}

} // namespace

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

double tempoFramesToTicks(const CList& tempos, float tempoBefore, double pos, double frames,
                          int rate) {
    if (rate < 1) return 0.0;
    double tempo = double(tempoBefore), left = frames, ticks = 0.0;
    const auto advance = [&](std::int64_t wholeFrames) {
        ticks = std::trunc(ticks + double(wholeFrames) * ticksPerSecondPerBpm * tempo / rate);
    };
    eachPoint(tempos, [&](CTempoPart* point) {
        const int tick = point->pos;
        if (tick >= pos) {
            const std::int64_t span = asInt64(tick - pos);
            const std::int64_t spanFrames = std::min(
                asInt64(double(span) * rate / (tempo * ticksPerSecondPerBpm)), asInt64(left));
            if (spanFrames > 0) {
                advance(spanFrames);
                pos = tick;
                left -= double(spanFrames);
            }
        }
        if (left == 0.0) return false;
        tempo = double(point->getTempo());
        return true;
    });
    if (left > 0.0) advance(asInt64(left));
    return ticks;
}

double tempoTicksToFrames(const CList& tempos, float tempoBefore, int pos, int ticks, int rate) {
    if (rate < 1) return 0.0;
    double tempo = double(tempoBefore), frames = 0.0;
    std::int64_t left = ticks;
    const auto advance = [&](std::int64_t span) {
        frames += double(span) * rate / (tempo * ticksPerSecondPerBpm);
        left -= span;
    };
    eachPoint(tempos, [&](CTempoPart* point) {
        const std::int64_t span = std::int64_t(point->pos) - pos;
        if (span > 0) {
            advance(std::min(span, left));
            pos = point->pos;
        }
        if (left == 0) return false;
        tempo = double(point->getTempo());
        return true;
    });
    if (left > 0) advance(left);
    return frames;
}

CTempoPart* lastTempoAt(const CList& tempos, int pos) {
    CTempoPart* found = nullptr;
    eachPoint(tempos, [&](CTempoPart* point) {
        if (point->pos <= pos) found = point;
        return true;
    });
    return found;
}

CTempoPart* nextTempoAfter(const CList& tempos, int pos) {
    CTempoPart* found = nullptr;
    eachPoint(tempos, [&](CTempoPart* point) {
        if (point->pos > pos) found = point;
        return !found;
    });
    return found;
}

int ticksToNextTempo(const CList& tempos, double pos) {
    const std::int64_t from = asInt64(pos);
    int ticks = -1;
    eachPoint(tempos, [&](CTempoPart* point) {
        if (point->pos >= from) ticks = int(point->pos - from);
        return ticks < 0;
    });
    return ticks;
}
