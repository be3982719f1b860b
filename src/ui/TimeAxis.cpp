#include "ui/TimeAxis.h"

#include "sequencer/song/TempoMap.h"

#include <algorithm>
#include <cmath>

double TimeAxis::ticksIn(double pixels) const {
    return XToTicks(pixels, perQuarter);
}

double TimeAxis::pixelsIn(double ticks) const {
    return ticksToX(ticks, perQuarter);
}

void TimeAxis::setZoom(double pixelsPerQuarter) {
    if (std::isfinite(pixelsPerQuarter))
        perQuarter = std::clamp(pixelsPerQuarter, leastZoom, mostZoom);
}

void TimeAxis::scrollTo(int64_t pixels) {
    start = std::max<int64_t>(0, pixels);
}

void TimeAxis::zoomAt(double x, double pixelsPerQuarter) {
    const double ticks = ticksAt(x);
    setZoom(pixelsPerQuarter);
    scrollTo(std::llround(pixelsIn(ticks) - x));
}

int64_t TimeAxis::wideX(double ticks) const {
    return std::llround(pixelsIn(ticks));
}

int TimeAxis::xOf(double ticks) const {
    return int(std::clamp<int64_t>(wideX(ticks) - start, -farX, farX));
}

double TimeAxis::ticksAt(double x) const {
    return ticksIn(double(start) + x);
}
