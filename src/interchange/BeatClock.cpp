#include "interchange/BeatClock.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double secondsPerMinute = 60.0;
constexpr double lowest = 1.0, highest = 9999.0;
constexpr double flat = 1e-9;

double kept(double bpm) {
    return bpm >= lowest ? std::min(bpm, highest) : lowest;
}

} // namespace

/// Of a slope: the integral of 60 / (bpm + slope b) over the beats.
double BeatClock::Stretch::secondsAt(double beats) const {
    if (std::fabs(slope) < flat) return beats * secondsPerMinute / bpm;
    return secondsPerMinute / slope * std::log1p(slope * beats / bpm);
}

double BeatClock::Stretch::beatsAt(double past) const {
    if (std::fabs(slope) < flat) return past * bpm / secondsPerMinute;
    return bpm / slope * std::expm1(past * slope / secondsPerMinute);
}

BeatClock::BeatClock(double bpm, std::vector<Point> points) {
    std::ranges::stable_sort(points, {}, &Point::beat);
    stretches.push_back({0.0, 0.0, kept(bpm), 0.0});
    for (size_t i = 0; i < points.size(); i++) {
        const Point& p = points[i];
        const double from = kept(p.bpm), beat = std::max(p.beat, 0.0);
        double slope = 0.0;
        if (p.ramp && i + 1 < points.size() && points[i + 1].beat > beat)
            slope = (kept(points[i + 1].bpm) - from) / (points[i + 1].beat - beat);
        const Stretch begun{beat, toSeconds(beat), from, slope};
        if (stretches.back().beat >= beat)
            stretches.back() = begun;
        else
            stretches.push_back(begun);
    }
}

double BeatClock::toSeconds(double beat) const {
    const auto next = std::ranges::upper_bound(stretches, beat, {}, &Stretch::beat);
    const Stretch& on = next == stretches.begin() ? *next : *(next - 1);
    if (beat < on.beat) return on.seconds + (beat - on.beat) * secondsPerMinute / on.bpm;
    return on.seconds + on.secondsAt(beat - on.beat);
}

double BeatClock::toBeats(double seconds) const {
    const auto next = std::ranges::upper_bound(stretches, seconds, {}, &Stretch::seconds);
    const Stretch& on = next == stretches.begin() ? *next : *(next - 1);
    if (seconds < on.seconds) return on.beat + (seconds - on.seconds) * on.bpm / secondsPerMinute;
    return on.beat + on.beatsAt(seconds - on.seconds);
}
