#include "ui/PartMouse.h"

#include "base/Numbers.h"
#include "engine/CSnap.h"
#include "engine/ParamUnit.h"
#include "gui/Keys.h"
#include "sequencer/edit/EventEdits.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/Bars.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/LaneUnit.h"
#include "sequencer/song/TempoMap.h"
#include "ui/DragSnap.h"

#include <cstdlib>

namespace {

constexpr int reachPixels = 6; ///< around a point
constexpr double bendPerHeight = 2.0;

} // namespace

int PartLane::ticksOf(const TimeAxis& axis, int x) const {
    return asInt(axis.ticksAt(x)) - part->pos - part->offset;
}

int PartLane::xOf(const TimeAxis& axis, int tick) const {
    return axis.xOf(double(part->pos) + part->offset + tick);
}

double PartLane::valueOf(int y) const {
    return fLimit(1.0 - double(y - box.top) / asMax(1, box.height() - 1), 0.0, 1.0);
}

int PartLane::yOf(double value) const {
    return box.top + asRound((1.0 - value) * (box.height() - 1));
}

PartMouse::PartMouse(CSeqMouseEdit& state, const PartLane& where) : edit(state), place(where) {
}

PartMouse::~PartMouse() = default;

CPart* PartMouse::shown() const {
    return draft ? draft.get() : base ? base.get() : place.part;
}

void PartMouse::unselect(const PartLane& lane) {
    eachEvent(lane.part->getParam(lane.lane.number), [](CBaseEvent* e, int) { select(e, false); });
}

void PartMouse::selectWithin(const PartLane& lane, const TimeAxis& axis, CRect band) {
    eachEvent(lane.part->getParam(lane.lane.number), [&](CEnvEvent* e, int tick) {
        const int x = lane.xOf(axis, tick);
        const int y = lane.yOf(double(e->value));
        if (x >= band.left && x < band.right && y >= band.top && y < band.bottom) select(e, true);
    });
}

int PartMouse::partMouseDown(CPoint at, int btn) {
    const int mode = pressPoint(at, btn);
    if (mode != editIdle || !(btn & modLeft) || (btn & modShift)) return mode;
    return btn & (modAlt | modDouble) ? insertPoint(at) : mode;
}

FoundEvent PartMouse::under(const PartLane& lane, const TimeAxis& axis, CPoint at) {
    const PointProbe probe{double(lane.ticksOf(axis, at.x)), lane.valueOf(at.y),
                           axis.ticksIn(reachPixels),
                           double(reachPixels) / asMax(1, lane.box.height())};
    return findPoint(lane.part, lane.lane.number, probe);
}

/// A point, or the middle of a segment, that is under the pointer.
int PartMouse::pressPoint(CPoint at, int btn) {
    const FoundEvent found = under(place, edit.axis, at);
    if (!found.event || (btn & modShift)) return editIdle;
    const bool curve = found.zone == zoneCurve;
    if (curve && (btn & (modAlt | modDouble | modControl))) return editIdle;
    if (!isSelected(found.event)) {
        unselect(place);
        select(found.event, true);
    }
    anchorTick = nowTick = place.part->pos + place.part->offset + found.tick;
    anchorValue = nowValue = double(asLanePoint(found.event)->value);
    const EventRange range = eventRange(place.seq, place.part, place.lane);
    edit.minDelta = range.minTicks;
    edit.maxDelta = range.maxTicks;
    if (btn & modRight) return curve ? editCurveReset : editErase;
    if (curve) return editCurve;
    return btn & modControl ? editCopy : editMove;
}

/// Into a draft: it is in the song at the release alone.
int PartMouse::insertPoint(CPoint at) {
    const int here = place.ticksOf(edit.axis, at.x) + place.part->pos + place.part->offset;
    const int tick = asMax(0, snapped(place.seq->snap->val(), here, true)) - place.part->pos;
    const int own = tick - place.part->offset;
    if (tick < 0 || tick >= place.seq->getTicks(place.part) || own < 0) return editIdle;
    unselect(place);
    base = contentDraft(place.part);
    CEnvEvent* point = createEnvEvent(nullptr, float(place.valueOf(at.y)));
    select(point, true);
    base->addEventParam(own, point, place.lane.number);
    anchorTick = nowTick = tick + place.part->pos;
    anchorValue = nowValue = place.valueOf(at.y);
    edit.minDelta = -asMin(tick, own);
    edit.maxDelta = place.seq->getTicks(place.part) - 1 - tick;
    return editMove;
}

void PartMouse::partMouseMove(CPoint at, CPoint anchor, int grid) {
    edit.current = at;
    if (edit.mode == editMove || edit.mode == editCopy) movePoints(at, anchor, grid);
    if (edit.mode == editCurve) bend(at, anchor);
}

void PartMouse::movePoints(CPoint at, CPoint anchor, int grid) {
    const int dragged = asRound(edit.axis.ticksIn(at.x - anchor.x));
    edit.deltaPos = asMinMax(snappedDelta(grid, anchorTick, dragged), edit.minDelta, edit.maxDelta);
    edit.deltaY = at.y - anchor.y;
    EventDelta delta;
    delta.ticks = edit.deltaPos;
    delta.value = -float(edit.deltaY) / float(asMax(1, place.box.height() - 1));
    nowTick = anchorTick + delta.ticks;
    nowValue = fLimit(anchorValue + static_cast<double>(delta.value), 0.0, 1.0);
    if (delta.ticks == 0 && edit.deltaY == 0) {
        draft.reset();
        return;
    }
    draft = base ? std::unique_ptr<CPart>(base->copy(0)) : contentDraft(place.part);
    changeEvents(place.seq, place.part, draft.get(), place.lane, delta);
}

void PartMouse::bend(CPoint at, CPoint anchor) {
    edit.deltaY = at.y - anchor.y;
    bent = -float(edit.deltaY * bendPerHeight / asMax(1, place.box.height()));
    draft = contentDraft(place.part);
    bendPoints(draft.get(), place.lane.number, bent, false);
}

void PartMouse::partMouseUp() {
    EventDelta delta;
    delta.ticks = edit.deltaPos;
    delta.value = -float(edit.deltaY) / float(asMax(1, place.box.height() - 1));
    if (edit.mode == editErase) return deletePoints(place.seq, {{place.part, place.lane.number}});
    if (edit.mode == editCurveReset)
        return curveEvents(place.seq, place.part, place.lane.number, 0.0f, true);
    if (edit.mode == editCopy && draft) return copyEvents(place.seq, place.part, place.lane, delta);
    if (!draft) draft = std::move(base);
    if (!draft) return;
    const char* title = base || edit.mode == editMove ? "Edit" : "Edit curve";
    applyDraft(place.seq, place.part, std::move(draft), title);
}

CStr PartMouse::told() const {
    if (edit.mode == editCurve) return CStr("bend ") + percentUnit.text(bent);
    const ParamUnit& unit = place.shown ? unitOf(*place.shown) : percentUnit;
    return unit.text(float(nowValue));
}
