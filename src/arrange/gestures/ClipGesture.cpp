#include "arrange/gestures/ClipGesture.h"

#include "arrange/ArrangeState.h"
#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/Shapes.h"
#include "sequencer/edit/ClipEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "ui/LevelText.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <cmath>

namespace {

constexpr double gainTop = 4.0;    ///< factor at the end of the way
constexpr double gainPixels = 200; ///< from one end to the other

double gainAt(double way) {
    return way * way * gainTop;
}

double valueOf(const CAudioEvent* clip, PartHandle handle) {
    if (handle == PartHandle::gain) return std::sqrt(static_cast<double>(clip->gain) / gainTop);
    return static_cast<double>(handle == PartHandle::fadeIn ? clip->fadeInMs : clip->fadeOutMs);
}

CStr textOf(PartHandle handle, double value) {
    if (handle == PartHandle::gain) return "Gain " + decibelText(float(gainAt(value)));
    return CStr(handle == PartHandle::fadeIn ? "Fade in " : "Fade out ") + asStr(asRound(value)) +
           " ms";
}

} // namespace

ClipGesture::ClipGesture(ArrangeGrid& over, ArrangeState& shared, CPart* pressed, CRect partBox,
                         PartHandle taken)
    : ArrangeGesture(over, shared), anchor(pressed), box(partBox), handle(taken),
      before(valueOf(onlyClip(pressed), taken)), value(before) {
}

bool ClipGesture::stands() const {
    return state.seq() && state.seq()->partToSongTrack(anchor) && onlyClip(anchor);
}

double ClipGesture::perPixel() const {
    return partMilliseconds(state, anchor) / asMax(1, box.width());
}

double ClipGesture::dragged(const DragPoint& point) const {
    if (handle == PartHandle::gain)
        return fLimit(before + (point.anchor.y - point.at.y) / gainPixels, 0.0, 1.0);
    const int way = point.at.x - point.anchor.x;
    return fLimit(before + (handle == PartHandle::fadeIn ? way : -way) * perPixel(), 0.0,
                  partMilliseconds(state, anchor));
}

void ClipGesture::dragMove(const DragPoint& point) {
    value = dragged(point);
    state.edit.current = point.at;
    state.workspace.setStatus(textOf(handle, value));
    state.gridChanged();
}

void ClipGesture::apply(const DragPoint&) {
    if (value == before) return;
    if (handle == PartHandle::gain)
        scaleClips(state.seq(), float(gainAt(before)), float(gainAt(value)));
    else
        changeClips(state.seq(),
                    handle == PartHandle::fadeIn ? ClipSetting::fadeIn : ClipSetting::fadeOut,
                    float(value - before));
}

void ClipGesture::paintOverlay(CGraphic* g, CRect asked) const {
    if (intersect(box, asked).empty()) return;
    CPath line;
    if (handle == PartHandle::gain) {
        const double y = box.bottom - value * box.height();
        line.moveTo(box.left, y);
        line.lineTo(box.right, y);
    } else {
        const double wide = value / perPixel();
        const bool in = handle == PartHandle::fadeIn;
        line.moveTo(in ? box.left : box.right, box.bottom);
        line.lineTo(in ? box.left + wide : box.right - wide, box.top);
    }
    strokePath(g, line, 2, clSelection.fillCol);
}
