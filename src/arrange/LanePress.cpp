#include "arrange/LanePress.h"

#include "arrange/ArrangeGrid.h"
#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "arrange/gestures/DrawGesture.h"
#include "arrange/gestures/HandGesture.h"
#include "arrange/gestures/PointGesture.h"
#include "base/Numbers.h"
#include "gui/Keys.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"

#include <utility>

namespace {

constexpr int laneMargin = 4; ///< above and below the values of a lane
constexpr int eraseRoom = 9;  ///< of a press that erases or types

} // namespace

PartLane laneOf(const ArrangeState& state, const ArrangeRow& row, CPart* part) {
    const int y = row.top - state.edit.scrollY;
    CRect box = asRect(0, y + laneMargin, state.gridWidth(), y + row.height - laneMargin - 1);
    if (part) {
        box.left = state.axis().xOf(part->pos.load());
        box.right = state.axis().xOf(double(part->pos) + state.seq()->getTicks(part));
    }
    return {state.seq(), part, {laneAutomation, row.lane->slot}, box, row.lane};
}

namespace {

Press pressedPart(ArrangeGrid& grid, ArrangeState& state, const ArrangeRow& row, CPart* part,
                  CPoint at, int btn) {
    auto mouse = std::make_unique<PartMouse>(state.edit, laneOf(state, row, part));
    const int mode = mouse->partMouseDown(at, btn);
    if (mode == editIdle) return {};
    state.seq()->unselectParts();
    state.gridChanged();
    if ((btn & modDouble) && mode == editMove && !mouse->inserting()) {
        const auto type = [&grid](CPoint) { grid.typeValue(); };
        return {std::make_unique<HandGesture>(grid, state, type), editPress, eraseRoom};
    }
    if (mode != editErase && mode != editCurveReset)
        return {std::make_unique<PointGesture>(grid, state, std::move(mouse)), mode, 0};
    std::shared_ptr<PartMouse> pressed = std::move(mouse);
    const auto release = [pressed](CPoint) { pressed->partMouseUp(); };
    return {std::make_unique<HandGesture>(grid, state, release), mode, eraseRoom};
}

} // namespace

Press pressedLane(ArrangeGrid& grid, ArrangeState& state, const ArrangeRow& row, CPoint at,
                  int btn) {
    if (row.songTrack->track->locked) return {};
    CPart* part = partAtPos(state, row, at.x).part;
    Press press = part ? pressedPart(grid, state, row, part, at, btn) : Press();
    const bool draws = (btn & modLeft) && (btn & modControl) && !(btn & modAlt);
    if (press.gesture || !draws) return press;
    state.seq()->unselectParts();
    return {std::make_unique<DrawGesture>(grid, state, row, btn & modShift), editDraw, 0};
}
