#include "arrange/ShownParts.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "arrange/LanePress.h"
#include "sequencer/CSeq.h"

namespace {

constexpr int pointReach = 6; ///< pixels around a point

void addPoints(const ArrangeState& state, const ArrangeRow& row, CRect view,
               std::vector<ShownPart>& found) {
    for (const LanePoint& p : pointsOf(state, row)) {
        const int x = state.axis().xOf(p.tick);
        const int y = laneOf(state, row, p.part).yOf(double(p.point->value));
        const CRect box = asRect(x - pointReach, y - pointReach, x + pointReach, y + pointReach);
        if (!intersect(box, view).empty()) found.push_back({row.songTrack, p.part, box, p});
    }
}

} // namespace

bool ShownPart::selected() const {
    return point.point ? isSelected(point.point) : part->selected();
}

std::vector<ShownPart> partsInView(const ArrangeState& state) {
    std::vector<ShownPart> found;
    const CRect view = asRect(0, 0, state.gridWidth(), state.gridHeight());
    for (const ArrangeRow& row : state.rows.all()) {
        if (intersect(rowBox(state, row), view).empty()) continue;
        if (row.lane) {
            addPoints(state, row, view, found);
            continue;
        }
        for (auto* part : each<CPart>(row.songTrack->parts)) {
            const CRect box = partBox(state, row, part);
            if (box.left >= view.right) break;
            if (box.right > view.left) found.push_back({row.songTrack, part, box, {}});
        }
    }
    return found;
}
