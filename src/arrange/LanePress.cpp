#include "arrange/LanePress.h"

#include "arrange/ArrangeGrid.h"
#include "arrange/ArrangeState.h"
#include "arrange/gestures/HandGesture.h"
#include "arrange/gestures/PointGesture.h"
#include "base/Numbers.h"
#include "gui/Keys.h"
#include "sequencer/CSeq.h"
#include "sequencer/CSubTrack.h"

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
    return {state.seq(), part, {laneAutomation, row.lane->slot}, box, row.lane};
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
    if ((btn & modDouble) && mode == editMove && !mouse->inserting()) {
        grid.typeValue();
        return {};
    }
    if (mode != editErase && mode != editCurveReset)
        return {std::make_unique<PointGesture>(grid, state, std::move(mouse)), mode, 0};
    std::shared_ptr<PartMouse> pressed = std::move(mouse);
    return {
        std::make_unique<HandGesture>(grid, state, [pressed](CPoint) { pressed->partMouseUp(); }),
        mode, eraseRoom};
}
