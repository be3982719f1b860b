#pragma once

#include "base/Geometry.h"
#include "sequencer/song/EventFind.h"

class ArrangeState;
class CPart;
class CSongTrack;
struct ArrangeRow;

struct PartHit {
    CPart* part = nullptr;     ///< null where there is none
    EventZone zone = zoneBody; ///< the body, the start or the end
};

// Places of parts in the grid, in its pixels; what is painted and what is hit go by them.

/// What a row has for its parts, from one side of the view to the other.
CRect rowBox(const ArrangeState& state, const ArrangeRow& row);
/// The box of a part in a row. Its sides lie within `TimeAxis::farX`.
CRect partBox(const ArrangeState& state, const ArrangeRow& row, CPart* part);
/// The part at x of a row: of those there the one of the highest layer, and of these the last.
PartHit partAtPos(const ArrangeState& state, const ArrangeRow& row, int x);
/// Pixels at each end of a part that size it.
int edgeWidth(int partWidth);
