#include "arrange/LanePoints.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "arrange/LanePress.h"
#include "base/Numbers.h"
#include "engine/ParamUnit.h"
#include "sequencer/edit/AutomationEdits.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/LaneUnit.h"
#include "ui/PartMouse.h"
#include "ui/PlaceText.h"
#include "ui/Workspace.h"

namespace {

constexpr int viewMargin = 24; ///< pixels beside a point that is brought into view
constexpr float middle = 0.5f; ///< of a lane that moves nothing that tells a value

/// Where a point of the keys goes to.
struct Place {
    const ArrangeRow* row = nullptr;
    CPart* part = nullptr;
    int tick = 0;
};

Place placeHere(const ArrangeState& state) {
    Place found;
    CSeq* seq = state.seq();
    if (!seq) return found;
    const std::vector<LanePoint> chosen = selectedLanePoints(state);
    if (!chosen.empty()) found.row = chosen.front().row;
    for (const ArrangeRow& row : state.rows.all())
        if (!found.row && row.lane && row.songTrack->track->selected()) found.row = &row;
    if (!found.row || found.row->songTrack->track->locked) return {};
    found.tick = asInt(seq->getPos());
    found.part = partAtPos(state, *found.row, state.axis().xOf(found.tick)).part;
    return found;
}

void scrollToPoint(ArrangeState& state, const LanePoint& point) {
    const int h = state.gridHeight(), x = state.axis().xOf(point.tick);
    int64_t scroll = state.axis().scroll();
    if (x < viewMargin || x > state.gridWidth() - viewMargin) scroll += x - state.gridWidth() / 2;
    state.scrollTo(scroll, asMinMax(state.edit.scrollY, point.row->bottom() - h, point.row->top));
}

} // namespace

std::vector<LanePoint> pointsOf(const ArrangeState& state, const ArrangeRow& row) {
    std::vector<LanePoint> found;
    if (!row.lane) return found;
    for (auto* part : row.songTrack->parts) {
        const int start = part->pos, end = saturate(int64_t(start) + state.seq()->getTicks(part));
        eachEvent(part->getParam(row.lane->slot), [&](CEnvEvent* e, int tick) {
            const int at = saturate(int64_t(start) + part->offset + tick);
            if (at >= start && at <= end) found.push_back({&row, part, e, at});
        });
    }
    return found;
}

CStr lanePlaceText(const ArrangeState& state, const ArrangeRow& row, int tick, float value) {
    return row.lane->id + ", " + placeText(state.seq(), tick) + ", " +
           unitOf(*row.lane).text(value);
}

CStr pointText(const ArrangeState& state, const LanePoint& point) {
    return lanePlaceText(state, *point.row, point.tick, point.point->value);
}

std::vector<PartSlot> selectedPoints(const ArrangeState& state) {
    std::vector<PartSlot> found;
    for (const ArrangeRow& row : state.rows.all()) {
        if (!row.lane) continue;
        for (auto* part : row.songTrack->parts) {
            bool any = false;
            eachEvent(part->getParam(row.lane->slot),
                      [&](const CBaseEvent* e, int) { any = any || isSelected(e); });
            if (any) found.push_back({part, row.lane->slot});
        }
    }
    return found;
}

std::vector<LanePoint> selectedLanePoints(const ArrangeState& state) {
    std::vector<LanePoint> found;
    for (const ArrangeRow& row : state.rows.all())
        for (const LanePoint& point : pointsOf(state, row))
            if (isSelected(point.point)) found.push_back(point);
    return found;
}

void unselectPoints(const ArrangeState& state) {
    for (const ArrangeRow& row : state.rows.all())
        if (row.lane)
            for (auto* part : row.songTrack->parts) PartMouse::unselect(laneOf(state, row, part));
}

void choosePoint(ArrangeState& state, const LanePoint& point, bool beside) {
    CSeq* seq = state.seq();
    seq->unselectParts();
    if (!beside) unselectPoints(state);
    select(point.point, true);
    if (!point.row->songTrack->track->selected()) {
        seq->unselectTracks();
        seq->selectTrack(point.row->songTrack, true);
    }
    scrollToPoint(state, point);
    state.workspace.setStatus(pointText(state, point));
    state.gridChanged();
}

bool canAddPoint(const ArrangeState& state) {
    return placeHere(state).part != nullptr;
}

void addPointHere(ArrangeState& state) {
    const Place place = placeHere(state);
    if (!place.part) return;
    for (const LanePoint& point : pointsOf(state, *place.row))
        if (point.part == place.part && point.tick == place.tick)
            return choosePoint(state, point, false);
    CSubTrack* lane = place.row->lane;
    const int own = place.tick - place.part->pos - place.part->offset;
    const float now = lane->target == targetParam && lane->object
                          ? paramShare(lane->object, lane->param)
                          : middle;
    const float value = pointValueAt(place.part, lane->slot, own, now);
    unselectPoints(state);
    state.seq()->unselectParts();
    insertPoint(state.seq(), place.part, lane->slot, own, createEnvEvent(nullptr, value));
    state.workspace.setStatus(lanePlaceText(state, *place.row, place.tick, value));
}

CStr typedValue(const LanePoint& point) {
    return unitOf(*point.row->lane).text(point.point->value);
}

bool setTyped(ArrangeState& state, const LanePoint& like, const CStr& text) {
    const std::optional<double> number = typedNumber(text);
    if (!number) return false;
    setPoints(state.seq(), selectedPoints(state), unitOf(*like.row->lane).share(*number));
    return true;
}
