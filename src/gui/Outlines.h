#pragma once

#include "gui/RenderTarget.h"
#include "gui/Shapes.h"

#include <vector>

class CGraphic;

using OutlinePoints = std::vector<RenderTarget::Point>; ///< device pixels

/// Part of a path on a surface, without points that follow themselves; a closed one ends where it
/// began.
OutlinePoints outlineOf(const CGraphic& g, const CPath::Part& part);
/// Around all of two or more points and so much more on each side.
CRect outlineBounds(const OutlinePoints& points, double reach);
/// Both sides of a line of a width along two or more points: left and right of each joint, by
/// turns.
OutlinePoints strokeSides(const OutlinePoints& line, double width);
