#include "arrange/RangePainter.h"

#include "arrange/ArrangeState.h"
#include "arrange/SongRange.h"
#include "gui/CGraphic.h"
#include "gui/Shapes.h"
#include "ui/ProgramItems.h"

#include <algorithm>

namespace {

constexpr double fillShare = 0.2;

bool contains(const TimeRange& range, const CSongTrack* track) {
    return std::find(range.tracks.begin(), range.tracks.end(), track) != range.tracks.end();
}

} // namespace

void paintRange(CGraphic* g, const ArrangeState& state, const TimeRange& range, CRect asked) {
    const int left = state.axis().xOf(range.from), right = state.axis().xOf(range.to);
    for (const ArrangeRow& row : state.rows.all()) {
        const int y = row.top - state.edit.scrollY;
        const CRect box = intersect(asRect(left, y, right, y + row.height - 1), asked);
        if (box.empty() || !contains(range, row.songTrack)) continue;
        fillAlpha(g, box, clSelection.fillCol, fillShare);
        for (const int x : {left, right - 1})
            if (x >= asked.left && x < asked.right)
                g->fillLine(clSelection.fillCol, asRect(x, box.top, x + 1, box.bottom));
    }
}

bool inRows(const ArrangeState& state, const TimeRange& range, int y) {
    const ArrangeRow* row = state.rows.at(y + state.edit.scrollY);
    return row && contains(range, row->songTrack);
}
