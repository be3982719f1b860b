#pragma once

#include "arrange/gestures/ArrangeGesture.h"
#include "arrange/gestures/SnapGuide.h"

class CPart;

/// Moves the end or, with `atStart`, the start of the selected parts.
class SizeGesture : public ArrangeGesture {
public:
    SizeGesture(ArrangeGrid& over, ArrangeState& shared, CPart* pressed, bool atStart);

    void dragMove(const DragPoint& point) override;
    bool stands() const override;
    void paintOverlay(CGraphic* g, CRect asked) const override;

protected:
    void apply(const DragPoint& point) override;

private:
    CPart* const anchor;
    int anchorTick; ///< of the edge
    const bool start;
    SnapGuide guide;
};
