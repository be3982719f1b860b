#include "arrange/gestures/LassoGesture.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "arrange/LanePress.h"
#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/Shapes.h"
#include "sequencer/CSeq.h"
#include "ui/ProgramItems.h"

CRect LassoGesture::band() const {
    const CPoint a = state.edit.start, b = state.edit.current;
    return asRect(asMin(a.x, b.x), asMin(a.y, b.y), asMax(a.x, b.x) + 1, asMax(a.y, b.y) + 1);
}

void LassoGesture::dragMove(const DragPoint& point) {
    state.edit.start = point.anchor;
    state.edit.current = point.at;
    state.gridChanged();
}

void LassoGesture::choose(const ArrangeRow& row, CPart* part, CRect caught) {
    if (intersect(partBox(state, row, part), caught).empty()) return;
    if (row.take >= 0) return;
    if (row.lane)
        PartMouse::selectWithin(laneOf(state, row, part), state.axis(), caught);
    else
        part->setSelected(true);
}

void LassoGesture::apply(const DragPoint&) {
    const CRect caught = band();
    for (const ArrangeRow& row : state.rows.all()) {
        for (auto* part : each<CPart>(row.songTrack->parts)) choose(row, part, caught);
    }
    state.gridChanged();
}

void LassoGesture::paintOverlay(CGraphic* g, CRect asked) const {
    const CRect shown = band();
    if (intersect(shown, asked).empty()) return;
    fillAlpha(g, shown, clSelection.fillCol, 0.15);
    g->frameRect(clSelection.fillCol, shown);
}
