#include "ui/DragSnap.h"

#include "base/Numbers.h"
#include "engine/CSnap.h"
#include "sequencer/song/TempoMap.h"
#include "ui/Options.h"
#include "ui/TimeAxis.h"

namespace {

constexpr int barIndex = 6, mostIndex = barIndex + 10;
constexpr double stepRoom = 12; ///< pixels from one step of the grid to the next

int ticksOf(const CSnap& snap, int index) {
    return snap.getTicks(asMin(index, barIndex)) << asMax(0, index - barIndex);
}

} // namespace

int snappedDelta(int grid, int anchor, int delta) {
    if (grid <= 1 || delta == 0) return delta;
    const int moved = snapped(grid, anchor + delta, true) - anchor;
    if (delta > 0 && moved < 0) return moved + grid;
    if (delta < 0 && moved > 0) return moved - grid;
    return moved;
}

int adaptiveIndex(const CSnap& snap, const TimeAxis& axis) {
    int index = 0;
    while (index < mostIndex && axis.pixelsIn(ticksOf(snap, index)) < stepRoom) index++;
    return index;
}

int gridStep(const CSnap& snap, const TimeAxis& axis, const Options& options) {
    return options.adaptiveGrid.on() ? ticksOf(snap, adaptiveIndex(snap, axis)) : snap.getTicks();
}

int gridTicks(CSnap& snap, const TimeAxis& axis, const Options& options) {
    return snap.val() == 1 && !snap.active ? 1 : gridStep(snap, axis, options);
}

int ViewGrid::delta(int anchor, int dragged, bool free) const {
    return snappedDelta(free ? 1 : snap, relative ? 0 : anchor, dragged);
}

ViewGrid viewGrid(CSnap& snap, const TimeAxis& axis, const Options& options) {
    return {gridStep(snap, axis, options), gridTicks(snap, axis, options),
            options.relativeSnap.on()};
}
