#pragma once

#include "arrange/RowLayout.h"
#include "arrange/TakeRows.h"
#include "arrange/gestures/ArrangeGesture.h"

#include <memory>

/// A swipe over a take: the part plays it there. A press alone is for what lies between the cuts.
class TakeGesture : public ArrangeGesture {
public:
    TakeGesture(ArrangeGrid& over, ArrangeState& shared, const ArrangeRow& take, CPart* of);

    bool stands() const override;
    void dragMove(const DragPoint& point) override;
    const Takes* draftTakes(const CPart* content) const override;

protected:
    void apply(const DragPoint& point) override;
    void click(const DragPoint& point) override;

private:
    const ArrangeRow row;
    CPart* const part;
    TakeSpan swiped;
    std::unique_ptr<Takes> draft; ///< null before the first move
};
