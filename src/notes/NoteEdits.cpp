#include "notes/NoteEdits.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "notes/NoteState.h"
#include "sequencer/play/Audition.h"
#include "sequencer/song/CSeq.h"
#include "ui/Workspace.h"

namespace {

constexpr const char* insertName = "insertnote";

/// Behind what is selected, else at the position, else where the part begins.
void insertNote(NoteState& state) {
    CSeq* seq = state.seq();
    if (seq->recorder.stepRec.getPart() == state.part) {
        const int row = seq->recorder.stepRec.note;
        recordStep(state, row, state.edit.eventVelocity);
        return recordStep(state, row, 0);
    }
    const NotePlace place = state.place();
    const NoteEvent last = selectedEvent(place, true);
    if (place.rows.count() == 0) return;
    const int start = -state.part->offset;
    const int end = start + seq->getTicks(state.part);
    int tick = asInt(seq->getPos()) - state.part->pos - state.part->offset;
    if (tick < start || tick >= end) tick = start;
    const int middle = place.rows.rowAt(state.edit.scrollY + state.gridHeight() / 2);
    const int row = last.event ? last.facts.row : middle;
    if (last.event) tick = last.facts.tick + last.facts.length;
    if (tick >= end) return state.workspace.setStatus("The part ends here");
    const int length = last.event ? last.facts.length : place.grid.step;
    const int velocity = last.event ? last.facts.velocity : state.edit.eventVelocity;
    CBaseEvent* made = place.newEvent(row, length, velocity);
    made = insertEvent(seq, state.part, tick, made);
    if (!made) return;
    playEvent(state.track, state.part, made, 0);
    showEvent(state, {made, factsOf(state.part, made, tick)});
}

} // namespace

bool isEditAction(const CStr& name) {
    return name == insertName || isNoteAction(name);
}

bool editAction(NoteState& state, const CStr& name) {
    if (!state.part || !state.seq()) return false;
    if (name == insertName)
        insertNote(state);
    else if (!noteAction(state.hand(), name))
        return false;
    state.shownChanged();
    return true;
}

void recordStep(NoteState& state, int row, int velocity) {
    CSeq* seq = state.seq();
    if (row < 0 || !state.part || !seq || seq->recorder.stepRec.getPart() != state.part) return;
    const int key = state.part->type == partDrum ? firstDrumKey + row : row;
    seq->recorder.stepRec.play(seq, asData(midiNoteOn, key, velocity));
}

void showEvent(NoteState& state, const NoteEvent& shown) {
    state.scrollInView(shown.facts.tick, shown.facts.row);
    state.workspace.setStatus(state.place().text(shown.facts));
    state.shownChanged();
}
