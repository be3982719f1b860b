#include "sequencer/song/CSeq.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/PartOrder.h"

#include <algorithm>
#include <cassert>
#include <unordered_set>

/// The sequencer's parts: selection, order, length, ghosts.

namespace {

void countEvents(CPart* part, CPartSummary& summary) {
    for (CBaseEvent* event = part->getEvents(); event; event = event->next) {
        const CSample* sample = static_cast<CAudioEvent*>(event)->sample;
        if (sample) (sample->chs == 1 ? summary.monoEvents : summary.stereoEvents)++;
    }
}

void countPart(CPart* part, CPartSummary& summary) {
    summary.parts++;
    if (!part->selected()) return;
    summary.selected++;
    summary.ghosts += part->ghostOf != nullptr;
    summary.midi += part->type == partMIDI;
    summary.drum += part->type == partDrum;
    if (part->type != partAudio) return;
    summary.audio++;
    summary.multiclip += static_cast<CAudioPart*>(part)->multiclip != 0;
    countEvents(part, summary);
}

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

void CSeq::selectTrack(CSongTrack* songTrack, bool on) {
    songTrack->track->setSelected(on);
    if (on)
        selectedTracks.addUnique(songTrack);
    else
        selectedTracks.remove(songTrack);
}

void CSeq::unselectTracks() {
    for (auto* track : each<CTrack>(tracks)) track->setSelected(false);
    selectedTracks.clear();
}

bool CSeq::isLocked(const CPart* part) {
    const CTrack* track = partToTrack(part);
    return track && track->locked;
}

void CSeq::purgeSelection() {
    unsigned lists = selectedTracks.version() + progs.version();
    for (const auto* prog : each<CSeqProg>(progs)) lists += prog->tracks.version();
    if (lists == purgedLists) return;
    std::unordered_set<const CSongTrack*> linked;
    eachSongTrack([&linked](CSongTrack* songTrack) { linked.insert(songTrack); });
    std::vector<CSongTrack*> gone;
    for (auto* songTrack : each<CSongTrack>(selectedTracks))
        if (!linked.count(songTrack)) gone.push_back(songTrack);
    for (CSongTrack* songTrack : gone) selectedTracks.remove(songTrack);
    purgedLists = lists + unsigned(gone.size());
}

CPart* CSeq::getEditPart() {
    CTrack* track = nullptr;
    return getEditPartAndTrack(track);
}

CPart* CSeq::getEditPartAndTrack(CTrack*& track) {
    track = nullptr;
    purgeSelection();
    CPart* found = nullptr;
    for (auto* songTrack : each<CSongTrack>(selectedTracks))
        for (auto* part : each<CPart>(songTrack->parts)) {
            if (!part->selected()) continue;
            if (found || !songTrack->track->open()) return nullptr;
            found = part;
        }
    if (found) track = partToTrack(found);
    return found;
}

CPart* CSeq::getFirstSelectedPart(int partType, CSongTrack** owner) {
    CSeqProg* prog = getProg();
    if (!prog) return nullptr;
    for (auto* songTrack : each<CSongTrack>(prog->tracks))
        for (auto* part : each<CPart>(songTrack->parts)) {
            if (!part->selected() || !part->asType(categoryPart, partType)) continue;
            if (owner) *owner = songTrack;
            return part;
        }
    return nullptr;
}

void CSeq::unselectParts() {
    eachSongTrack([](CSongTrack* songTrack) {
        for (auto* part : each<CPart>(songTrack->parts)) part->setSelected(false);
    });
}

void CSeq::selectAll() {
    CSeqProg* prog = getProg();
    if (!prog) return;
    for (auto* songTrack : each<CSongTrack>(prog->tracks)) {
        selectTrack(songTrack, true);
        for (auto* part : each<CPart>(songTrack->parts)) part->setSelected(true);
    }
}

void CSeq::getPartSummary(CPartSummary& summary) {
    summary = CPartSummary();
    purgeSelection();
    for (auto* songTrack : each<CSongTrack>(selectedTracks))
        for (auto* part : each<CPart>(songTrack->parts)) countPart(part, summary);
}

void CSeq::clearCopies() {
    deleteAll<CPart>(copies);
    copyTracks.clear();
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
    const unsigned changes = clipChanges + prog->tempos.version();
    const float tempo = tempoBefore(prog);
    if (part->clipChanges != changes || part->clipTempo != tempo) {
        part->clipChanges = changes;
        part->clipTempo = tempo;
        part->clipTicks = sampleAsTicks2(this, event, part->pos);
    }
    return oneAtLeast(part->clipTicks);
}

void CSeq::updateGhostCount() {
    for (auto* master : each<CPart>(masterParts)) master->ghostCount = 0;
    eachSongTrack([](CSongTrack* songTrack) {
        for (auto* part : each<CPart>(songTrack->parts))
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
