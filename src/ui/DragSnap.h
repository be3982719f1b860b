#pragma once

class CSnap;
class Options;
class TimeAxis;

/// By how many ticks a drag moves a place that stood at `anchor`, so that the place, and not the
/// way, comes to the grid: a drag of `delta` to the right never goes back, nor one to the left on.
/// `grid` in ticks; 1 and below is none.
int snappedDelta(int grid, int anchor, int delta);

/// The index of a grid (as `CSnap::index`) whose steps stand apart on such an axis and whose next
/// finer one's don't. More than a bar, where even bars stand closer, counts on: each doubles.
int adaptiveIndex(const CSnap& snap, const TimeAxis& axis);
/// The step of the grid in a view, in ticks, whether snap is on or not: as the song has it, or with
/// the option as the zoom has it, both triplet or dotted as the song says.
int gridStep(const CSnap& snap, const TimeAxis& axis, const Options& options);
/// What places come to in a view: that step, or 1 while snap is off.
int gridTicks(CSnap& snap, const TimeAxis& axis, const Options& options);

/// The grid of a view as it is now.
struct ViewGrid {
    int step = 1;          ///< ticks, whether snap is on or not
    int snap = 1;          ///< ticks that places come to, 1 for none
    bool relative = false; ///< drags go by steps of it, wherever they began

    /// As `snappedDelta`; `free` leaves the grid.
    int delta(int anchor, int dragged, bool free) const;
};
ViewGrid viewGrid(CSnap& snap, const TimeAxis& axis, const Options& options);
