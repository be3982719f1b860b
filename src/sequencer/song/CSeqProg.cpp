#include "sequencer/song/CSeqProg.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "engine/TransportRing.h"
#include "sequencer/edit/Pending.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>
#include <cassert>

namespace {

template <class T>
T* covering(const ListOf<T>& points, int tick) {
    for (auto* point : points)
        if (point->pos <= tick && tick < int64_t(point->pos) + point->length) return point;
    return nullptr;
}

/// Links `point` in front of the entries that `follows` it; the list is in order.
template <class T, class F>
void linkPoint(CQV* host, ListOf<T>& points, T* point, CUndo* undo, F follows) {
    int index = 0;
    eachWithPending(undo, &points, [&](const T* other) { index += !follows(other->pos); });
    if (undo) {
        undo->asAdd(point, &points, index);
    } else {
        GraphHold hold(host);
        points.insert(index, point);
    }
}

int fromBase(int base, int grid, int tick) {
    return saturate(int64_t(base) + snapped(grid, saturate(int64_t(tick) - base), true));
}

} // namespace

void MarkerSession::add(CMarkerPart* marker) {
    const int index = used;
    if (index == capacity) return;
    visits[index] = marker;
    used.storeRelease(index + 1);
}

void MarkerSession::purge(const CObject* marker) {
    int kept = 0;
    for (int i = 0; i < used; i++)
        if (visits[i] != marker) visits[kept++] = visits[i];
    used.storeRelease(kept);
}

CSeqProg::CSeqProg(CSeq* owner) : seq(owner) {
}

CSeqProg::~CSeqProg() {
    deleteAll(tracks);
    deleteAll<CPart>(markers);
    deleteAll<CPart>(timesigs);
    deleteAll<CPart>(tempos);
}

void CSeqProg::setMarker(CMarkerPart* marker) {
    TransportCall call;
    call.target = this;
    call.arg = marker;
    call.act = [](CObject* target, double, void* arg) {
        static_cast<CSeqProg*>(target)->setMarkerNow(static_cast<CMarkerPart*>(arg));
    };
    seq->host->onTransport(call);
}

void CSeqProg::setMarkerNow(CMarkerPart* marker) {
    if (marker == activeMarker) return;
    if (!playing || !playingMarker) {
        leftLocator = marker->pos;
        rightLocator = marker->endTick();
        seq->setPos(double(marker->pos));
        playingMarker = marker;
    }
    activeMarker = marker;
    seq->songNotices.raise(SeqNotice::transport);
}

void CSeqProg::priorMarker() {
    stepMarker(-1);
}

void CSeqProg::nextMarker() {
    stepMarker(1);
}

void CSeqProg::stepMarker(int step) {
    const int now = markers.indexed(activeMarker);
    const int index = now < 0 ? 0 : asMinMax(now + step, 0, markers.getCount() - 1);
    if (void* marker = markers.items(index)) setMarker(static_cast<CMarkerPart*>(marker));
}

CMarkerPart* CSeqProg::noteToMarker(int note) {
    constexpr int octave = 12, whiteKeys = 7, firstKey = 21; // 3 octaves below: note 36
    constexpr int degrees[octave] = {0, -1, 1, -1, 2, 3, -1, 4, -1, 5, -1, 6};
    if (note < 0 || degrees[note % octave] < 0) return nullptr;
    const int index = note / octave * whiteKeys + degrees[note % octave] - firstKey;
    return markers.items(index);
}

void CSeqProg::purgeMarker(const CObject* marker) {
    assert(seq->heldByThread());
    if (activeMarker == marker) activeMarker = nullptr;
    if (playingMarker == marker) playingMarker = nullptr;
    session.purge(marker);
}

CMarkerPart* CSeqProg::getMarkerAtPos(int tick) {
    return covering<CMarkerPart>(markers, tick);
}

CTimesigPart* CSeqProg::getTimesigAtPos(int tick) {
    return covering<CTimesigPart>(timesigs, tick);
}

CTimesigPart* CSeqProg::timesigInForce(int tick) {
    CTimesigPart* found = nullptr;
    for (auto* point : timesigs) {
        if (point->pos > tick) break;
        found = point;
    }
    return found;
}

CTempoPart* CSeqProg::getTempoAtPos(int tick) {
    return covering<CTempoPart>(tempos, tick);
}

CSongTrack* CSeqProg::songTrackOf(const CTrack* track) {
    for (auto* songTrack : tracks)
        if (songTrack->track == track) return songTrack;
    return nullptr;
}

void CSeqProg::getSelectedParts(CList* list) {
    for (auto* songTrack : tracks)
        for (auto* part : songTrack->parts)
            if (part->selected()) list->add(part);
}

bool CSeqProg::hasParts() const {
    for (const auto* songTrack : tracks)
        if (!songTrack->parts.empty()) return true;
    return false;
}

CPart* CSeqProg::getFirstSelectedPart() {
    for (auto* songTrack : tracks)
        for (auto* part : songTrack->parts)
            if (part->selected()) return part;
    return nullptr;
}

CPart* CSeqProg::getLastSelectedPart() {
    CPart* last = nullptr;
    for (auto* songTrack : tracks)
        for (auto* part : songTrack->parts)
            if (part->selected()) last = part;
    return last;
}

int CSeqProg::duration() {
    int end = 0;
    for (auto* songTrack : tracks) end = asMax(end, songTrack->duration());
    return end;
}

void CSeqProg::addMarker(CMarkerPart* marker, CUndo* undo) {
    linkPoint(seq->host, markers, marker, undo, [](int) { return false; });
}

void CSeqProg::addTimesig(CTimesigPart* point, CUndo* undo) {
    linkPoint(seq->host, timesigs, point, undo, [point](int other) { return other >= point->pos; });
}

void CSeqProg::addTempo(CTempoPart* point, CUndo* undo) {
    if (!undo) {
        const GraphHold hold(seq->host);
        reserveTempos(tempos.getCount() + 1);
    }
    linkPoint(seq->host, tempos, point, undo, [point](int other) { return other > point->pos; });
}

const TempoMap& CSeqProg::tempoMap() {
    TempoMap& map = seq->heldByThread() ? heldTempos : shownTempos;
    map.refresh(tempos, seq->tempo.changes);
    return map;
}

void CSeqProg::reserveTempos(int count) {
    TempoMap::Room room = TempoMap::roomFor(size_t(asMax(count, tempos.getCount())));
    heldTempos.takeRoom(room);
}

int CSeqProg::snapTo(int tick, int grid) {
    int base = 0;
    for (auto* point : timesigs)
        if (point->pos <= tick) base = point->pos;
    return fromBase(base, grid, tick);
}

int CSeqProg::snapToBeat(int tick, int, int den) {
    int base = 0;
    for (auto* point : timesigs) {
        if (point->pos > tick) break;
        base = point->pos;
        den = point->getDen();
    }
    const int beat = den > 0 ? quarterTicks / den * 4 : 0;
    return fromBase(base, beat, tick);
}
