#include "arrange/gestures/SizeGesture.h"

#include "arrange/ArrangeState.h"
#include "arrange/gestures/Overlay.h"
#include "base/Numbers.h"
#include "sequencer/edit/MoveEdits.h"
#include "sequencer/song/CSeq.h"
#include "ui/PlaceText.h"
#include "ui/Workspace.h"

SizeGesture::SizeGesture(ArrangeGrid& over, ArrangeState& shared, CPart* pressed, bool atStart)
    : ArrangeGesture(over, shared), anchor(pressed), anchorTick(pressed->pos), start(atStart),
      guide(shared) {
    if (!start) anchorTick += shared.seq()->getTicks(anchor);
    const ResizeRange range = resizeRange(shared.seq(), start);
    shared.edit.minDelta = range.least;
    shared.edit.maxDelta = range.greatest;
}

bool SizeGesture::stands() const {
    return state.seq() && state.seq()->partToSongTrack(anchor);
}

void SizeGesture::dragMove(const DragPoint& point) {
    CSeqMouseEdit& edit = state.edit;
    const int dragged = asRound(state.axis().ticksIn(point.at.x - point.anchor.x));
    const int delta = asMinMax(guide.delta(state, dragGrid(state, point.btn), anchorTick, dragged),
                               edit.minDelta, edit.maxDelta);
    const int length = state.seq()->getTicks(anchor) + (start ? -delta : delta);
    tellAt(point, dragText(state.seq(), anchorTick, delta) + "   " + spanText(state.seq(), length));
    if (delta == edit.deltaPos) return;
    edit.deltaPos = delta;
    state.workspace.setStatus(CStr(start ? "Start at " : "End at ") +
                              placeText(state.seq(), anchorTick + delta) + "  (" +
                              deltaText(state.seq(), delta) + ")");
    state.gridChanged();
}

void SizeGesture::apply(const DragPoint&) {
    const int delta = state.edit.deltaPos;
    if (delta == 0) return;
    if (start)
        resizePartsStart(state.seq(), delta);
    else
        resizeParts(state.seq(), delta, true);
}

void SizeGesture::paintOverlay(CGraphic* g, CRect asked) const {
    guide.paint(g, state, asked);
    const int delta = state.edit.deltaPos;
    eachSelectedPart(state, [&](const ArrangeRow& row, CPart* part) {
        outlinePart(g, state, row, part, start ? delta : 0, start ? -delta : delta, asked);
    });
}
