#include "arrange/ShownParts.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "sequencer/CSeq.h"

std::vector<ShownPart> partsInView(const ArrangeState& state) {
    std::vector<ShownPart> found;
    const CRect view = asRect(0, 0, state.gridWidth(), state.gridHeight());
    for (const ArrangeRow& row : state.rows.all()) {
        if (row.lane || intersect(rowBox(state, row), view).empty()) continue;
        for (auto* part : each<CPart>(row.songTrack->parts)) {
            const CRect box = partBox(state, row, part);
            if (box.left >= view.right) break;
            if (box.right > view.left) found.push_back({row.songTrack, part, box});
        }
    }
    return found;
}
