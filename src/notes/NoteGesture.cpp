#include "notes/NoteGesture.h"

#include "notes/NoteState.h"
#include "sequencer/song/CPart.h"
#include "ui/NoteDrawing.h"
#include "ui/Workspace.h"

// All of them.

void NoteGesture::finish() {
    state.edit.done();
    state.shownChanged();
}

bool NoteGesture::stands() const {
    return state.part && state.part->getEvents() == state.edit.editEvents;
}

CPoint NoteGesture::dragScroll(CPoint by) {
    return scrollView(state, alongOnly ? asPoint(by.x, 0) : by);
}

// Notes.

NoteDrag::NoteDrag(NoteState& shared, std::unique_ptr<NoteMouse> held)
    : NoteGesture(shared), mouse(std::move(held)) {
}

CPart* NoteDrag::draft(const CPart* part) const {
    return mouse->shown(part);
}

void NoteDrag::dragMove(const DragPoint& point) {
    mouse->partMouseMove(point.at, point.anchor, point.btn);
    state.workspace.setStatus(mouse->told());
    state.shownChanged();
}

void NoteDrag::apply(const DragPoint&) {
    mouse->partMouseUp();
}

// The band.

NoteBand::NoteBand(NoteState& shared, std::function<void(CRect)> choose)
    : NoteGesture(shared), select(std::move(choose)) {
}

void NoteBand::dragMove(const DragPoint& point) {
    state.edit.start = point.anchor;
    state.edit.current = point.at;
    state.shownChanged();
}

void NoteBand::apply(const DragPoint& point) {
    select(bandBetween(point.anchor, point.at));
}

void NoteBand::paintOverlay(CGraphic* g, CRect asked) const {
    drawBand(g, bandBetween(state.edit.start, state.edit.current), asked);
}

// The hand.

NoteHand::NoteHand(NoteState& shared, std::function<void()> clicked)
    : NoteGesture(shared), onClick(std::move(clicked)) {
}

void NoteHand::dragBegin(const DragPoint& point) {
    state.edit.mode = editPan;
    last = point.anchor;
}

void NoteHand::dragMove(const DragPoint& point) {
    panView(state, asPoint(point.at.x - last.x, point.at.y - last.y));
    last = point.at;
}

void NoteHand::click(const DragPoint&) {
    onClick();
}
