#include "notes/LaneDraw.h"

#include "base/Numbers.h"
#include "engine/ParamUnit.h"
#include "gui/CGraphic.h"
#include "gui/DrawBatch.h"
#include "notes/LaneView.h"
#include "notes/NoteState.h"
#include "sequencer/CSeq.h"
#include "sequencer/LaneUnit.h"
#include "sequencer/PartEdits.h"
#include "sequencer/TempoMap.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <cstdlib>

namespace {

constexpr int reach = 3;    ///< pixels to each side, within which velocities change
constexpr int drawStep = 3; ///< pixels from one value to the next

} // namespace

LaneDraw::LaneDraw(NoteState& shared, const LaneView& over)
    : NoteGesture(shared), view(over), drawn(contentDraft(shared.part)),
      events(shared.seq(), drawn.get()) {
    eachEvent(drawn->getEvents(), [&](const CBaseEvent* e, int) {
        const bool counts = isSelected(e) && onLane(view.lane, drawn->type, e);
        selectedOnly = selectedOnly || counts;
    });
}

LaneDraw::~LaneDraw() = default;

CPart* LaneDraw::draft() const {
    return drawn.get();
}

/// The events at a place of the view take the value; a controller without any there gets one.
void LaneDraw::write(int x, double value) {
    const NotePlace place = state.place();
    const EventLane& lane = view.lane;
    int from = asInt(place.ticksOf(state.axis(), x - reach));
    int to = asInt(place.ticksOf(state.axis(), x + reach + 1));
    if (!lane.ofNotes()) {
        const int start = state.part->pos + state.part->offset, grid = place.grid.snap;
        from = snapped(grid, asInt(state.axis().ticksAt(x)), false) - start;
        to = from + asMax(1, grid);
    }
    const int first = -state.part->offset, end = first + place.seq->getTicks(state.part);
    if (to <= asMax(0, first) || from >= end) return;
    bool found = false;
    events.eachWithin(from, to, [&](const EventIndex::Entry& e) {
        if (e.tick < from || !onLane(lane, drawn->type, e.event)) return;
        found = true;
        if (!selectedOnly || isSelected(e.event))
            setLaneValue(lane, drawn->type, e.event, float(value));
    });
    if (found || lane.kind == laneVelocity) return;
    setController(drawn.get(), lane, asMax(0, from), to, float(value));
    events.make(place.seq, drawn.get());
}

void LaneDraw::dragMove(const DragPoint& point) {
    if (!begun) last = point.at;
    begun = true;
    const int wide = point.at.x - last.x, steps = asMax(1, std::abs(wide) / drawStep);
    for (int i = 1; i <= steps; i++)
        write(last.x + wide * i / steps, view.valueAt(last.y + (point.at.y - last.y) * i / steps));
    last = point.at;
    const int tick = asMinMax(asInt(state.axis().ticksAt(point.at.x)), 0, maxTicks);
    state.workspace.setStatus(laneTitle(view.lane) + " " +
                              unitOf(view.lane).text(float(view.valueAt(point.at.y))) + ", " +
                              placeText(state.seq(), tick));
    state.shownChanged();
}

void LaneDraw::apply(const DragPoint&) {
    const CStr title = "Edit " + laneTitle(view.lane);
    applyDraft(state.seq(), state.part, std::move(drawn), title.asChar());
}

void LaneDraw::click(const DragPoint& point) {
    dragMove(point);
    apply(point);
}

// Lines.

void LaneLine::dragMove(const DragPoint& point) {
    state.edit.start = point.anchor;
    state.edit.current = point.at;
    state.shownChanged();
}

void LaneLine::apply(const DragPoint& point) {
    const auto tick = [&](int x) { return asInt(state.axis().ticksAt(x)); };
    lineEditParts(state.seq(), {state.part}, view.lane,
                  {tick(point.anchor.x), tick(point.at.x), float(view.valueAt(point.anchor.y)),
                   float(view.valueAt(point.at.y))});
}

void LaneLine::paintOverlay(CGraphic* g, CRect) const {
    DrawBatch(g).segment(clSelection.fillCol, state.edit.start, state.edit.current);
}
