#pragma once

#include "base/Numbers.h"

#include <algorithm>
#include <cmath>

// What the song counts in, and what exchange files count in.

constexpr double ticksPerBeat = 960.0;
constexpr int mostBend = 16383; ///< of 14 bits
constexpr float mostData = 127.0f;

inline double toBeats(double ticks) {
    return ticks / ticksPerBeat;
}
inline int toTicks(double beats) {
    return limitTicks(int64_t(std::llround(std::clamp(beats, -2e6, 2e6) * ticksPerBeat)));
}
/// Faders and sends count squared.
inline double toGain(float fader) {
    return double(fader) * double(fader);
}
inline float toFader(double gain) {
    return float(std::sqrt(std::clamp(gain, 0.0, 1.0)));
}

// Devices of this program by the ids in a file.
constexpr const char* dawSampler = "sondrava.sampler";
constexpr const char* dawKit = "sondrava.kit";
constexpr const char* dawRack = "sondrava.rack";
