#pragma once

#include "base/Atomic.h"

#include <cstdint>

/// Slowest rate that the engine runs at.
constexpr double minRate = 8000.0;
/// Beats per minute of a new project.
constexpr float usualTempo = 120.0f;
/// Of song time, to a quarter note.
constexpr int ticksPerQuarter = 960;

/// How long a block is, and where in the song it lies: what it takes to place an event in it.
/// Written by who holds the graph.
class GraphClock {
public:
    int frames = 1024; ///< of the longest block
    Shared<float> rate{44100.0f}, invRate{1.0f / 44100.0f};
    Shared<int> framesInMs{44};         ///< round(rate * 0.001), at least 1
    Shared<double> pos{0.0};            ///< ticks
    Shared<float> tempoNow{usualTempo}; ///< beats per minute
    Shared<int64_t> framesPlayed{0};    ///< since position 0
    bool positionJumped = false;        ///< during the block after a transport change
    unsigned blocks = 0;                ///< counts those that ran; graph holder

    /// At the constant tempo of this block.
    double framesToTicks(double f) const;
    double ticksToFrames(double ticks) const;

protected:
    void setClockRate(double hz);
};
