#include "ui/DragSnap.h"

#include "sequencer/TempoMap.h"

int snappedDelta(int grid, int anchor, int delta) {
    if (grid <= 1 || delta == 0) return delta;
    const int moved = snapped(grid, anchor + delta, true) - anchor;
    if (delta > 0 && moved < 0) return moved + grid;
    if (delta < 0 && moved > 0) return moved - grid;
    return moved;
}
