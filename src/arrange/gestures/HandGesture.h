#pragma once

#include "arrange/gestures/ArrangeGesture.h"

#include <functional>
#include <utility>

/// Drags the view by hand. A press that does not become a drag does what its button is for.
class HandGesture : public ArrangeGesture {
public:
    HandGesture(ArrangeGrid& over, ArrangeState& shared, std::function<void(CPoint)> clicked)
        : ArrangeGesture(over, shared), onClick(std::move(clicked)) {}

    void dragBegin(const DragPoint& point) override;
    void dragMove(const DragPoint& point) override;
    CPoint dragScroll(CPoint) override { return {}; }

protected:
    void apply(const DragPoint&) override {}
    void click(const DragPoint& point) override;

private:
    std::function<void(CPoint)> onClick;
    CPoint last{};
};
