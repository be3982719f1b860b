#pragma once

#include "arrange/gestures/ArrangeGesture.h"

/// Drags linked copies out of the end of a part, which follow it in a row.
class LoopGesture : public ArrangeGesture {
public:
    LoopGesture(ArrangeGrid& over, ArrangeState& shared, CPart* pressed);

    bool stands() const override;
    void dragMove(const DragPoint& point) override;
    void paintOverlay(CGraphic* g, CRect asked) const override;

protected:
    void apply(const DragPoint& point) override;

private:
    static constexpr int mostCopies = 1000;

    CPart* const anchor;
    int copies = 0;
};
