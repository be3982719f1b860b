#include "arrange/gestures/ClipGesture.h"

#include "arrange/ArrangeState.h"
#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/Shapes.h"
#include "sequencer/CSeq.h"
#include "sequencer/ClipEdits.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

namespace {

double valueOf(const CAudioEvent* clip, PartHandle handle) {
    return static_cast<double>(handle == PartHandle::fadeIn ? clip->fadeInMs : clip->fadeOutMs);
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
    const bool in = handle == PartHandle::fadeIn;
    const int dragged = point.at.x - point.anchor.x;
    value = fLimit(before + (in ? dragged : -dragged) * perPixel(), 0.0,
                   partMilliseconds(state, anchor));
    state.edit.current = point.at;
    state.workspace.setStatus(CStr(in ? "Fade in " : "Fade out ") + asStr(asRound(value)) + " ms");
    state.gridChanged();
}

void ClipGesture::apply(const DragPoint&) {
    if (value == before) return;
    changeClips(state.seq(),
                handle == PartHandle::fadeIn ? ClipSetting::fadeIn : ClipSetting::fadeOut,
                float(value - before));
}

void ClipGesture::paintOverlay(CGraphic* g, CRect asked) const {
    if (intersect(box, asked).empty()) return;
    const double wide = value / perPixel();
    const bool in = handle == PartHandle::fadeIn;
    CPath line;
    line.moveTo(in ? box.left : box.right, box.bottom);
    line.lineTo(in ? box.left + wide : box.right - wide, box.top);
    strokePath(g, line, 2, clSelection.fillCol);
}
