#pragma once

#include "arrange/Press.h"
#include "ui/PartMouse.h"

/// The lane of a part in a row of its track's automation; without a part all along the view.
PartLane laneOf(const ArrangeState& state, const ArrangeRow& row, CPart* part);
/// As `pressed`, on such a row; without a gesture where the press is the grid's own.
Press pressedLane(ArrangeGrid& grid, ArrangeState& state, const ArrangeRow& row, CPoint at,
                  int btn);
