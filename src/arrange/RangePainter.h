#pragma once

#include "base/Geometry.h"

class ArrangeState;
class CGraphic;
struct TimeRange;

/// A range of time over the rows of its tracks.
void paintRange(CGraphic* g, const ArrangeState& state, const TimeRange& range, CRect asked);
/// Whether a row of the range is at a height of the view.
bool inRows(const ArrangeState& state, const TimeRange& range, int y);
