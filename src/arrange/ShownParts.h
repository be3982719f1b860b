#pragma once

#include "arrange/LanePoints.h"
#include "base/Geometry.h"

#include <vector>

class ArrangeState;
class CPart;
class CSongTrack;

/// A part that can be seen in the grid, whole or in part, a take of it, a point of automation, or a
/// note or hit in a row of its own.
struct ShownPart {
    CSongTrack* songTrack;
    CPart* part;
    CRect box;                            ///< in the grid
    LanePoint point{};                    ///< none: the part
    const ArrangeRow* takeRow = nullptr;  ///< of a take of it; null: the part
    const ArrangeRow* notesRow = nullptr; ///< of a note of it; null: the part
    CBaseEvent* event = nullptr;          ///< that note
    int tick = 0;                         ///< of that note, in the part's own time

    bool selected() const;
};

/// From the upper row to the lower one, and in each from the left to the right.
std::vector<ShownPart> partsInView(const ArrangeState& state);
