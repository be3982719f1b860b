#pragma once

#include "arrange/gestures/ArrangeGesture.h"

struct ArrangeRow;

/// A rubber band, which selects the parts that it touches and the points of automation within it,
/// with Shift beside those that are.
class LassoGesture : public ArrangeGesture {
public:
    using ArrangeGesture::ArrangeGesture;

    void dragMove(const DragPoint& point) override;
    void paintOverlay(CGraphic* g, CRect asked) const override;

protected:
    void apply(const DragPoint& point) override;

private:
    void choose(const ArrangeRow& row, CPart* part, CRect caught);
};
