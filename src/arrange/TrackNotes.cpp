#include "arrange/TrackNotes.h"

#include "arrange/ArrangeGrid.h"
#include "arrange/ArrangeState.h"
#include "arrange/SongRange.h"
#include "arrange/gestures/HandGesture.h"
#include "arrange/gestures/NotesGesture.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/PixelPaper.h"
#include "gui/Shapes.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "ui/NoteDrawing.h"
#include "ui/NoteMouse.h"
#include "ui/Options.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

namespace {

constexpr int eraseRoom = 9;    ///< of a press that erases
constexpr int viewMargin = 24;  ///< pixels at the sides of what keys lead to
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
    for (auto* part : row.songTrack->parts) {
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

/// The hand over such a row: keys scroll within it.
class NotesHand : public HandGesture {
public:
    NotesHand(ArrangeGrid& over, ArrangeState& shared, const ArrangeRow& row,
              std::function<void(CPoint)> clicked)
        : HandGesture(over, shared, std::move(clicked)), track(row.songTrack->track),
          topKey(row.topKey), keyHeight(row.keyHeight) {}

    void dragMove(const DragPoint& point) override {
        if (track->kind == trackDrum) return HandGesture::dragMove(point);
        const int y = state.edit.scrollY, by = (point.at.y - point.anchor.y) / keyHeight;
        HandGesture::dragMove(point);
        state.scrollTo(state.axis().scroll(), y);
        state.rows.scrollKeys(track, topKey + by);
        state.rowsChanged();
    }

private:
    const CTrack* track;
    const int topKey, keyHeight;
};

/// Other views of the part follow.
void notesChosen(ArrangeState& state) {
    state.gridChanged();
    state.seq()->songNotices.raise(SeqNotice::parts);
}

void choosePart(ArrangeState& state, const ArrangeRow& row, CPart* part) {
    CSeq* seq = state.seq();
    seq->unselectParts();
    part->setSelected(true);
    state.notesPart = part;
    if (row.songTrack->track->selected()) return;
    seq->unselectTracks();
    seq->selectTrack(row.songTrack, true);
}

Press pressedPart(ArrangeGrid& grid, ArrangeState& state, const ArrangeRow& row,
                  const NotePlace& place, CPoint at, int btn) {
    state.edit.kind = place.part->type == partDrum ? kindDrums : kindNotes;
    state.edit.editPart = place.part;
    state.edit.editEvents = place.part->getEvents();
    auto mouse = std::make_unique<NoteMouse>(state.edit, place);
    const int mode = mouse->partMouseDown(at, btn);
    notesChosen(state);
    if (mode == editIdle) return {};
    if (mode == editPress) {
        const auto menu = [&grid](CPoint) { grid.contextMenu(); };
        return {std::make_unique<NotesHand>(grid, state, row, menu), mode, eraseRoom};
    }
    if (mode == editErase) {
        std::shared_ptr<NoteMouse> held = std::move(mouse);
        const auto release = [held](CPoint) { held->partMouseUp(); };
        return {std::make_unique<NotesHand>(grid, state, row, release), mode, eraseRoom};
    }
    if (mode == editLasso) return {std::make_unique<NotesBand>(grid, state, place), mode, 0};
    return {std::make_unique<NotesGesture>(grid, state, std::move(mouse)), mode, 0};
}

} // namespace

Press pressedNotes(ArrangeGrid& grid, ArrangeState& state, const ArrangeRow& row, CPoint at,
                   int btn) {
    CPart* part = partAtPos(state, row, at.x).part;
    if (!part || part->type == partAudio || row.songTrack->track->locked || (btn & modMiddle))
        return {};
    choosePart(state, row, part);
    Press press = pressedPart(grid, state, row, notesOf(state, row, part), at, btn);
    press.taken = true;
    return press;
}

bool onNoteEdge(const ArrangeState& state, const ArrangeRow& row, CPoint at) {
    CPart* part = partAtPos(state, row, at.x).part;
    if (!part || part->type == partAudio) return false;
    const EventZone zone = NoteMouse::eventAt(notesOf(state, row, part), state.edit, at).zone;
    return zone == zoneStart || zone == zoneEnd;
}

const ArrangeRow* notesRowOf(const ArrangeState& state, const CSongTrack* songTrack) {
    for (const ArrangeRow& row : state.rows.all())
        if (row.notes && row.songTrack == songTrack) return &row;
    return nullptr;
}

HeldNotes notesInHand(const ArrangeState& state) {
    HeldNotes hand{state.workspace, {}, {}};
    CSeq* seq = state.seq();
    if (!seq || !state.notesPart || state.range.get()) return hand;
    const std::vector<PlacedPart> chosen = selectedParts(seq);
    if (chosen.size() != 1 || chosen.front().part != state.notesPart) return hand;
    const ArrangeRow* row = notesRowOf(state, chosen.front().songTrack);
    if (!row || chosen.front().part->type == partAudio) return hand;
    hand.place = notesOf(state, *row, chosen.front().part);
    hand.parts = {chosen.front().part};
    return hand;
}

/// Delete is about the part again once no note is selected.
bool isForNotes(const ArrangeState& state, const CStr& action) {
    const bool known = isNoteAction(action) || action == "transform";
    if (!known || state.qv->recording || state.qv->recUndo) return false;
    const HeldNotes hand = notesInHand(state);
    return hand.place.part && (action != "delete" || anySelected(hand.parts));
}

bool runOnNotes(ArrangeState& state, const CStr& action) {
    if (!isForNotes(state, action)) return false;
    const HeldNotes hand = notesInHand(state);
    if (action == "transform") {
        hand.place.seq->editorComp->transformAsked = true;
        state.workspace.openPart(hand.place.part);
    } else {
        noteAction(hand, action);
        notesChosen(state);
    }
    return true;
}

bool notesKey(ArrangeState& state, int key, int mods) {
    const HeldNotes hand = notesInHand(state);
    if (!hand.place.part) return false;
    const auto show = [&](const NoteEvent& shown) {
        const NotePlace& place = hand.place;
        const ArrangeRow* row = notesRowOf(state, state.seq()->partToSongTrack(place.part));
        const int x = place.xOf(state.axis(), shown.facts.tick), wide = state.gridWidth();
        if (x < viewMargin || x > wide - viewMargin)
            state.scrollTo(state.axis().scroll() + x - wide / 3, state.edit.scrollY);
        state.workspace.setStatus(place.text(shown.facts));
        if (!row || place.rows.drums()) return;
        const int keys = row->height / row->keyHeight, key0 = shown.facts.row;
        if (key0 <= row->topKey && key0 > row->topKey - keys) return;
        state.rows.scrollKeys(place.track, key0 + keys / 2);
        state.rowsChanged();
    };
    if (!noteArrow(hand, key, mods, show)) return false;
    notesChosen(state);
    return true;
}

void chooseNote(ArrangeState& state, const ArrangeRow& row, CPart* part, CBaseEvent* event) {
    choosePart(state, row, part);
    NoteMouse::unselect(part);
    select(event, true);
    notesChosen(state);
}
