#include "notes/NoteEdits.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "notes/NoteState.h"
#include "sequencer/Audition.h"
#include "sequencer/CSeq.h"
#include "sequencer/PartEdits.h"
#include "sequencer/Quantize.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <map>
#include <unordered_set>
#include <vector>

namespace {

const EventLane noteLane;

/// Behind what is selected, else at the position, else where the part begins.
void insertNote(NoteState& state) {
    CSeq* seq = state.seq();
    if (seq->stepRec.getPart() == state.part) {
        const int row = seq->stepRec.note;
        recordStep(state, row, state.edit.eventVelocity);
        return recordStep(state, row, 0);
    }
    const NoteEvent last = selectedEvent(state, true);
    const NotePlace place = state.place();
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

/// Behind what is selected.
void duplicateEvents(NoteState& state) {
    int from = maxTicks, to = 0;
    eachEvent(state.part->getEvents(), [&](CBaseEvent* e, int tick) {
        if (!isSelected(e)) return;
        from = asMin(from, tick);
        to = asMax(to, tick + asMax(1, factsOf(state.part, e, tick).length));
    });
    const int by = to - from;
    if (by <= 0) return;
    if (by > eventRange(state.seq(), state.part, noteLane).maxTicks)
        return state.workspace.setStatus("The part ends before the copies");
    copyEvents(state.seq(), state.part, noteLane, {.ticks = by});
}

void copySelected(NoteState& state) {
    if (!hasSelectedEvents(state.part)) return;
    state.seq()->clearCopies();
    state.seq()->copyToClipboard(state.part);
}

void deleteSelected(NoteState& state) {
    deleteEvents(state.seq(), state.part);
}

void cutSelected(NoteState& state) {
    if (!hasSelectedEvents(state.part)) return;
    copySelected(state);
    std::unique_ptr<CPart> draft = contentDraft(state.part);
    draft->deleteSelected();
    applyDraft(state.seq(), state.part, std::move(draft), "Cut");
}

/// At the position, or where the part begins if that lies outside.
void paste(NoteState& state) {
    CSeq* seq = state.seq();
    auto* copied = static_cast<CPart*>(seq->copies.getFirst());
    if (seq->copies.getCount() != 1 || copied->type != state.part->type)
        return state.workspace.setStatus("The clipboard has no events for this part");
    if (seq->isLocked(state.part)) return state.workspace.setStatus("The track is locked");
    int tick = asInt(seq->getPos());
    const int end = state.part->pos + seq->getTicks(state.part);
    if (tick < state.part->pos || tick >= end) tick = state.part->pos;
    CUndo* undo = seq->host->undoStart("Paste", seq, {.song = true, .seq = SeqNotice::parts});
    seq->pasteData(undo, copied, state.part, tick);
    seq->host->undoEnd(undo, false);
}

void selectAll(NoteState& state) {
    for (CBaseEvent* e = state.part->getEvents(); e; e = e->next) select(e, true);
}

void quantizeSelected(NoteState& state) {
    CSeq* seq = state.seq();
    if (seq->isLocked(state.part)) return;
    CUndo* undo = seq->host->undoStart("Quantize", seq, {.song = true, .seq = SeqNotice::parts});
    quantize(undo, state.part, state.place().grid.step, true);
    seq->host->undoEnd(undo, false);
}

/// Of each row the selected events become one, from the first to the end of the last.
void glueSelected(NoteState& state) {
    std::unique_ptr<CPart> draft = contentDraft(state.part);
    std::map<int, std::pair<int*, int>> first; // by row: its length, and where it begins
    std::unordered_set<CBaseEvent*> going;
    eachEvent(draft->getEvents(), [&](CBaseEvent* e, int tick) {
        const NoteFacts facts = factsOf(state.part, e, tick);
        if (!isSelected(e) || facts.length == 0) return;
        const auto [found, added] =
            first.try_emplace(facts.row, eventLength(state.part->type, e), tick);
        if (added) return;
        int& length = *found->second.first;
        length = asMax(length, tick + facts.length - found->second.second);
        going.insert(e);
    });
    std::vector<CBaseEvent*> staying;
    for (CBaseEvent* e = draft->getEvents(); e; e = e->next) {
        const bool goes = going.contains(e);
        if (isSelected(e) && !goes) staying.push_back(e);
        select(e, goes);
    }
    draft->deleteSelected();
    for (CBaseEvent* e : staying) select(e, true);
    applyDraft(state.seq(), state.part, std::move(draft), "Glue");
}

constexpr struct {
    const char* name;
    void (*run)(NoteState& state);
} actions[] = {{"delete", deleteSelected},     {"cut", cutSelected},
               {"copy", copySelected},         {"paste", paste},
               {"selectAll", selectAll},       {"duplicate", duplicateEvents},
               {"quantize", quantizeSelected}, {"glue", glueSelected},
               {"insertnote", insertNote}};

} // namespace

bool isNoteAction(const CStr& name) {
    return std::ranges::any_of(actions, [&](const auto& a) { return name == a.name; });
}

bool noteAction(NoteState& state, const CStr& name) {
    if (!state.part || !state.seq()) return false;
    for (const auto& action : actions) {
        if (name != action.name) continue;
        action.run(state);
        state.shownChanged();
        return true;
    }
    return false;
}

void recordStep(NoteState& state, int row, int velocity) {
    CSeq* seq = state.seq();
    if (row < 0 || !state.part || !seq || seq->stepRec.getPart() != state.part) return;
    const int key = state.part->type == partDrum ? firstDrumKey + row : row;
    seq->stepRec.play(seq, asData(midiNoteOn, key, velocity));
}

NoteEvent selectedEvent(const NoteState& state, bool last) {
    NoteEvent found;
    eachEvent(state.part->getEvents(), [&](CBaseEvent* e, int tick) {
        if (isSelected(e) && (last || !found.event)) found = {e, factsOf(state.part, e, tick)};
    });
    return found;
}

void showEvent(NoteState& state, const NoteEvent& shown) {
    state.scrollInView(shown.facts.tick, shown.facts.row);
    state.workspace.setStatus(state.place().text(shown.facts));
    state.shownChanged();
}
