#include "arrange/gestures/Overlay.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/Keys.h"
#include "sequencer/song/CSeq.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"

int dragGrid(const ArrangeState& state, int btn) {
    const bool off = (btn & modControl) && !(state.edit.startBtn & modControl);
    return off ? 1 : state.snapTicks();
}

void eachSelectedPart(const ArrangeState& state,
                      const std::function<void(const ArrangeRow&, CPart*)>& visit) {
    for (const ArrangeRow& row : state.rows.all()) {
        if (!row.ofTrack()) continue;
        for (auto* part : row.songTrack->parts)
            if (part->selected()) visit(row, part);
    }
}

void outlineSpan(CGraphic* g, const ArrangeState& state, const ArrangeRow& row, double from,
                 double ticks, CRect asked) {
    CRect box = rowBox(state, row);
    box.left = state.axis().xOf(from);
    box.right = asMax(box.left + 2, state.axis().xOf(from + ticks));
    if (intersect(box, asked).empty()) return;
    const int colour = clSelection.fillCol;
    g->frameRect(colour, box);
    g->frameRect(colour, sizeRect(box, 1, 1, -1, -1));
}

void outlinePart(CGraphic* g, const ArrangeState& state, const ArrangeRow& row, CPart* part,
                 int moved, int grown, CRect asked) {
    outlineSpan(g, state, row, double(part->pos) + moved,
                double(state.seq()->getTicks(part)) + grown, asked);
}

CStr partText(CSeq* seq, const CSongTrack* songTrack, CPart* part) {
    return part->content()->id + ", " + songTrack->track->id + ", " + placeText(seq, part->pos) +
           ", " + lengthText(seq, seq->getTicks(part));
}
