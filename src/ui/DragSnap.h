#pragma once

class CSnap;

/// By how many ticks a drag moves a place that stood at `anchor`, so that the place, and not the
/// way, comes to the grid: a drag of `delta` to the right never goes back, nor one to the left on.
/// `grid` in ticks; 1 and below is none.
int snappedDelta(int grid, int anchor, int delta);
