#pragma once

#include "instruments/Lanes.h"

/// Up to eight pairs of operators side by side with their strips.
///
/// Per lane and frame, with the table of one sine cycle read at trunc(x * 65535) & 0xFFFF:
///     m = sine(feed2 * last m + modulator phase)
///     c = sine(phaseMod * ((modRing - 1) m + modRing m^2) + feed1 * last s + carrier phase)
///     s = (oscRing - 1) c + oscRing c^2
/// Phases are set back by whole turns of the table, so that a note sounds the same however long it
/// is held. Increments are below 10,000 cycles a frame. The filter gets direct * s + cross * s of
/// the neighbour lane (0 and 1, 2 and 3, ...).
struct alignas(64) OscLanes {
    double carPhase[maxLanes] = {}, carIncr[maxLanes] = {}, carLast[maxLanes] = {};
    double modPhase[maxLanes] = {}, modIncr[maxLanes] = {}, modLast[maxLanes] = {};
    static constexpr double cycle = 65535.0;               ///< steps of the table
    double feed1[maxLanes] = {}, feed1Step[maxLanes] = {}; ///< in steps, as the next two
    double feed2[maxLanes] = {}, feed2Step[maxLanes] = {};
    double phaseMod[maxLanes] = {}, phaseModStep[maxLanes] = {};
    float direct[maxLanes] = {}, cross[maxLanes] = {};
    StripLanes strip;

    double modRing = 0.0, oscRing = 0.0; ///< of the sound
    bool dist = false;                   ///< tanh behind the filter

    /// Sets the phases of a lane back: before each slice, which lasts a millisecond at most.
    void setBack(int lane);
    /// Adds `n` frames of lanes 0 to `lanes` - 1, 4 or 8, to both outputs.
    void run(int lanes, float* left, float* right, int n);
};
