#include "notes/NoteKeys.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/Keys.h"
#include "notes/NoteEdits.h"
#include "notes/NoteState.h"
#include "sequencer/Audition.h"
#include "sequencer/CSeq.h"
#include "sequencer/PartEdits.h"
#include "ui/Workspace.h"

namespace {

constexpr int velocityStep = 8;
const EventLane noteLane;

/// The event before or behind another one; without one the first or the last of all.
NoteEvent neighbour(const NoteState& state, const CBaseEvent* of, bool next) {
    NoteEvent found, before;
    bool passed = !of && next;
    const int rows = state.rows().count();
    eachEvent(state.part->getEvents(), [&](CBaseEvent* e, int tick) {
        const NoteFacts facts = factsOf(state.part, e, tick);
        if (e == of) {
            if (!next) found = before;
            passed = true;
        } else if (facts.length > 0 && facts.row < rows) {
            if (passed && next && !found.event) found = {e, facts};
            before = {e, facts};
        }
    });
    return !of && !next ? before : found;
}

bool walk(NoteState& state, bool next, bool more) {
    const NoteEvent from = selectedEvent(state, next);
    const NoteEvent to = neighbour(state, from.event, next);
    if (!to.event) return from.event != nullptr;
    if (!more) NoteMouse::unselect(state.part);
    select(to.event, true);
    state.track->preview.mute();
    playEvent(state.track, state.part, to.event, 0);
    showEvent(state, to);
    return true;
}

void change(NoteState& state, EventDelta by) {
    const EventRange range = eventRange(state.seq(), state.part, noteLane);
    by.ticks = asMinMax(by.ticks, range.minTicks, range.maxTicks);
    by.pitch = asMinMax(by.pitch, range.minPitch, range.maxPitch);
    if (by.length < range.minLength) by.length = 0;
    dragEvents(state.seq(), state.part, noteLane, by);
    state.qv->settle(); // what is played and told is what has become of it
    if (!state.part) return;
    state.track->preview.mute();
    if (by.pitch != 0 || by.velocity != 0) playEvent(state.track, state.part, nullptr, 0);
    if (const NoteEvent first = selectedEvent(state, false); first.event) showEvent(state, first);
}

/// While the part is recorded in steps.
bool stepKey(NoteState& state, int key, int mods) {
    CSeq* seq = state.seq();
    CStepRec& steps = seq->stepRec;
    const int along = (key == keyRight) - (key == keyLeft);
    const int up = (key == ::keyUp) - (key == ::keyDown);
    if (along > 0 && mods == modControl) return steps.tie(seq), true;
    if (along != 0 && mods == 0) return steps.rest(seq, along), true;
    if (up != 0 && !(mods & ~modShift)) {
        const int by = (mods & modShift ? EventRows::octave : 1) * up;
        const bool drums = state.part->type == partDrum;
        steps.setNote(drums ? asMinMax(steps.note - by, 0, asMax(0, state.rows().count() - 1))
                            : steps.note + by);
        state.shownChanged();
        return true;
    }
    if (key == keyBackspace) return steps.takeBack(seq), true;
    if (key == keyEscape) return seq->recordSteps(nullptr), true;
    return false;
}

} // namespace

bool noteKey(NoteState& state, int key, int mods) {
    if (state.part && state.seq() && state.seq()->stepRec.getPart() == state.part &&
        stepKey(state, key, mods))
        return true;
    const int along = (key == keyRight) - (key == keyLeft);
    const int up = (key == ::keyUp) - (key == ::keyDown);
    if ((along == 0 && up == 0) || !state.part || !state.seq()) return false;
    if (along != 0 && !(mods & ~modShift)) return walk(state, along > 0, mods & modShift);
    if ((mods != modControl && mods != modAlt) || !selectedEvent(state, false).event) return false;
    const int grid = state.place().grid.step;
    if (mods == modAlt)
        change(state, {.length = along * grid, .velocity = up * velocityStep});
    else
        change(state, {.ticks = along * grid, .pitch = state.rows().drums() ? -up : up});
    return true;
}
