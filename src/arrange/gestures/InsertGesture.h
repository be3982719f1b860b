#pragma once

#include "arrange/gestures/ArrangeGesture.h"
#include "sequencer/edit/MoveEdits.h"

class CSongTrack;

/// Puts an empty part on a track, which is dragged until the release.
class InsertGesture : public ArrangeGesture {
public:
    InsertGesture(ArrangeGrid& over, ArrangeState& shared, CSongTrack* onto, PartPlace first)
        : ArrangeGesture(over, shared), songTrack(onto), place(first) {}

    void dragMove(const DragPoint& point) override;
    void paintOverlay(CGraphic* g, CRect asked) const override;

protected:
    void apply(const DragPoint& point) override;

private:
    CSongTrack* const songTrack;
    const PartPlace place;
};
