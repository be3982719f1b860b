#include "arrange/TrackNotes.h"

#include "arrange/ArrangeGrid.h"
#include "arrange/ArrangeState.h"
#include "arrange/gestures/HandGesture.h"
#include "arrange/gestures/NotesGesture.h"
#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/PixelPaper.h"
#include "gui/Shapes.h"
#include "sequencer/CSeq.h"
#include "sequencer/PartEdits.h"
#include "ui/NoteDrawing.h"
#include "ui/NoteMouse.h"
#include "ui/Options.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

namespace {

constexpr int eraseRoom = 9;    ///< of a press that erases
constexpr double outside = 0.5; ///< how dark it is where no part is

} // namespace

bool hasNotes(const CSongTrack* songTrack) {
    return songTrack->track->kind == trackMIDI || songTrack->track->kind == trackDrum;
}

EventRows notesRows(const ArrangeRow& row, const CPart* part) {
    const EventRows rows(row.songTrack->track, part, row.keyHeight);
    if (rows.drums()) return rows.from(row.top);
    return rows.from(row.top - (EventRows::keys - 1 - row.topKey) * row.keyHeight);
}

NotePlace notesOf(const ArrangeState& state, const ArrangeRow& row, CPart* part) {
    CSeq* seq = state.seq();
    return {seq,
            row.songTrack->track,
            part,
            notesRows(row, part),
            viewGrid(*seq->snap, state.axis(), state.workspace.options()),
            &state.noteEvents.of(seq, part)};
}

CRect notesBox(const ArrangeState& state, const ArrangeRow& row, CPart* part) {
    const int y = row.top - state.edit.scrollY;
    return asRect(state.axis().xOf(part->pos.load()), y,
                  state.axis().xOf(double(part->pos) + state.seq()->getTicks(part)),
                  y + row.height - 1);
}

void paintNotes(const ArrangeState& state, const ArrangeRow& row, const ArrangeGesture* gesture,
                CGraphic* g, CRect asked) {
    const NoteLook look{clEvent.fillCol, clEventSelected.fillCol, clGrid.fillCol};
    for (auto* part : each<CPart>(row.songTrack->parts)) {
        const CRect box = intersect(notesBox(state, row, part), asked);
        if (box.empty() || part->type == partAudio) continue;
        const NotePlace place = notesOf(state, row, part);
        fillAlpha(g, box, clGrid.fillCol, outside);
        drawPianoroll(g, box, place.rows, state.edit.scrollY);
        const auto* drag = dynamic_cast<const NotesGesture*>(gesture);
        CPart* draft = drag ? drag->shownFor(part) : nullptr;
        PixelPaper paper(g, box);
        if (draft && drag->copying()) {
            NoteLook faint = look;
            faint.strength = outside;
            drawEvents(paper, place, *place.events, state.edit, faint, box);
        }
        const bool changed = draft && draft != part;
        const EventIndex ofDraft = changed ? EventIndex(place.seq, draft) : EventIndex();
        drawEvents(paper, place, changed ? ofDraft : *place.events, state.edit, look, box);
    }
}

namespace {

Press pressedPart(ArrangeGrid& grid, ArrangeState& state, const NotePlace& place, CPoint at,
                  int btn) {
    state.edit.kind = place.part->type == partDrum ? kindDrums : kindNotes;
    state.edit.editPart = place.part;
    state.edit.editEvents = place.part->getEvents();
    auto mouse = std::make_unique<NoteMouse>(state.edit, place);
    const int mode = mouse->partMouseDown(at, btn);
    state.gridChanged();
    if (mode == editIdle) return {};
    if (mode == editPress) {
        const auto menu = [&grid](CPoint) { grid.contextMenu(); };
        return {std::make_unique<HandGesture>(grid, state, menu), mode, eraseRoom};
    }
    if (mode == editErase) {
        std::shared_ptr<NoteMouse> held = std::move(mouse);
        const auto release = [held](CPoint) { held->partMouseUp(); };
        return {std::make_unique<HandGesture>(grid, state, release), mode, eraseRoom};
    }
    if (mode == editLasso) return {std::make_unique<NotesBand>(grid, state, place), mode, 0};
    return {std::make_unique<NotesGesture>(grid, state, std::move(mouse)), mode, 0};
}

} // namespace

Press pressedNotes(ArrangeGrid& grid, ArrangeState& state, const ArrangeRow& row, CPoint at,
                   int btn) {
    CSeq* seq = state.seq();
    CPart* part = partAtPos(state, row, at.x).part;
    if (!part || part->type == partAudio || row.songTrack->track->locked || (btn & modMiddle))
        return {};
    seq->unselectParts();
    part->setSelected(true);
    if (!row.songTrack->track->selected()) {
        seq->unselectTracks();
        seq->selectTrack(row.songTrack, true);
    }
    Press press = pressedPart(grid, state, notesOf(state, row, part), at, btn);
    press.taken = true;
    return press;
}

bool onNoteEdge(const ArrangeState& state, const ArrangeRow& row, CPoint at) {
    CPart* part = partAtPos(state, row, at.x).part;
    if (!part || part->type == partAudio) return false;
    const EventZone zone = NoteMouse::eventAt(notesOf(state, row, part), state.edit, at).zone;
    return zone == zoneStart || zone == zoneEnd;
}

CPart* notesInHand(const ArrangeState& state) {
    CSeq* seq = state.seq();
    const std::vector<PlacedPart> chosen = seq ? selectedParts(seq) : std::vector<PlacedPart>();
    if (chosen.size() != 1) return nullptr;
    CPart* part = chosen.front().part;
    const bool shown = state.rows.showsNotes(chosen.front().songTrack->track);
    return shown && part->type != partAudio && hasSelectedEvents(part) ? part : nullptr;
}
