#pragma once

#include "arrange/gestures/ArrangeGesture.h"

/// A rubber band, which selects the parts that it touches, with Shift beside those that are.
class LassoGesture : public ArrangeGesture {
public:
    using ArrangeGesture::ArrangeGesture;

    void dragMove(const DragPoint& point) override;
    void paintOverlay(CGraphic* g, CRect asked) const override;

protected:
    void apply(const DragPoint& point) override;

private:
    CRect band() const;
};
