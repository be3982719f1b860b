#include "engine/GraphClock.h"

#include "base/Numbers.h"

#include <algorithm>

namespace {

/// Ticks a second at one beat a minute.
constexpr double ticksPerBeatSecond = ticksPerQuarter / 60.0;

} // namespace

double GraphClock::framesToTicks(double f) const {
    return f * ticksPerBeatSecond * double(tempoNow) / double(rate);
}

double GraphClock::ticksToFrames(double ticks) const {
    return double(rate) * ticks / (double(tempoNow) * ticksPerBeatSecond);
}

void GraphClock::setClockRate(double hz) {
    rate = float(hz);
    invRate = float(1.0 / hz);
    framesInMs = std::max(asRound(hz * 0.001), 1);
}
