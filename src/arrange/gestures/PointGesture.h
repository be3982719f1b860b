#pragma once

#include "arrange/gestures/ArrangeGesture.h"
#include "ui/PartMouse.h"

#include <memory>

/// Points of automation, moved, copied, bent or put in.
class PointGesture : public ArrangeGesture {
public:
    PointGesture(ArrangeGrid& over, ArrangeState& shared, std::unique_ptr<PartMouse> pressed);

    bool stands() const override;
    void dragMove(const DragPoint& point) override;
    CPart* draftOf(const CPart* part, int slot) const override;

protected:
    void apply(const DragPoint& point) override;

private:
    std::unique_ptr<PartMouse> mouse;
};
