#include "arrange/PointKeys.h"

#include "arrange/ArrangeState.h"
#include "arrange/LanePoints.h"
#include "gui/Keys.h"
#include "sequencer/edit/AutomationEdits.h"
#include "sequencer/song/CSeq.h"
#include "ui/Workspace.h"

namespace {

constexpr float valueStep = 0.01f, coarseStep = 0.08f, bendStep = 0.1f;

struct Way {
    int along = 0, up = 0;
    bool any() const { return along != 0 || up != 0; }
};

Way wayOf(int key) {
    return {(key == keyRight) - (key == keyLeft), (key == ::keyUp) - (key == ::keyDown)};
}

/// The one that lies furthest that way.
LanePoint furthest(const std::vector<LanePoint>& chosen, int along) {
    LanePoint found = chosen.front();
    for (const LanePoint& p : chosen)
        if (along > 0 ? p.tick >= found.tick : p.tick < found.tick) found = p;
    return found;
}

LanePoint nextOnRow(const ArrangeState& state, const LanePoint& from, int by) {
    const std::vector<LanePoint> all = pointsOf(state, *from.row);
    for (int i = 0; i < int(all.size()); i++)
        if (all[size_t(i)].point == from.point && i + by >= 0 && i + by < int(all.size()))
            return all[size_t(i + by)];
    return {};
}

} // namespace

bool pointEditKey(ArrangeState& state, int key, int mods) {
    const Way way = wayOf(key);
    if (!way.any() || !state.seq() || (mods != modControl && mods != modAlt)) return false;
    const std::vector<PartSlot> places = selectedPoints(state);
    if (places.empty()) return false;
    EventDelta delta;
    if (mods == modAlt && way.along != 0)
        bendPoints(state.seq(), places, float(way.along) * bendStep);
    else {
        delta.ticks = way.along * state.stepTicks();
        delta.value = float(way.up) * (mods == modAlt ? coarseStep : valueStep);
        changePoints(state.seq(), places, delta);
    }
    const std::vector<LanePoint> now = selectedLanePoints(state);
    if (!now.empty()) state.workspace.setStatus(pointText(state, furthest(now, way.along)));
    return true;
}

bool pointWalkKey(ArrangeState& state, int key, int mods) {
    const Way way = wayOf(key);
    if (way.along == 0 || !state.seq() || (mods & ~modShift)) return false;
    const std::vector<LanePoint> chosen = selectedLanePoints(state);
    if (chosen.empty()) return false;
    const LanePoint to = nextOnRow(state, furthest(chosen, way.along), way.along);
    if (to.point) choosePoint(state, to, mods & modShift);
    return true;
}
