#include "sequencer/edit/PointEdits.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/Bars.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/SongValues.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>

namespace {

CStr word(const CPart* point) {
    return point->type == partTempo    ? "tempo"
           : point->type == partMarker ? "marker"
                                       : "time signature";
}

CList& listOf(CSeqProg* prog, const CPart* point) {
    if (point->type == partTempo) return prog->tempos;
    if (point->type == partMarker) return prog->markers;
    return prog->timesigs;
}

template <class F>
void step(CSeq* seq, const CStr& title, F record) {
    CUndo* undo = seq->host->undoStart(
        title, seq, {.song = true, .seq = SeqNotice::parts | SeqNotice::transport});
    record(undo);
    seq->host->undoEnd(undo, false);
}

int placeOf(int tick) {
    return asMinMax(tick, 0, maxTicks);
}

} // namespace

CPart* addMarker(CSeq* seq, int tick) {
    CSeqProg* prog = seq->getProg();
    auto* marker = new CMarkerPart;
    marker->id = CStr("Marker ") + asStr(prog->markers.getCount() + 1);
    marker->pos = placeOf(tick);
    const BarPlace at = barPlace(seq, marker->pos);
    marker->length = asMax(1, tickOf(seq, {at.bar + 1, 1, 0}) - tickOf(seq, {at.bar, 1, 0}));
    step(seq, "Add marker", [&](CUndo* undo) { prog->addMarker(marker, undo); });
    return marker;
}

CTempoPart* addTempoPoint(CSeq* seq, int tick, float bpm) {
    CSeqProg* prog = seq->getProg();
    tick = placeOf(tick);
    if (bpm < 1.0f) bpm = float(prog->tempoMap().bpmAt(seq->host->songTempo, tick));
    CTempoPart* last = seq->getTempoAtPos(tick);
    if (last && last->pos == tick) {
        seq->host->values->set(tempoOf(last), double(bpm));
        return last;
    }
    auto* made = new CTempoPart;
    made->pos = tick;
    made->setTempo(bpm);
    made->ramp = last && last->ramp;
    step(seq, "Add tempo", [&](CUndo* undo) { prog->addTempo(made, undo); });
    return made;
}

CPart* addTimesig(CSeq* seq, int tick) {
    CSeqProg* prog = seq->getProg();
    tick = placeOf(tick);
    const CTimesigPart* before = prog->timesigInForce(tick);
    auto* made = before ? new CTimesigPart(before->getNum(), before->getDen())
                        : new CTimesigPart(seq->options.num(), seq->options.den());
    made->pos = tick;
    step(seq, "Add time signature", [&](CUndo* undo) { prog->addTimesig(made, undo); });
    return made;
}

void movePoint(CSeq* seq, CPart* point, int tick) {
    const int by = placeOf(tick) - point->pos;
    if (by == 0) return;
    step(seq, "Move " + word(point), [&](CUndo* undo) { recordMove(undo, point, by); });
}

void moveTempo(CSeq* seq, CTempoPart* point, int tick, float bpm) {
    const int by = placeOf(tick) - point->pos;
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
