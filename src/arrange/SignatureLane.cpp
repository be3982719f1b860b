#include "arrange/SignatureLane.h"

#include "arrange/ArrangeState.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "sequencer/edit/PointEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/SongValues.h"
#include "ui/ProgramItems.h"

#include <cstdio>

namespace {

constexpr int margin = 6, ownWidth = 60;

const CTimesigPart* timesig(const CPart* point) {
    return static_cast<const CTimesigPart*>(point);
}

} // namespace

SignatureLane::SignatureLane(CWin* owner, ArrangeState& shared)
    : PointLane(owner, shared, "timesigs", laneHeight) {
    hint = "Time signatures: drag one; Alt or a double click adds one, a double click on one types "
           "over it";
}

ListView<CPart> SignatureLane::points(CSeq* seq) const {
    return seq->getProg()->timesigs;
}

CPart* SignatureLane::addPoint(CSeq* seq, int tick, int) const {
    return addTimesig(seq, tick);
}

CRect SignatureLane::boxOf(const CPart* point, const Shift& shift) const {
    const int x = xOf(double(point->pos) + shift.ticks);
    const int wide = textFace({})->textWidth(typedText(point)) + 2 * margin;
    return asRect(x, 1, x + wide, height - 2);
}

void SignatureLane::paintGround(CGraphic* g, CRect asked) {
    g->fillRect(clMarkers.fillCol, asked);
    CSeq* seq = state.seq();
    if (!seq || seq->getProg()->timesigInForce(0)) return;
    const CStr own = asStr(seq->options.num()) + "/" + asStr(seq->options.den());
    g->drawText(win->app->gui->palette.dimText, own,
                asRect(xOf(0) + margin, 1, xOf(0) + ownWidth, height - 2), textLeft);
}

void SignatureLane::paintPoint(CGraphic* g, const CPart* point, const Shift& shift, bool chosen) {
    const CRect box = boxOf(point, shift);
    const CGuiItem2& look = chosen ? clMarkerSelected : clMarker;
    drawGuiItem(g, box, &look);
    g->drawText(look.textCol, typedText(point), box, 0);
}

void SignatureLane::apply(CSeq* seq, CPart* point, const Shift& shift) {
    movePoint(seq, point, point->pos + shift.ticks);
}

CStr SignatureLane::shownText(const CPart* point, const Shift&) const {
    return typedText(point);
}

CStr SignatureLane::typedText(const CPart* point) const {
    return asStr(timesig(point)->getNum()) + "/" + asStr(timesig(point)->getDen());
}

/// "7/8"; anything else leaves it.
void SignatureLane::typed(CSeq*, CPart* point, const CStr& text) {
    int num = 0, den = 0;
    char rest = 0;
    if (std::sscanf(text.asChar(), "%4d / %4d %c", &num, &den, &rest) != 2) return;
    if (num < 1 || den < 1 || num > maxTimesig || den > maxTimesig) return;
    state.qv->values->set(signatureOf(static_cast<CTimesigPart*>(point)),
                          {double(num), double(den)});
}

std::vector<double> SignatureLane::look(const CPart* point) const {
    return {double(timesig(point)->getNum()), double(timesig(point)->getDen())};
}

void SignatureLane::describe(Description& d, int part) const {
    PointLane::describe(d, part);
    if (part == wholeCtrl) d.name = "Time signature";
}
