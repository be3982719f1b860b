#include "arrange/gestures/NotesGesture.h"

#include "arrange/ArrangeState.h"
#include "sequencer/song/CSeq.h"
#include "ui/NoteDrawing.h"
#include "ui/Workspace.h"

#include <utility>

namespace {

/// Whether the part still has the content that was pressed.
bool standsIn(const ArrangeState& state, const NotePlace& place) {
    return state.seq() && state.seq()->partToSongTrack(place.part) &&
           place.part->getEvents() == state.edit.editEvents;
}

} // namespace

NotesGesture::NotesGesture(ArrangeGrid& over, ArrangeState& shared,
                           std::unique_ptr<NoteMouse> pressed)
    : ArrangeGesture(over, shared), mouse(std::move(pressed)) {
}

bool NotesGesture::stands() const {
    return state.seq() && mouse->stands();
}

void NotesGesture::dragMove(const DragPoint& point) {
    mouse->partMouseMove(point.at, point.anchor, point.btn);
    state.workspace.setStatus(mouse->told());
    state.gridChanged();
}

CPart* NotesGesture::shownFor(const CPart* part) const {
    return mouse->shown(part);
}

NotesBand::NotesBand(ArrangeGrid& over, ArrangeState& shared, const NotePlace& where)
    : ArrangeGesture(over, shared), place(where) {
}

bool NotesBand::stands() const {
    return standsIn(state, place);
}

void NotesBand::dragMove(const DragPoint& point) {
    state.edit.start = point.anchor;
    state.edit.current = point.at;
    state.gridChanged();
}

void NotesBand::apply(const DragPoint& point) {
    NoteMouse::selectWithin(place, state.edit, bandBetween(point.anchor, point.at));
    state.gridChanged();
    place.seq->songNotices.raise(SeqNotice::parts);
}

void NotesBand::paintOverlay(CGraphic* g, CRect asked) const {
    drawBand(g, bandBetween(state.edit.start, state.edit.current), asked);
}
