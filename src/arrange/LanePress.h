#pragma once

#include "arrange/Press.h"
#include "sequencer/EventEdits.h"
#include "ui/PartMouse.h"

#include <vector>

/// The lane of a part in a row of its track's automation.
PartLane laneOf(const ArrangeState& state, const ArrangeRow& row, CPart* part);
/// As `pressed`, on such a row; without a gesture where the press is the grid's own.
Press pressedLane(ArrangeGrid& grid, ArrangeState& state, const ArrangeRow& row, CPoint at,
                  int btn);
/// The slots of parts, in lanes that show, with selected points.
std::vector<PartSlot> selectedPoints(const ArrangeState& state);
/// No point of any lane that shows is selected any more.
void unselectPoints(const ArrangeState& state);
