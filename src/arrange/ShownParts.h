#pragma once

#include "arrange/LanePoints.h"
#include "base/Geometry.h"

#include <vector>

class ArrangeState;
class CPart;
class CSongTrack;

/// A part that can be seen in the grid, whole or in part, a take of it, or a point of automation.
struct ShownPart {
    CSongTrack* songTrack;
    CPart* part;
    CRect box;                           ///< in the grid
    LanePoint point{};                   ///< none: the part
    const ArrangeRow* takeRow = nullptr; ///< of a take of it; null: the part

    bool selected() const;
};

/// From the upper row to the lower one, and in each from the left to the right.
std::vector<ShownPart> partsInView(const ArrangeState& state);
