#pragma once

#include "base/Geometry.h"

class ArrangeGesture;
class ArrangeState;
class PixelPaper;
struct ArrangeRow;

/// Paints a row of automation: the strips of the parts, and the points and lines in them. `gesture`
/// may show a draft in place of one of them; null for none.
void paintLane(const ArrangeState& state, const ArrangeRow& row, const ArrangeGesture* gesture,
               PixelPaper& paper, CRect asked);
