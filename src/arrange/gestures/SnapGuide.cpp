#include "arrange/gestures/SnapGuide.h"

#include "arrange/ArrangeState.h"
#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "ui/ProgramItems.h"

#include <algorithm>
#include <cstdlib>

SnapGuide::SnapGuide(const ArrangeState& state) {
    CSeq* seq = state.seq();
    CSeqProg* prog = seq->getProg();
    for (auto* songTrack : prog->tracks)
        for (auto* part : songTrack->parts) {
            if (part->selected()) continue;
            places.push_back(part->pos);
            places.push_back(limitTicks(int64_t(part->pos) + seq->getTicks(part)));
        }
    for (auto* marker : prog->markers) places.push_back(marker->pos);
    places.push_back(prog->leftLocator);
    places.push_back(prog->rightLocator);
    std::sort(places.begin(), places.end());
}

int SnapGuide::delta(const ArrangeState& state, int grid, int anchor, int dragged) {
    const int byGrid = state.snappedBy(grid, anchor, dragged);
    shown = -1;
    if (grid <= 1 || dragged == 0) return byGrid;
    const int wanted = anchor + dragged;
    const auto behind = std::lower_bound(places.begin(), places.end(), wanted);
    int best = anchor + byGrid, way = std::abs(best - wanted);
    const auto consider = [&](int place) {
        const int off = std::abs(place - wanted);
        if (off > way || state.axis().pixelsIn(off) > reach || place == anchor) return;
        best = shown = place;
        way = off;
    };
    if (behind != places.end()) consider(*behind);
    if (behind != places.begin()) consider(*std::prev(behind));
    return best - anchor;
}

void SnapGuide::paint(CGraphic* g, const ArrangeState& state, CRect asked) const {
    if (shown < 0) return;
    const int x = state.axis().xOf(shown);
    if (x >= asked.left && x < asked.right)
        g->fillLine(clSelection.fillCol, asRect(x, asked.top, x + 1, asked.bottom));
}
