#pragma once

#include "arrange/gestures/ArrangeGesture.h"

/// Moves what the selected parts show under them, while they stay.
class SlipGesture : public ArrangeGesture {
public:
    SlipGesture(ArrangeGrid& over, ArrangeState& shared);

    void dragMove(const DragPoint& point) override;

protected:
    void apply(const DragPoint& point) override;
};
