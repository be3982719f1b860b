#include "notes/WaveGesture.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "gui/Keys.h"
#include "notes/WaveState.h"
#include "sequencer/edit/ClipEdits.h"
#include "sequencer/edit/PinEdits.h"
#include "sequencer/song/CSeq.h"
#include "ui/PlaceText.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

bool isFree(const DragPoint& point) {
    return point.btn & modControl;
}

} // namespace

CPoint WaveGesture::dragScroll(CPoint by) {
    const double before = state.axis.start();
    state.scrollTo(before + by.x * state.axis.perPixel());
    return asPoint(asRound((state.axis.start() - before) / state.axis.perPixel()), 0);
}

// The range.

RangeDrag::RangeDrag(WaveState& shared, int stands)
    : WaveGesture(shared), standing(stands), fromBefore(shared.standingEnd()),
      toBefore(shared.movingEnd()) {
}

void RangeDrag::dragMove(const DragPoint& point) {
    state.setRange(standing, state.frameMeant(point.at.x, isFree(point)));
}

void RangeDrag::dragCancel() {
    state.setRange(fromBefore, toBefore);
}

// Marks.

MarkDrag::MarkDrag(WaveState& shared, int number)
    : WaveGesture(shared), index(number), before(shared.marks[size_t(number)]) {
}

void MarkDrag::put(int frame) {
    auto& marks = state.marks;
    if (std::ranges::find(marks, frame) != marks.end()) return;
    marks[size_t(index)] = frame;
    std::ranges::sort(marks);
    index = int(std::ranges::find(marks, frame) - marks.begin());
    state.shownChanged();
}

void MarkDrag::dragMove(const DragPoint& point) {
    put(state.frameMeant(point.at.x, isFree(point)));
}

void MarkDrag::dragEnd(const DragPoint&) {
    state.keepMarks();
}

void MarkDrag::dragCancel() {
    put(before);
}

// Stretch markers.

PinDrag::PinDrag(WaveState& shared, int number) : WaveGesture(shared), pin(number) {
}

double PinDrag::shareMeant(const DragPoint& point) const {
    const double tick = state.tickOf(state.frameMeant(point.at.x, isFree(point)));
    return limitPinShare(state.place(), pin, state.pinShare(tick));
}

void PinDrag::dragMove(const DragPoint& point) {
    const CAudioEvent* clip = state.clip();
    if (!state.sample() || pin >= clip->pins.count) return;
    const double share = shareMeant(point);
    const double into = framesAtShare(clip, clip->reverse ? 1.0 - share : share);
    state.heldPin = pin;
    state.pinTarget = clip->reverse ? clip->end + 1.0 - into : clip->start + into;
    const double tick = state.tickOf(state.pinTarget);
    state.workspace.setStatus("To " + placeText(state.seq(), asRound(tick)));
    state.shownChanged();
}

void PinDrag::dragEnd(const DragPoint& point) {
    if (!state.sample()) return dragCancel();
    const double share = shareMeant(point);
    dragCancel();
    movePin(state.seq(), state.place(), pin, share);
}

void PinDrag::dragCancel() {
    state.heldPin = -1;
    state.shownChanged();
}

// Fades.

FadeDrag::FadeDrag(WaveState& shared, bool atStart) : WaveGesture(shared), in(atStart) {
}

float& FadeDrag::draft() const {
    return in ? state.fadeIn : state.fadeOut;
}

void FadeDrag::dragMove(const DragPoint& point) {
    if (!state.sample()) return;
    const FrameRange all = state.heard();
    const double frame = fLimit(state.axis.frameAt(point.at.x), all.from, all.to);
    const bool atLeft = in != (state.clip()->reverse != 0);
    const double frames = atLeft ? frame - all.from : all.to - frame;
    draft() = float(frames / asMax(1, all.count()) * state.heardMs());
    state.shownChanged();
}

void FadeDrag::dragEnd(const DragPoint& point) {
    dragMove(point);
    const float ms = draft();
    dragCancel();
    if (state.sample())
        setClip(state.seq(), state.place(), in ? ClipSetting::fadeIn : ClipSetting::fadeOut, ms);
}

void FadeDrag::dragCancel() {
    draft() = -1.0f;
    state.shownChanged();
}

// The hand.

WaveHand::WaveHand(WaveState& shared, std::function<void()> clicked)
    : WaveGesture(shared), onClick(std::move(clicked)) {
}

void WaveHand::dragMove(const DragPoint& point) {
    state.scrollTo(state.axis.start() - (point.at.x - last) * state.axis.perPixel());
    last = point.at.x;
}
