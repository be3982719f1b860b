#include "arrange/Hit.h"

#include "arrange/ArrangeState.h"
#include "base/Numbers.h"
#include "sequencer/song/CSeq.h"

namespace {

constexpr int widestEdge = 8;
constexpr int partMargin = 1; ///< between a row and the parts in it

} // namespace

int edgeWidth(int partWidth) {
    return asMin(widestEdge, partWidth / 5);
}

CRect rowBox(const ArrangeState& state, const ArrangeRow& row) {
    const int y = row.top - state.edit.scrollY;
    return asRect(0, y + partMargin, state.gridWidth(), y + row.height - partMargin - 1);
}

CRect partBox(const ArrangeState& state, const ArrangeRow& row, CPart* part) {
    CRect box = rowBox(state, row);
    const int from = part->pos;
    box.left = state.axis().xOf(from);
    box.right = state.axis().xOf(double(from) + state.seq()->getTicks(part));
    return box;
}

PartHit partAtPos(const ArrangeState& state, const ArrangeRow& row, int x) {
    PartHit hit;
    for (auto* part : row.songTrack->parts) {
        const CRect box = partBox(state, row, part);
        if (x < box.left || x >= box.right) continue;
        if (hit.part && part->layer < hit.part->layer) continue;
        const int edge = edgeWidth(box.width());
        const bool start = x < box.left + edge, end = x >= box.right - edge;
        hit = {part, start ? zoneStart : end ? zoneEnd : zoneBody};
    }
    return hit;
}
