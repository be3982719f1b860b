#include "engine/SongClock.h"

#include <algorithm>
#include <cmath>

void SongClock::restart() {
    at = 0;
    cut();
}

void SongClock::cut() {
    length = into = 0;
    most = strideFrames;
}

void SongClock::limit(int frames, double reach) {
    most = std::clamp(frames, 1, most);
    nextReach = std::max(nextReach, reach);
}

bool SongClock::due() {
    if (asked && asked.exchange(false)) length = into = 0;
    return into >= length;
}

int SongClock::nextLength() const {
    return std::min(most, strideFrames - int(at % strideFrames));
}

int SongClock::room() {
    return due() ? nextLength() : length - into;
}

void SongClock::begin() {
    into = 0;
    length = nextLength();
    most = strideFrames;
    unit = std::exp2(std::ilogb(nextReach) + 1 - exactBits);
    nextReach = leastReach;
}

void SongClock::advance(int frames) {
    at += frames;
    into += frames;
}

double SongClock::exact(double ticks) const {
    return std::nearbyint(ticks / unit) * unit;
}
