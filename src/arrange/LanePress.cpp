#include "arrange/LanePress.h"

#include "arrange/ArrangeState.h"
#include "arrange/gestures/HandGesture.h"
#include "arrange/gestures/PointGesture.h"
#include "base/Numbers.h"
#include "sequencer/CSeq.h"
#include "sequencer/CSubTrack.h"
#include "sequencer/PartEdits.h"

#include <utility>

namespace {

constexpr int laneMargin = 4; ///< above and below the values of a lane
constexpr int eraseRoom = 9;  ///< of a press that erases

} // namespace

PartLane laneOf(const ArrangeState& state, const ArrangeRow& row, CPart* part) {
    const int y = row.top - state.edit.scrollY;
    const CRect box = asRect(state.axis().xOf(part->pos.load()), y + laneMargin,
                             state.axis().xOf(double(part->pos) + state.seq()->getTicks(part)),
                             y + row.height - laneMargin - 1);
    return {state.seq(), part, {laneAutomation, row.lane->slot}, box};
}

std::vector<PartSlot> selectedPoints(const ArrangeState& state) {
    std::vector<PartSlot> found;
    for (const ArrangeRow& row : state.rows.all()) {
        if (!row.lane) continue;
        for (auto* part : each<CPart>(row.songTrack->parts)) {
            bool any = false;
            eachEvent(part->getParam(row.lane->slot),
                      [&](const CBaseEvent* e, int) { any = any || isSelected(e); });
            if (any) found.push_back({part, row.lane->slot});
        }
    }
    return found;
}

void unselectPoints(const ArrangeState& state) {
    for (const ArrangeRow& row : state.rows.all())
        if (row.lane)
            for (auto* part : each<CPart>(row.songTrack->parts))
                PartMouse::unselect(laneOf(state, row, part));
}

Press pressedLane(ArrangeGrid& grid, ArrangeState& state, const ArrangeRow& row, CPoint at,
                  int btn) {
    CPart* part = partAtPos(state, row, at.x).part;
    if (!part || row.songTrack->track->locked) return {};
    auto mouse = std::make_unique<PartMouse>(state.edit, laneOf(state, row, part));
    const int mode = mouse->partMouseDown(at, btn);
    if (mode == editIdle) return {};
    state.seq()->unselectParts();
    state.gridChanged();
    if (mode != editErase && mode != editCurveReset)
        return {std::make_unique<PointGesture>(grid, state, std::move(mouse)), mode, 0};
    std::shared_ptr<PartMouse> pressed = std::move(mouse);
    return {
        std::make_unique<HandGesture>(grid, state, [pressed](CPoint) { pressed->partMouseUp(); }),
        mode, eraseRoom};
}
