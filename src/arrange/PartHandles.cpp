#include "arrange/PartHandles.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "base/Numbers.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"

namespace {

constexpr int handleSize = 9;
constexpr int leastWidth = 48, leastHeight = 32; ///< of a part with handles

} // namespace

std::vector<DrawnHandle> handlesOf(CPart* part, CRect box) {
    if (!part->selected() || box.width() < leastWidth || box.height() < leastHeight ||
        !onlyClip(part))
        return {};
    const auto square = [&](PartHandle handle, int left) {
        return DrawnHandle{handle, asRect(left, box.top, left + handleSize, box.top + handleSize)};
    };
    return {square(PartHandle::fadeIn, box.left),
            square(PartHandle::gain, (box.left + box.right - handleSize) / 2),
            square(PartHandle::fadeOut, box.right - handleSize)};
}

PartHandle handleAt(CPart* part, CRect box, CPoint at) {
    for (const DrawnHandle& h : handlesOf(part, box))
        if (at.x >= h.box.left && at.x < h.box.right && at.y < h.box.bottom) return h.handle;
    const bool large = part->selected() && box.width() >= leastWidth && box.height() >= leastHeight;
    const bool upperEnd =
        at.x >= box.right - edgeWidth(box.width()) && at.y < box.top + box.height() / 2;
    return large && upperEnd ? PartHandle::loop : PartHandle::none;
}

double partMilliseconds(const ArrangeState& state, CPart* part) {
    constexpr int perSecond = 1000;
    return state.seq()->ticksToFrames(part->pos, state.seq()->getTicks(part), perSecond);
}
