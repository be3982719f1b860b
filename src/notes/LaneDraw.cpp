#include "notes/LaneDraw.h"

#include "base/Numbers.h"
#include "engine/ParamUnit.h"
#include "gui/CGraphic.h"
#include "gui/DrawBatch.h"
#include "notes/LaneView.h"
#include "notes/NoteEdits.h"
#include "notes/NoteState.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/LaneUnit.h"
#include "sequencer/song/TempoMap.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int reach = 3;    ///< pixels to each side, within which velocities change
constexpr int drawStep = 3; ///< pixels from one value to the next

} // namespace

LaneDraw::LaneDraw(NoteState& shared, const LaneView& over) : NoteGesture(shared), view(over) {
    for (CPart* part : shared.parts()) {
        std::unique_ptr<CPart> drawn = contentDraft(part);
        EventIndex events(shared.seq(), drawn.get());
        for (const CBaseEvent* e = drawn->getEvents(); e; e = e->next)
            selectedOnly = selectedOnly || (isSelected(e) && onLane(view.lane, drawn->type, e));
        homes.push_back({part == shared.part ? shared.place() : shared.placeOf(part),
                         part->getEvents(), std::move(drawn), std::move(events)});
    }
}

LaneDraw::~LaneDraw() = default;

CPart* LaneDraw::draft(const CPart* part) const {
    for (const Home& h : homes)
        if (h.place.part == part) return h.drawn.get();
    return nullptr;
}

bool LaneDraw::stands() const {
    return std::ranges::all_of(homes, [](const Home& h) {
        return h.place.seq->partToTrack(h.place.part) == h.place.track &&
               h.place.part->getEvents() == h.head;
    });
}

/// The events at a place of the view take the value; a controller without any there gets one.
void LaneDraw::write(int x, double value) {
    bool found = false;
    const bool ofNotes = view.lane.ofNotes();
    const double at = state.axis().ticksAt(x);
    const int grid = homes.front().place.grid.snap, line = snapped(grid, asInt(at), false);
    for (Home& h : homes) {
        const int start = h.place.part->pos + h.place.part->offset;
        const int from = ofNotes ? asInt(h.place.ticksOf(state.axis(), x - reach)) : line - start;
        const int to =
            ofNotes ? asInt(h.place.ticksOf(state.axis(), x + reach + 1)) : from + asMax(1, grid);
        found = change(h, from, to, value) || found;
    }
    Home& first = homes.front();
    const CPart* part = first.place.part;
    const int from = line - part->pos - part->offset;
    const int begin = asMax(0, -part->offset);
    const int end = first.place.seq->getTicks(first.place.part) - part->offset;
    if (found || ofNotes || from + asMax(1, grid) <= begin || from >= end) return;
    setController(first.drawn.get(), view.lane, asMax(0, from), from + asMax(1, grid),
                  float(value));
    first.events.make(first.place.seq, first.drawn.get());
}

/// Whether there is any in the stretch, which counts in the part's own time.
bool LaneDraw::change(Home& home, int from, int to, double value) {
    const int first = -home.place.part->offset;
    const int end = first + home.place.seq->getTicks(home.place.part);
    if (to <= asMax(0, first) || from >= end) return false;
    bool found = false;
    home.events.eachWithin(from, to, [&](const EventIndex::Entry& e) {
        if (e.tick < from || !onLane(view.lane, home.drawn->type, e.event)) return;
        found = true;
        if (!selectedOnly || isSelected(e.event))
            setLaneValue(view.lane, home.drawn->type, e.event, float(value));
    });
    return found;
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
    std::vector<PartDraft> drafts;
    for (Home& h : homes) drafts.push_back({h.place.part, std::move(h.drawn)});
    applyDrafts(state.seq(), std::move(drafts), title.asChar());
    if (view.lane.kind == laneVelocity)
        if (const NoteEvent latest = selectedEvent(state.place(), true); latest.event)
            state.edit.eventVelocity = asMax(1, latest.facts.velocity);
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
    lineEditParts(state.seq(), state.parts(), view.lane,
                  {tick(point.anchor.x), tick(point.at.x), float(view.valueAt(point.anchor.y)),
                   float(view.valueAt(point.at.y))});
}

void LaneLine::paintOverlay(CGraphic* g, CRect) const {
    DrawBatch(g).segment(clSelection.fillCol, state.edit.start, state.edit.current);
}
