#include "arrange/gestures/LoopGesture.h"

#include "arrange/ArrangeState.h"
#include "arrange/gestures/Overlay.h"
#include "base/Numbers.h"
#include "sequencer/edit/ClipEdits.h"
#include "sequencer/song/CSeq.h"
#include "ui/Workspace.h"

LoopGesture::LoopGesture(ArrangeGrid& over, ArrangeState& shared, CPart* pressed)
    : ArrangeGesture(over, shared), anchor(pressed) {
}

bool LoopGesture::stands() const {
    return state.seq() && state.seq()->partToSongTrack(anchor);
}

void LoopGesture::dragMove(const DragPoint& point) {
    const double wide = state.axis().pixelsIn(state.seq()->getTicks(anchor));
    const int now = asMinMax(asRound((point.at.x - point.anchor.x) / wide), 0, mostCopies);
    state.edit.current = point.at;
    if (now == copies) return;
    copies = now;
    state.workspace.setStatus(CStr("Linked copies: ") + asStr(copies));
    state.gridChanged();
}

void LoopGesture::apply(const DragPoint&) {
    if (copies > 0) state.tell(loopPart(state.seq(), anchor, copies));
}

void LoopGesture::paintOverlay(CGraphic* g, CRect asked) const {
    const CSongTrack* songTrack = state.seq()->partToSongTrack(anchor);
    const ArrangeRow* row = songTrack ? state.rows.of(songTrack) : nullptr;
    const int length = state.seq()->getTicks(anchor);
    for (int i = 1; row && i <= copies; i++)
        outlineSpan(g, state, *row, double(anchor->pos) + double(i) * length, length, asked);
}
