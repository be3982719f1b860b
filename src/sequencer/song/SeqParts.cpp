#include "sequencer/song/CSeq.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/PartOrder.h"

#include <algorithm>
#include <cassert>

/// The sequencer's parts: order, length, ghosts.

namespace {

int oneAtLeast(int ticks) {
    return ticks > 0 ? ticks : quarterTicks;
}

} // namespace

CSongTrack* CSeq::partToSongTrack(const CPart* part) {
    CSongTrack* found = nullptr;
    eachSongTrack([&](CSongTrack* songTrack) {
        if (!found && songTrack->parts.contains(part)) found = songTrack;
    });
    return found;
}

CTrack* CSeq::partToTrack(const CPart* part) {
    CSongTrack* songTrack = partToSongTrack(part);
    return songTrack ? songTrack->track : nullptr;
}

bool CSeq::isLocked(const CPart* part) {
    const CTrack* track = partToTrack(part);
    return track && track->locked;
}

bool CSeq::partBefore(CPart* a, CPart* b, void* song) {
    if (a->pos != b->pos) return a->pos < b->pos;
    auto* seq = static_cast<CSeq*>(song);
    return seq->getTicks(a) > seq->getTicks(b);
}

void CSeq::orderParts(CList* a, CList* b, bool all) {
    assert(mayRewire());
    if (all) {
        eachSongTrack(
            [this](CSongTrack* songTrack) { sortParts(songTrack->parts, partBefore, this); });
        return;
    }
    for (CList* list : {a, b})
        if (list) sortParts(*list, partBefore, this);
}

CPart* CSeq::getEditPart() {
    CTrack* track = nullptr;
    return getEditPartAndTrack(track);
}

int CSeq::getTicks(CPart* part) {
    const CAudioEvent* event = lengthEvent(part);
    if (!event) return oneAtLeast(part->length);
    part->length = sampleAsTicks2(this, event, part->pos);
    return oneAtLeast(part->length);
}

int CSeq::playedTicks(CPart* part) {
    assert(heldByThread());
    const CAudioEvent* event = lengthEvent(part);
    const CSeqProg* prog = getProg();
    if (!event || !prog) return oneAtLeast(part->length);
    const unsigned changes = clipChanges + tempo.changes + prog->tempos.version();
    const float before = tempo.before(prog);
    if (part->clipChanges != changes || part->clipTempo != before) {
        part->clipChanges = changes;
        part->clipTempo = before;
        part->clipTicks = sampleAsTicks2(this, event, part->pos);
    }
    return oneAtLeast(part->clipTicks);
}

void CSeq::updateGhostCount() {
    for (auto* master : masterParts) master->ghostCount = 0;
    eachSongTrack([](CSongTrack* songTrack) {
        for (auto* part : songTrack->parts)
            if (part->ghostOf) ++part->ghostOf->ghostCount;
    });
}

CPart* CSeq::makeGhost(CPart* part, CUndo* undo) {
    if (!part->ghostOf) {
        CPart* master = part->copy(0);
        master->flags = 0;
        undo->asAdd(master, &masterParts);
        swapUndoPart(undo, part, newPartLike(part).release());
        undo->asPtr(reinterpret_cast<void**>(part->ghostOf.address()));
        part->ghostOf.storeRelease(master); // the part may be playing
    }
    return part->copy(0);
}
