#include "arrange/gestures/LassoGesture.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "arrange/LanePress.h"
#include "sequencer/song/CSeq.h"
#include "ui/NoteDrawing.h"

void LassoGesture::dragMove(const DragPoint& point) {
    state.edit.start = point.anchor;
    state.edit.current = point.at;
    state.gridChanged();
}

void LassoGesture::choose(const ArrangeRow& row, CPart* part, CRect caught) {
    if (intersect(partBox(state, row, part), caught).empty()) return;
    if (row.take >= 0 || row.notes) return;
    if (row.lane)
        PartMouse::selectWithin(laneOf(state, row, part), state.axis(), caught);
    else
        part->setSelected(true);
}

void LassoGesture::apply(const DragPoint&) {
    const CRect caught = bandBetween(state.edit.start, state.edit.current);
    for (const ArrangeRow& row : state.rows.all()) {
        for (auto* part : row.songTrack->parts) choose(row, part, caught);
    }
    state.gridChanged();
}

void LassoGesture::paintOverlay(CGraphic* g, CRect asked) const {
    drawBand(g, bandBetween(state.edit.start, state.edit.current), asked);
}
