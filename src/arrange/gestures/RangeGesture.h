#pragma once

#include "arrange/gestures/ArrangeGesture.h"
#include "sequencer/edit/RangeEdits.h"

/// Chooses time and tracks from the press to the pointer, by the grid.
class ChooseRangeGesture : public ArrangeGesture {
public:
    using ArrangeGesture::ArrangeGesture;

    void dragMove(const DragPoint& point) override;

protected:
    void apply(const DragPoint& point) override;
};

/// Does something with the range that is chosen: moves it, copies it, or moves one of its ends,
/// which chooses more or less or stretches what is in it.
class RangeGesture : public ArrangeGesture {
public:
    enum class Act { move, copy, start, end, stretch };

    RangeGesture(ArrangeGrid& over, ArrangeState& shared, Act what);

    bool stands() const override;
    void dragMove(const DragPoint& point) override;
    void paintOverlay(CGraphic* g, CRect asked) const override;

protected:
    void apply(const DragPoint& point) override;

private:
    TimeRange become() const; ///< where it comes to
    void edit();
    int tracksMoved(const DragPoint& point) const;

    const Act act;
    const TimeRange before;
};
