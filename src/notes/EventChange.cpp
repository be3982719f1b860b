#include "notes/EventChange.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "notes/NoteState.h"
#include "sequencer/edit/EventActions.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/play/Audition.h"
#include "sequencer/song/CSeq.h"

#include <functional>

namespace {

const CBaseEvent* change(NoteState& state, const CBaseEvent* told,
                         const std::function<void(CellEvent&)>& each) {
    const bool all = isSelected(told);
    const PartList parts = all ? state.parts() : PartList{state.part};
    const EventRange range = eventRange(state.seq(), parts);
    const CBaseEvent* became = nullptr;
    if (state.seq()->isLocked(state.part)) return nullptr;
    changeParts(state.seq(), parts, "Edit", [&](CPart* part, CPart* draft) {
        const CBaseEvent* at = part->getEvents();
        placeEvents(draft, [&](CBaseEvent* e, int tick) {
            const bool wanted = all ? isSelected(at) : at == told;
            if (at == told) became = e;
            at = at->next;
            if (!wanted) return tick;
            CellEvent changed{e, tick};
            each(changed);
            if (!all) return changed.tick;
            return tick + asMinMax(changed.tick - tick, range.minTicks, range.maxTicks);
        });
    });
    state.qv->settle(); // what is played and told is what has become of it
    if (!state.part) return nullptr;
    state.track->preview.mute();
    playEvent(state.track, state.part, nullptr, 0);
    state.shownChanged();
    return became;
}

} // namespace

const CBaseEvent* typeCells(NoteState& state, const CellEvent& told, EventColumn column,
                            const CStr& text) {
    if (!state.part || !state.seq()) return nullptr;
    const NotePlace place = state.place();
    CBaseEvent* probe = copyEvent(state.part->type, told.event);
    CellEvent tried{probe, told.tick};
    const bool read = setCell(place, tried, column, text);
    freeEvent(probe);
    if (!read) {
        state.workspace.setStatus(CStr("\"") + text + "\" is not understood here");
        return nullptr;
    }
    const int by = tried.tick - told.tick;
    return change(state, told.event, [&](CellEvent& each) {
        if (column == EventColumn::position)
            each.tick += by;
        else
            setCell(place, each, column, text);
    });
}

const CBaseEvent* stepCells(NoteState& state, const CellEvent& told, EventColumn column, int by) {
    if (!state.part || !state.seq()) return nullptr;
    const NotePlace place = state.place();
    return change(state, told.event, [&](CellEvent& each) { stepCell(place, each, column, by); });
}
