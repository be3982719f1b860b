#include "arrange/gestures/InsertGesture.h"

#include "arrange/ArrangeState.h"
#include "arrange/gestures/Overlay.h"
#include "base/Numbers.h"
#include "ui/PlaceText.h"
#include "ui/Workspace.h"

void InsertGesture::dragMove(const DragPoint& point) {
    CSeqMouseEdit& edit = state.edit;
    const int dragged = asRound(state.axis().ticksIn(point.at.x - point.anchor.x));
    const int delta = asMinMax(state.snappedBy(dragGrid(state, point.btn), place.pos, dragged),
                               -place.pos, maxTicks - place.pos);
    tellAt(point, placeText(state.seq(), place.pos + delta));
    if (delta == edit.deltaPos) return;
    edit.deltaPos = delta;
    state.workspace.setStatus("New part at " + placeText(state.seq(), place.pos + delta));
    state.gridChanged();
}

void InsertGesture::apply(const DragPoint&) {
    CPart* made = nullptr;
    state.tell(insertPart(state.seq(), songTrack,
                          PartPlace{place.pos + state.edit.deltaPos, place.length}, state.ripple,
                          made));
}

void InsertGesture::paintOverlay(CGraphic* g, CRect asked) const {
    if (const ArrangeRow* row = state.rows.of(songTrack))
        outlineSpan(g, state, *row, double(place.pos) + state.edit.deltaPos, place.length, asked);
}
