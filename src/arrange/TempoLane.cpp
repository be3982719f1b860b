#include "arrange/TempoLane.h"

#include "arrange/ArrangeState.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Shapes.h"
#include "gui/controls/CPopup.h"
#include "sequencer/edit/PointEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/SongValues.h"
#include "ui/ProgramItems.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr int reach = 5, radius = 3, margin = 8, textRoom = 44, textHeight = 14;
constexpr double leastSpan = 40, air = 5; ///< beats per minute
constexpr int tagRamp = 50;

const CTempoPart* tempo(const CPart* point) {
    return static_cast<const CTempoPart*>(point);
}

/// A tenth is as fine as it is shown.
double tenths(double bpm) {
    return std::round(bpm * 10) / 10;
}

} // namespace

TempoLane::TempoLane(CWin* owner, ArrangeState& shared)
    : PointLane(owner, shared, "tempos", laneHeight) {
    hint = "Tempo: drag a point along, or up and down; Alt or a double click adds one, a double "
           "click on a point types its beats per minute";
}

ListView<CPart> TempoLane::points(CSeq* seq) const {
    return seq->getProg()->tempos;
}

TempoLane::Scale TempoLane::scale() const {
    CSeq* seq = state.seq();
    double low = double(seq->host->songTempo), high = low;
    for (const auto* p : seq->getProg()->tempos) {
        low = std::min(low, double(p->getTempo()));
        high = std::max(high, double(p->getTempo()));
    }
    const double more = std::max(0.0, (leastSpan - (high - low)) / 2);
    return {low - more - air, high + more + air};
}

int TempoLane::yOf(double bpm) const {
    const Scale s = scale();
    return margin + asRound((s.high - bpm) / (s.high - s.low) * (height - 2 * margin));
}

double TempoLane::bpmOf(const CPart* point, const Shift& shift) const {
    const Scale s = scale();
    const double lower = shift.y * (s.high - s.low) / (height - 2 * margin);
    const double bpm = double(tempo(point)->getTempo());
    if (shift.y == 0) return bpm;
    return std::clamp(tenths(bpm - lower), double(minTempo), double(maxTempo));
}

/// The tempo that is under the pointer; by the keys that in force.
CPart* TempoLane::addPoint(CSeq* seq, int tick, int y) const {
    if (y < 0) return addTempoPoint(seq, tick);
    const Scale s = scale();
    const double bpm = s.high - (y - margin) * (s.high - s.low) / (height - 2 * margin);
    return addTempoPoint(seq, tick, std::clamp(float(tenths(bpm)), minTempo, maxTempo));
}

CRect TempoLane::boxOf(const CPart* point, const Shift& shift) const {
    const int x = xOf(double(point->pos) + shift.ticks), y = yOf(bpmOf(point, shift));
    return asRect(x - reach, y - reach, x + reach + textRoom, y + reach);
}

void TempoLane::paintGround(CGraphic* g, CRect asked) {
    g->fillRect(clTempoTrack.fillCol, asked);
    CSeq* seq = state.seq();
    if (!seq) return;
    const int colour = win->app->gui->palette.dimText;
    double bpm = double(seq->host->songTempo);
    int x = xOf(0);
    bool line = false;
    const auto stretch = [&](int toX, double toBpm) {
        CPath path;
        path.moveTo(asMax(x, -1), yOf(bpm) + 0.5);
        path.lineTo(asMin(toX, width + 1), yOf(line ? toBpm : bpm) + 0.5);
        if (!line) path.lineTo(asMin(toX, width + 1), yOf(toBpm) + 0.5);
        strokePath(g, path, 1, colour);
    };
    for (const auto* p : seq->getProg()->tempos) {
        const int at = xOf(double(p->pos) + shiftOf(p).ticks);
        const double to = bpmOf(p, shiftOf(p));
        if (at >= 0 && x <= width) stretch(at, to);
        x = at;
        bpm = to;
        line = p->ramp != 0;
    }
    line = false;
    if (x <= width) stretch(width + 1, bpm);
    const auto* opening = seq->getProg()->tempos.getFirst();
    if (opening && opening->pos == 0) return;
    const double own = double(seq->host->songTempo);
    const int y = asMax(0, yOf(own) - textHeight);
    g->drawText(colour, asStrFormat(own, "%.1f"),
                asRect(xOf(0) + reach, y, xOf(0) + textRoom, y + textHeight), textLeft);
}

void TempoLane::paintPoint(CGraphic* g, const CPart* point, const Shift& shift, bool chosen) {
    const CPalette& palette = win->app->gui->palette;
    const CRect box = boxOf(point, shift);
    const int x = box.left + reach, y = box.top + reach;
    CPath disc;
    disc.moveTo(x + radius + 0.5, y + 0.5);
    disc.arc(x + 0.5, y + 0.5, radius + (chosen ? 1 : 0), 0, 6.2832);
    fillPath(g, disc, chosen ? palette.accent : clTempoPart.textCol);
    const int textTop = asMinMax(y - textHeight / 2, 0, height - textHeight - 1);
    g->drawText(chosen ? palette.text : palette.dimText, typedText(point),
                asRect(x + reach + 2, textTop, x + reach + textRoom, textTop + textHeight),
                textLeft);
}

void TempoLane::apply(CSeq* seq, CPart* point, const Shift& shift) {
    moveTempo(seq, static_cast<CTempoPart*>(point), point->pos + shift.ticks,
              float(bpmOf(point, shift)));
}

CStr TempoLane::shownText(const CPart* point, const Shift& shift) const {
    return asStrFormat(bpmOf(point, shift), "%.1f") + " bpm";
}

CStr TempoLane::typedText(const CPart* point) const {
    return asStrFormat(tempo(point)->getTempo(), "%.1f");
}

void TempoLane::typed(CSeq*, CPart* point, const CStr& text) {
    const double bpm = std::strtod(text.asChar(), nullptr);
    if (bpm > 0) state.qv->values->set(tempoOf(static_cast<CTempoPart*>(point)), bpm);
}

std::vector<double> TempoLane::look(const CPart* point) const {
    return {double(tempo(point)->getTempo()), double(tempo(point)->ramp)};
}

void TempoLane::fillMenu(CPopup* popup, CPart* point) {
    popup->addSeparator();
    addEntry(popup, "In a line to the next", tagRamp);
    popup->items.last()->checked = tempo(point)->ramp != 0;
}

void TempoLane::chosenEntry(CSeq*, CPart* point, int) {
    auto* of = static_cast<CTempoPart*>(point);
    state.qv->values->set(rampOf(of), of->ramp ? 0.0 : 1.0);
}

void TempoLane::describe(Description& d, int part) const {
    PointLane::describe(d, part);
    if (part == wholeCtrl) d.name = "Tempo track";
}
