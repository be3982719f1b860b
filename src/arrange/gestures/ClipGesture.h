#pragma once

#include "arrange/PartHandles.h"
#include "arrange/gestures/ArrangeGesture.h"

/// Drags a fade or the gain of the clips of the selected parts by a handle of one of them.
class ClipGesture : public ArrangeGesture {
public:
    ClipGesture(ArrangeGrid& over, ArrangeState& shared, CPart* pressed, CRect partBox,
                PartHandle taken);

    bool stands() const override;
    void dragMove(const DragPoint& point) override;
    void paintOverlay(CGraphic* g, CRect asked) const override;
    CPoint dragScroll(CPoint) override { return {}; }

protected:
    void apply(const DragPoint& point) override;

private:
    double perPixel() const; ///< milliseconds
    double dragged(const DragPoint& point) const;

    CPart* const anchor;
    const CRect box;
    const PartHandle handle;
    double before = 0, value = 0; ///< milliseconds, or the way of a fader: 0 to 1
};
