#include "sequencer/edit/MoveEdits.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>

namespace {

constexpr StepEffects moveEffects{.song = true, .seq = SeqNotice::parts};

int limited(const MoveRange& range, int deltaTicks) {
    return asMinMax(deltaTicks, range.minTicks, range.maxTicks);
}

/// The song track so many rows on, if it takes the part; else null.
CSongTrack* targetOf(CSeq* seq, const PlacedPart& placed, int deltaTracks) {
    auto* target = seq->getProg()->tracks.items(placed.row + deltaTracks);
    return target && target->takesEdits(placed.part) ? target : nullptr;
}

int partTypeOf(const CTrack* track) {
    switch (track->kind) {
    case trackMIDI:
        return partMIDI;
    case trackAudio:
        return partAudio;
    case trackDrum:
        return partDrum;
    default:
        return partPlain;
    }
}

} // namespace

MoveRange moveRange(CSeq* seq) {
    const std::vector<PlacedPart> parts = selectedParts(seq);
    if (parts.empty()) return {};
    int first = maxTicks, last = 0;
    for (const PlacedPart& p : parts) {
        first = std::min(first, int(p.part->pos));
        last = std::max(last, limitTicks(int64_t(p.part->pos) + seq->getTicks(p.part)));
    }
    return {asMin(-first, 0), maxTicks - last, -parts.front().row,
            seq->getProg()->tracks.getCount() - 1 - parts.back().row};
}

void moveParts(CSeq* seq, int deltaTicks, int deltaTracks) {
    CUndo* undo = seq->host->undoStart("Move", seq, moveEffects);
    recordMoves(seq, undo, deltaTicks, deltaTracks);
    seq->host->undoEnd(undo, false);
}

void recordMoves(CSeq* seq, CUndo* undo, int deltaTicks, int deltaTracks) {
    const MoveRange range = moveRange(seq);
    const int ticks = limited(range, deltaTicks);
    const int rows = asMinMax(deltaTracks, range.minTracks, range.maxTracks);
    for (const PlacedPart& p : selectedParts(seq))
        if (CSongTrack* target = targetOf(seq, p, rows))
            recordTransfer(undo, p.part, p.songTrack, target, ticks);
}

void copyParts(CSeq* seq, int deltaTicks, int deltaTracks, bool ghosts) {
    const MoveRange range = moveRange(seq);
    const int ticks = limited(range, deltaTicks);
    const int rows = asMinMax(deltaTracks, range.minTracks, range.maxTracks);
    CUndo* undo = seq->host->undoStart("Copy", seq, moveEffects);
    PartChange change;
    for (const PlacedPart& p : selectedParts(seq)) {
        CSongTrack* target = targetOf(seq, p, rows);
        if (!target) continue;
        std::unique_ptr<CPart> copied(ghosts ? seq->makeGhost(p.part, undo) : p.part->copy(0));
        copied->pos = p.part->pos + ticks;
        change.add(target, std::move(copied));
        p.part->setSelected(false);
    }
    change.record(undo);
    seq->host->undoEnd(undo, false);
}

PartPlace newPartPlace(CSeq* seq, int tick) {
    return newPartPlace(seq, tick, seq->snap->val());
}

PartPlace newPartPlace(CSeq* seq, int tick, int grid) {
    CSeqProg* prog = seq->getProg();
    const int left = prog->leftLocator, right = prog->rightLocator;
    if (prog->loop && tick >= left && tick < right) return {asMax(left, 0), right - asMax(left, 0)};
    const CPart* signature = prog->timesigInForce(tick);
    const int base = signature ? int(signature->pos) : 0;
    return {asMax(base + snapped(grid, tick - base, false), 0), barTicks};
}

CPart* recordInsert(CSeq* seq, CUndo* undo, CSongTrack* songTrack, const PartPlace& place) {
    std::unique_ptr<CPart> made = emptyPart(partTypeOf(songTrack->track));
    if (!songTrack->takesEdits(made.get())) return nullptr;
    CPart* part = made.get();
    part->id = songTrack->track->id;
    part->pos = limitTicks(asMax(place.pos, 0));
    part->length = limitTicks(asMax(place.length, 1));
    seq->unselectParts();
    part->setSelected(true);
    return songTrack->addPart(made.release(), undo);
}

CPart* insertPart(CSeq* seq, CSongTrack* songTrack, const PartPlace& place) {
    CUndo* undo = seq->host->undoStart("Insert part", seq, moveEffects);
    CPart* part = recordInsert(seq, undo, songTrack, place);
    seq->host->undoEnd(undo, false);
    return part;
}

CPart* insertPart(CSeq* seq, CSongTrack* songTrack, int tick) {
    return insertPart(seq, songTrack, newPartPlace(seq, tick));
}
