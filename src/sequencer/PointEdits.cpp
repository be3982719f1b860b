#include "sequencer/PointEdits.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/Bars.h"
#include "sequencer/CSeq.h"
#include "sequencer/PartEdits.h"
#include "sequencer/Points.h"
#include "sequencer/SongValues.h"

#include <algorithm>

namespace {

CStr word(const CPart* point) {
    return point->type == partTempo    ? "tempo"
           : point->type == partMarker ? "marker"
                                       : "time signature";
}

CList& listOf(CSeqProg* prog, const CPart* point) {
    return point->type == partTempo    ? prog->tempos
           : point->type == partMarker ? prog->markers
                                       : prog->timesigs;
}

template <class F>
void step(CSeq* seq, const CStr& title, F record) {
    CUndo* undo = seq->host->undoStart(title, seq, {.song = true, .seq = SeqNotice::parts});
    record(undo);
    seq->host->undoEnd(undo, false);
}

CPart* placed(CPart* point, int tick) {
    point->pos = asMinMax(tick, 0, maxTicks);
    return point;
}

} // namespace

void addPoint(CSeq* seq, CPart* point) {
    CSeqProg* prog = seq->getProg();
    step(seq, "Add " + word(point), [&](CUndo* undo) {
        if (point->type == partTempo)
            prog->addTempo(static_cast<CTempoPart*>(point), undo);
        else if (point->type == partMarker)
            prog->addMarker(static_cast<CMarkerPart*>(point), undo);
        else
            prog->addTimesig(static_cast<CTimesigPart*>(point), undo);
    });
}

CPart* newMarker(CSeq* seq, int tick) {
    auto* marker = new CMarkerPart;
    marker->id = CStr("Marker ") + asStr(seq->getProg()->markers.getCount() + 1);
    const BarPlace at = barPlace(seq, asMax(0, tick));
    marker->length = asMax(1, tickOf(seq, {at.bar + 1, 1, 0}) - tickOf(seq, {at.bar, 1, 0}));
    return placed(marker, tick);
}

CPart* newTempo(CSeq* seq, int tick, float bpm) {
    auto* point = new CTempoPart;
    const CTempoPart* before = nullptr;
    for (auto* t : each<CTempoPart>(seq->getProg()->tempos))
        if (t->pos <= tick) before = t;
    const float now = before ? before->getTempo() : seq->host->songTempo.load();
    point->setTempo(bpm > 0.0f ? bpm : now);
    return placed(point, tick);
}

CPart* newTimesig(CSeq* seq, int tick) {
    const CTimesigPart* before = seq->getProg()->timesigInForce(tick);
    auto* point = before ? new CTimesigPart(before->getNum(), before->getDen())
                         : new CTimesigPart(seq->options.num(), seq->options.den());
    return placed(point, tick);
}

void movePoint(CSeq* seq, CPart* point, int tick) {
    const int by = asMinMax(tick, 0, maxTicks) - point->pos;
    if (by == 0) return;
    step(seq, "Move " + word(point), [&](CUndo* undo) { recordMove(undo, point, by); });
}

void moveTempo(CSeq* seq, CTempoPart* point, int tick, float bpm) {
    const int by = asMinMax(tick, 0, maxTicks) - point->pos;
    const float to = std::clamp(bpm, minTempo, maxTempo);
    if (by == 0 && to == point->getTempo()) return;
    step(seq, "Move tempo", [&](CUndo* undo) {
        if (by != 0) recordMove(undo, point, by);
        if (to == point->getTempo()) return;
        undo->asFloat(point->tempo.address());
        point->setTempo(to);
    });
}

void resizeMarker(CSeq* seq, CMarkerPart* marker, int length) {
    const int by = asMinMax(length, 1, maxTicks) - marker->length;
    if (by == 0) return;
    step(seq, "Resize marker", [&](CUndo* undo) { recordGrow(undo, marker, by); });
}

void deletePoint(CSeq* seq, CPart* point) {
    CList& list = listOf(seq->getProg(), point);
    if (!list.contains(point)) return;
    step(seq, "Delete " + word(point), [&](CUndo* undo) { undo->asRemove(point, &list); });
}
