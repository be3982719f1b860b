#include "arrange/gestures/SlipGesture.h"

#include "arrange/ArrangeState.h"
#include "arrange/gestures/Overlay.h"
#include "base/Numbers.h"
#include "sequencer/edit/ClipEdits.h"
#include "ui/DragSnap.h"
#include "ui/PlaceText.h"
#include "ui/Workspace.h"

SlipGesture::SlipGesture(ArrangeGrid& over, ArrangeState& shared) : ArrangeGesture(over, shared) {
    const SlipRange range = slipRange(shared.seq());
    shared.edit.minDelta = range.least;
    shared.edit.maxDelta = range.greatest;
}

void SlipGesture::dragMove(const DragPoint& point) {
    CSeqMouseEdit& edit = state.edit;
    const int dragged = asRound(state.axis().ticksIn(point.at.x - point.anchor.x));
    edit.current = point.at;
    edit.deltaPos = asMinMax(snappedDelta(dragGrid(state, point.btn), 0, dragged), edit.minDelta,
                             edit.maxDelta);
    state.workspace.setStatus("Slip the content by " + deltaText(state.seq(), edit.deltaPos));
}

void SlipGesture::apply(const DragPoint&) {
    if (state.edit.deltaPos != 0) slipParts(state.seq(), state.edit.deltaPos);
}
