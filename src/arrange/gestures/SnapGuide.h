#pragma once

#include "base/Geometry.h"

#include <vector>

class ArrangeState;
class CGraphic;

/// Places that a drag comes to beside the grid: the ends of parts that are not dragged, markers,
/// and the locators. A line shows the one that it has come to.
class SnapGuide {
public:
    explicit SnapGuide(const ArrangeState& state);

    /// As `ArrangeState::snappedBy`, but to such a place where that lies nearer. Without a grid, to
    /// none.
    int delta(const ArrangeState& state, int grid, int anchor, int dragged);
    void paint(CGraphic* g, const ArrangeState& state, CRect asked) const;

private:
    static constexpr int reach = 6; ///< pixels

    std::vector<int> places; ///< ticks, in order
    int shown = -1;          ///< where the line stands, -1 nowhere
};
