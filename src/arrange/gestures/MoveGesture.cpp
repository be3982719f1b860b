#include "arrange/gestures/MoveGesture.h"

#include "arrange/ArrangeGrid.h"
#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "arrange/gestures/Overlay.h"
#include "base/Numbers.h"
#include "engine/CSnap.h"
#include "gui/Keys.h"
#include "sequencer/edit/MoveEdits.h"
#include "sequencer/song/Bars.h"
#include "sequencer/song/CSeq.h"
#include "ui/PlaceText.h"
#include "ui/Workspace.h"

MoveGesture::MoveGesture(ArrangeGrid& over, ArrangeState& shared, CPart* pressed)
    : ArrangeGesture(over, shared), anchor(pressed), anchorTick(pressed->pos), guide(shared) {
    const MoveRange range = moveRange(shared.seq());
    CSeqMouseEdit& edit = shared.edit;
    edit.minDelta = range.minTicks;
    edit.maxDelta = range.maxTicks;
    edit.minTrack = range.minTracks;
    edit.maxTrack = range.maxTracks;
}

int MoveGesture::tracksMoved(const DragPoint& point) const {
    const int scroll = state.edit.scrollY;
    const ArrangeRow* from = state.rows.nearest(point.anchor.y + scroll);
    const ArrangeRow* to = state.rows.nearest(point.at.y + scroll);
    return from && to ? asMinMax(to->track - from->track, state.edit.minTrack, state.edit.maxTrack)
                      : 0;
}

bool MoveGesture::stands() const {
    return state.seq() && state.seq()->partToSongTrack(anchor);
}

void MoveGesture::dragMove(const DragPoint& point) {
    CSeqMouseEdit& edit = state.edit;
    const int dragged = asRound(state.axis().ticksIn(point.at.x - point.anchor.x));
    const int delta = asMinMax(guide.delta(state, dragGrid(state, point.btn), anchorTick, dragged),
                               edit.minDelta, edit.maxDelta);
    const int tracks = tracksMoved(point);
    moved = moved || point.at != point.anchor;
    if (moved) tellAt(point, dragText(state.seq(), anchorTick, delta));
    if (delta == edit.deltaPos && tracks == edit.deltaY) return;
    edit.deltaPos = delta;
    edit.deltaY = tracks;
    tell();
    state.gridChanged();
}

void MoveGesture::tell() const {
    const CSeqMouseEdit& edit = state.edit;
    const char* verb = edit.mode == editCopy ? "Copy to " : "Move to ";
    CStr text = verb + placeText(state.seq(), anchorTick + edit.deltaPos) + "  (" +
                deltaText(state.seq(), edit.deltaPos) + ")";
    if (edit.deltaY != 0) text += CStr(", tracks: ") + asStr(edit.deltaY);
    state.workspace.setStatus(text);
}

/// A click on one of several selected parts chooses it alone.
void MoveGesture::chooseAlone() {
    state.seq()->unselectParts();
    anchor->setSelected(true);
    state.gridChanged();
}

void MoveGesture::apply(const DragPoint&) {
    const CSeqMouseEdit& edit = state.edit;
    if (edit.deltaPos == 0 && edit.deltaY == 0) {
        const bool opens = edit.startBtn & modDouble;
        if (moved || edit.mode != editMove) return;
        if (opens)
            state.workspace.openPart(anchor);
        else
            chooseAlone();
        return;
    }
    if (edit.mode == editCopy)
        copyParts(state.seq(), edit.deltaPos, edit.deltaY, edit.startBtn & modShift);
    else
        state.tell(moveParts(state.seq(), edit.deltaPos, edit.deltaY, state.ripple));
}

/// What goes along.
void MoveGesture::paintRipple(CGraphic* g, CRect asked) const {
    for (const RippleShift& shift : rippleOfMove(state.seq(), state.ripple, state.edit.deltaPos)) {
        const CSongTrack* songTrack = state.seq()->partToSongTrack(shift.part);
        const ArrangeRow* row = songTrack ? state.rows.of(songTrack) : nullptr;
        if (row) outlinePart(g, state, *row, shift.part, shift.ticks, 0, asked);
    }
}

void MoveGesture::paintOverlay(CGraphic* g, CRect asked) const {
    guide.paint(g, state, asked);
    const CSeqMouseEdit& edit = state.edit;
    if (edit.mode == editMove && state.ripple != Ripple::off) paintRipple(g, asked);
    const auto& tracks = state.seq()->getProg()->tracks;
    eachSelectedPart(state, [&](const ArrangeRow& row, CPart* part) {
        auto* target = tracks.items(row.track + edit.deltaY);
        const ArrangeRow* onto = target ? state.rows.of(target) : nullptr;
        const bool taken = target && target->acceptPart(part);
        outlinePart(g, state, taken && onto ? *onto : row, part, edit.deltaPos, 0, asked);
    });
}
