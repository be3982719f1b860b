#include "arrange/gestures/PointGesture.h"

#include "arrange/ArrangeState.h"
#include "arrange/gestures/Overlay.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "ui/PlaceText.h"
#include "ui/Workspace.h"

#include <utility>

PointGesture::PointGesture(ArrangeGrid& over, ArrangeState& shared,
                           std::unique_ptr<PartMouse> pressed)
    : ArrangeGesture(over, shared), mouse(std::move(pressed)) {
}

bool PointGesture::stands() const {
    return state.seq() && state.seq()->partToSongTrack(mouse->lane().part);
}

void PointGesture::dragMove(const DragPoint& point) {
    mouse->partMouseMove(point.at, point.anchor, dragGrid(state, point.btn));
    const CSubTrack* lane = mouse->lane().shown;
    state.workspace.setStatus(lane->id + ", " + placeText(state.seq(), mouse->toldTick()) + ", " +
                              mouse->told());
    state.gridChanged();
}

void PointGesture::apply(const DragPoint&) {
    mouse->partMouseUp();
}

CPart* PointGesture::draftOf(const CPart* part, int slot) const {
    const PartLane& lane = mouse->lane();
    return lane.part->content() == part && lane.lane.number == slot ? mouse->shown() : nullptr;
}
