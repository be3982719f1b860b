#pragma once

#include "arrange/gestures/ArrangeGesture.h"
#include "arrange/gestures/SnapGuide.h"

class CPart;

/// Moves the selected parts along the song and from track to track, or copies of them.
class MoveGesture : public ArrangeGesture {
public:
    MoveGesture(ArrangeGrid& over, ArrangeState& shared, CPart* pressed);

    void dragMove(const DragPoint& point) override;
    bool stands() const override;
    void paintOverlay(CGraphic* g, CRect asked) const override;

protected:
    void apply(const DragPoint& point) override;

private:
    int tracksMoved(const DragPoint& point) const;
    void tell() const;
    void chooseAlone();
    void paintRipple(CGraphic* g, CRect asked) const;

    CPart* const anchor;
    const int anchorTick;
    SnapGuide guide;
    bool moved = false; ///< the pointer has been elsewhere
};
