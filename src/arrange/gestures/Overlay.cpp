#include "arrange/gestures/Overlay.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "base/Numbers.h"
#include "engine/CSnap.h"
#include "gui/CGraphic.h"
#include "gui/Keys.h"
#include "sequencer/Bars.h"
#include "sequencer/CSeq.h"
#include "ui/ProgramItems.h"

#include <cstdlib>

int dragGrid(const ArrangeState& state, int btn) {
    const bool off = (btn & modControl) && !(state.edit.startBtn & modControl);
    return off ? 1 : state.seq()->snap->val();
}

void eachSelectedPart(const ArrangeState& state,
                      const std::function<void(const ArrangeRow&, CPart*)>& visit) {
    for (const ArrangeRow& row : state.rows.all()) {
        if (row.lane) continue;
        for (auto* part : each<CPart>(row.songTrack->parts))
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

CStr placeText(CSeq* seq, int tick) {
    const BarPlace at = barPlace(seq, asMax(0, tick));
    CStr text = CStr("bar ") + asStr(at.bar);
    if (at.beat > 1 || at.ticks > 0) text += CStr(".") + asStr(at.beat);
    if (at.ticks > 0) text += CStr(".") + asStr(at.ticks);
    return text;
}

/// By the song's signature.
CStr deltaText(CSeq* seq, int ticks) {
    const int num = seq->options.num(), beat = 4 * quarterTicks / seq->options.den();
    const int way = std::abs(ticks), bar = num * beat;
    return CStr(ticks < 0 ? "-" : "+") + asStr(way / bar) + "." + asStr(way % bar / beat) + "." +
           asStr(way % beat);
}

CStr partText(CSeq* seq, const CSongTrack* songTrack, CPart* part) {
    return part->content()->id + ", " + songTrack->track->id + ", " + placeText(seq, part->pos) +
           ", " + lengthText(seq, seq->getTicks(part));
}

CStr lengthText(CSeq* seq, int ticks) {
    const int beat = 4 * quarterTicks / seq->options.den(), bar = seq->options.num() * beat;
    const auto count = [](int n, const char* what) {
        return asStr(n) + " " + what + (n == 1 ? "" : "s");
    };
    if (ticks % bar == 0) return count(ticks / bar, "bar");
    if (ticks % beat == 0) return count(ticks / beat, "beat");
    return count(ticks, "tick");
}
