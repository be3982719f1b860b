#include "arrange/gestures/ClipGesture.h"

#include "arrange/ArrangeState.h"
#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/Shapes.h"
#include "sequencer/CSeq.h"
#include "sequencer/ClipEdits.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <cmath>

namespace {

constexpr double decibelsPerPixel = 0.25, leastGain = 0.001, mostGain = 4.0;

double valueOf(const CAudioEvent* clip, PartHandle handle) {
    const float value = handle == PartHandle::fadeIn    ? clip->fadeInMs
                        : handle == PartHandle::fadeOut ? clip->fadeOutMs
                                                        : clip->gain;
    return static_cast<double>(value);
}

} // namespace

ClipGesture::ClipGesture(ArrangeGrid& over, ArrangeState& shared, CPart* pressed, CRect partBox,
                         PartHandle taken)
    : ArrangeGesture(over, shared), anchor(pressed), box(partBox), handle(taken),
      before(valueOf(clipOf(pressed), taken)), value(before) {
}

bool ClipGesture::stands() const {
    return state.seq() && state.seq()->partToSongTrack(anchor) && clipOf(anchor);
}

double ClipGesture::perPixel() const {
    return partMilliseconds(state, anchor) / asMax(1, box.width());
}

void ClipGesture::dragMove(const DragPoint& point) {
    const int dx = point.at.x - point.anchor.x, dy = point.at.y - point.anchor.y;
    CStr text;
    if (handle == PartHandle::gain) {
        const double gain = std::max(before, leastGain);
        value = dy == 0 ? before
                        : std::min(gain * std::pow(10.0, -dy * decibelsPerPixel / 20), mostGain);
        const double decibels = 20 * std::log10(std::max(value, leastGain));
        text = CStr("Gain ") + asStrFormat(decibels, "%.1f") + " dB";
    } else {
        const double by = (handle == PartHandle::fadeIn ? dx : -dx) * perPixel();
        value = fLimit(before + by, 0.0, partMilliseconds(state, anchor));
        text = CStr(handle == PartHandle::fadeIn ? "Fade in " : "Fade out ") +
               asStr(asRound(value)) + " ms";
    }
    state.edit.current = point.at;
    state.workspace.setStatus(text);
    state.gridChanged();
}

void ClipGesture::apply(const DragPoint&) {
    if (value == before) return;
    const ClipSetting setting = handle == PartHandle::fadeIn    ? ClipSetting::fadeIn
                                : handle == PartHandle::fadeOut ? ClipSetting::fadeOut
                                                                : ClipSetting::gain;
    changeClips(state.seq(), setting, float(value - before));
}

void ClipGesture::paintOverlay(CGraphic* g, CRect asked) const {
    if (handle == PartHandle::gain || intersect(box, asked).empty()) return;
    const double wide = value / perPixel();
    const bool in = handle == PartHandle::fadeIn;
    CPath line;
    line.moveTo(in ? box.left : box.right, box.bottom);
    line.lineTo(in ? box.left + wide : box.right - wide, box.top);
    strokePath(g, line, 2, clSelection.fillCol);
}
