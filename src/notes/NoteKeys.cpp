#include "notes/NoteKeys.h"

#include "base/Numbers.h"
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
    state.track->preview.mute();
    if (by.pitch != 0 || by.velocity != 0) playEvent(state.track, state.part, nullptr, 0);
    if (const NoteEvent first = selectedEvent(state, false); first.event) showEvent(state, first);
}

} // namespace

bool noteKey(NoteState& state, int key, int mods) {
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
