#pragma once

#include "instruments/Lanes.h"

/// Up to sixteen pairs of operators side by side with their filters, of voices of any sounds, and
/// what mixes some of them.
///
/// Per lane and frame, with the table of one sine cycle read at trunc(x * 65535) & 0xFFFF:
///     m = sine(feed2 * last m + modulator phase)
///     c = sine(phaseMod * ((modRing - 1) m + modRing m^2) + feed1 * last s + carrier phase)
///     s = (oscRing - 1) c + oscRing c^2
/// Phases are set back by whole turns of the table, so that a note sounds the same however long it
/// is held. Increments are below 10,000 cycles a frame. The filter gets direct * s + cross * s of
/// the neighbour lane (0 and 1, 2 and 3, ...).
struct alignas(64) OscLanes {
    static constexpr int lanesInAll = 16;
    static constexpr int blocks = lanesInAll / maxLanes;
    /// Frames of the longest run, and some that are worked out behind it as zeros.
    static constexpr int room = (SlicePlan::longest / maxLanes + 1) * maxLanes;
    static constexpr double cycle = 65535.0; ///< steps of the table

    double carPhase[lanesInAll] = {}, carIncr[lanesInAll] = {}, carLast[lanesInAll] = {};
    double modPhase[lanesInAll] = {}, modIncr[lanesInAll] = {}, modLast[lanesInAll] = {};
    double feed1[lanesInAll] = {}, feed1Step[lanesInAll] = {}; ///< in steps, as the next two
    double feed2[lanesInAll] = {}, feed2Step[lanesInAll] = {};
    double phaseMod[lanesInAll] = {}, phaseModStep[lanesInAll] = {};
    double modRing[lanesInAll] = {}, oscRing[lanesInAll] = {};
    float direct[lanesInAll] = {}, cross[lanesInAll] = {};
    int dist[lanesInAll] = {}; ///< tanh behind the filter: all bits or none
    StripLanes strips[blocks];
    alignas(64) float sound[lanesInAll][room]; ///< of the latest run, before the gains

    StripLanes& stripOf(int lane) { return strips[lane / maxLanes]; }
    const StripLanes& stripOf(int lane) const { return strips[lane / maxLanes]; }
    /// A lane that nobody sounds in, but that counts in the sum.
    void leaveEmpty(int lane);
    /// Sets the phases of a lane back: before each slice, which lasts a millisecond at most.
    void setBack(int lane);
    /// Works out `n` frames of lanes 0 to `lanes` - 1, up to the longest slice.
    void run(int lanes, int n);
    /// Adds up to eight lanes of the latest run, of `n` frames, from lane `first` on, to both
    /// outputs, and raises their meters. The sum is the same wherever the lanes lie.
    void mix(int first, int lanes, float* left, float* right, int n);
    /// Once the latest run is mixed: the ramps of the gains go on.
    void pass(int lanes, int n);
    /// Raises a sound's meters by what some lanes have given since the last call.
    void meter(int first, int lanes, CSound* owner);

private:
    alignas(64) float wave[room][lanesInAll]; ///< of the operators, then of the filters
};
