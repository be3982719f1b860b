#include "sequencer/edit/PartSplit.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipRange.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/RowLoops.h"

namespace {

constexpr StepEffects splitEffects{.song = true, .seq = SeqNotice::parts | SeqNotice::cuts};

// Clips.

void keepFront(CAudioEvent* clip, int frame, int ticks) {
    if (clip->reverse)
        clip->start = clip->end - frame + clip->start;
    else
        clip->end = frame - 1;
    clip->ticks = ticks;
    clip->fadeOutMs = 0.0f;
}

void keepBack(CAudioEvent* clip, int frame, int ticks) {
    if (clip->reverse)
        clip->end = clip->end - frame + clip->start;
    else
        clip->start = frame;
    clip->ticks = ticks;
    clip->fadeInMs = 0.0f;
}

bool inside(const CAudioEvent* clip, int frame) {
    return clip->start < frame && frame < clip->end;
}

/// The only clip of a part whose length follows from it; null for other parts.
const CAudioEvent* lengthClip(CPart* part) {
    const CAudioEvent* clip = onlyClip(part);
    return clip && !clip->next && clip->sample ? clip : nullptr;
}

/// Whether the part's only clip has frames on both sides of a cut, and its rows don't repeat too
/// much to be written out.
bool cuttable(CSeq* seq, CPart* part, int at) {
    if (!canWriteOut(part, saturate(int64_t(seq->getTicks(part)) - part->offset))) return false;
    const CAudioEvent* clip = lengthClip(part);
    if (!clip) return true;
    const int64_t begin = int64_t(part->offset) + clip->delta;
    const int frame = frameInClip(seq, clip, saturate(part->pos + begin), saturate(at - begin));
    return frame >= 1 && frame < clip->sample->frames - 1 && inside(clip, frame);
}

// Parts.

/// What lies between two ticks of a part, which count from its start. The first piece has what the
/// start of the part hides as well, the last what its end hides.
struct Piece {
    CSeq* seq;
    CPart* source;
    int from, to;
    int length; ///< of the source

    std::unique_ptr<CPart> make() const;

private:
    bool first() const { return from <= 0; }
    bool last() const { return to >= length; }
    int partTick(int eventTick) const { return saturate(int64_t(source->offset) + eventTick); }
    int newTick(int tick) const { return first() ? tick - source->offset : tick - from; }
    bool takes(int tick) const { return (first() || tick >= from) && (last() || tick < to); }
    void copyEvents(CPart* into) const;
    void copyPoints(CPart* into, int slot) const;
    CAudioEvent* clipPiece(const CAudioEvent* clip, int tick) const;
};

/// The piece of a clip that lies in it; null without any. What begins before the part does not
/// sound in it, and is not cut.
CAudioEvent* Piece::clipPiece(const CAudioEvent* clip, int tick) const {
    const int songTick = saturate(int64_t(source->pos) + tick);
    const int ticks = sampleAsTicks2(seq, clip, songTick);
    int frame = 0;
    const auto cutAt = [&](int edge) {
        const int into = saturate(int64_t(edge) - tick);
        if (tick < 0 || into < 1 || ticks <= into || !clip->sample) return false;
        frame = frameInClip(seq, clip, songTick, into);
        return inside(clip, frame);
    };
    const bool goesOn = !last() && cutAt(to);
    const int endFrame = frame;
    const bool begun = !first() && cutAt(from);
    if (!begun && !takes(tick)) return nullptr;
    CAudioEvent* piece = createAudioEvent(clip);
    const int start = clip->start, end = clip->end;
    if (goesOn) keepFront(piece, endFrame, to - tick);
    if (begun) {
        keepBack(piece, frame, (goesOn ? to : tick + ticks) - from);
        if (clip->reverse) piece->end = end - frame + start;
    }
    recutPins(piece, clip);
    return piece;
}

void Piece::copyEvents(CPart* into) const {
    EventCollector copies;
    const PlayedEvents events(source, saturate(int64_t(length) - source->offset));
    eachEvent(events.list(), [&](const CBaseEvent* e, int eventTick) {
        const int tick = partTick(eventTick);
        if (source->type == partAudio) {
            if (CAudioEvent* piece = clipPiece(asClip(e), tick))
                copies.add(newTick(takes(tick) ? tick : from), piece);
        } else if (takes(tick)) {
            copies.add(newTick(tick), copyEvent(source->type, e));
        }
    });
    into->setEvents(copies.takeList());
}

void Piece::copyPoints(CPart* into, int slot) const {
    EventCollector copies;
    eachEvent(source->getParam(slot), [&](const CEnvEvent* e, int eventTick) {
        const int tick = partTick(eventTick);
        if (takes(tick) || tick == to) copies.add(newTick(tick), createEnvEvent(e));
    });
    putPoints(into, slot, copies);
}

std::unique_ptr<CPart> Piece::make() const {
    std::unique_ptr<CPart> part = newPartLike(source);
    part->pos = limitTicks(int64_t(source->pos) + from);
    if (!first()) part->offset = 0;
    part->length = to - from;
    copyEvents(part.get());
    copyTakes(source, part.get(), first() ? 0 : source->offset - from);
    const int slots = source->content()->reservedSlots();
    for (int slot = 0; slot < slots; slot++) copyPoints(part.get(), slot);
    return part;
}

// Events.

/// Cuts an event in two: the right half, owned by the caller, or null when it is not cut.
CBaseEvent* cutEvent(CSeq* seq, CPart* part, CBaseEvent* event, int tick, int at) {
    if (at < 1) return nullptr;
    if (part->type == partAudio) {
        auto* clip = asClip(event);
        if (!clip->sample) return nullptr;
        const int songTick = saturate(int64_t(part->pos) + part->offset + tick);
        const int frame = frameInClip(seq, clip, songTick, at);
        const int ticks = sampleAsTicks2(seq, clip, songTick);
        if (ticks <= at || !inside(clip, frame)) return nullptr;
        const CAudioEvent whole = *clip;
        CAudioEvent* right = createAudioEvent(clip);
        keepFront(clip, frame, at);
        keepBack(right, frame, ticks - at);
        for (CAudioEvent* half : {clip, right}) recutPins(half, &whole);
        return right;
    }
    int* length = eventLength(part->type, event);
    if (!length || *length <= at) return nullptr;
    CBaseEvent* right = copyEvent(part->type, event);
    *eventLength(part->type, right) = *length - at;
    *length = at;
    for (CBaseEvent* half : {event, right}) half->flags &= (unsigned char)~eventSelected;
    return right;
}

/// The selected parts that span a tick; when nothing is selected all that do.
void splitPartsAt(CSeq* seq, int tick, PartChange& change) {
    CSeqProg* prog = seq->getProg();
    const bool all = !prog->getFirstSelectedPart();
    for (auto* songTrack : prog->tracks) {
        if (songTrack->track->locked) continue;
        for (auto* part : songTrack->parts)
            if (all || part->selected())
                cutPart(seq, songTrack, part, saturate(int64_t(tick) - part->pos), 0, splitApart,
                        change);
    }
}

} // namespace

bool splitEvent(CSeq* seq, CPart* part, CPart* copy, CBaseEvent* event, int tick, int at) {
    CBaseEvent* right = cutEvent(seq, part, event, tick, at);
    if (right) copy->addEvent(tick + at, right);
    return right != nullptr;
}

bool splitEventsInPart(CSeq* seq, CPart* part, int tick, CUndo* undo) {
    const bool selectedOnly = hasSelectedEvents(part);
    std::unique_ptr<CPart> edited(part->content()->copy(0));
    EventCollector halves;
    eachEvent(edited->events, [&](CBaseEvent* e, int eventTick) {
        if (part->offset + eventTick < 0 || (selectedOnly && !(e->flags & eventSelected))) return;
        CBaseEvent* right = cutEvent(seq, part, e, eventTick, saturate(int64_t(tick) - eventTick));
        if (right) halves.add(tick, right);
    });
    if (halves.empty()) return false;
    EventCollector all;
    takeEvents(edited.get(), all);
    CBaseEvent* right = halves.takeList();
    for (int at = 0; CBaseEvent* e = right;) {
        right = e->next;
        all.add(at += e->delta, e);
    }
    edited->setEvents(all.takeList());
    if (part->type == partAudio) recordMulticlip(seq, part, undo);
    swapUndoPart(undo, part->content(), edited.release());
    return true;
}

bool cutPart(CSeq* seq, CSongTrack* songTrack, CPart* part, int at, int gap, int mode,
             PartChange& change) {
    const int length = seq->getTicks(part);
    const int64_t from = mode == splitCutOut ? int64_t(at) + gap : at;
    if (at < 1 || gap < 0 || from >= length) return false;
    if (!cuttable(seq, part, at) || !cuttable(seq, part, int(from))) return false;
    if (mode != splitKeepRight) change.add(songTrack, Piece{seq, part, 0, at, length}.make());
    if (mode != splitKeepLeft) {
        std::unique_ptr<CPart> right = Piece{seq, part, int(from), length, length}.make();
        const int moved = mode == splitApart ? gap : mode == splitKeepRight ? -gap : 0;
        right->pos = limitTicks(int64_t(part->pos) + at + moved);
        change.add(songTrack, std::move(right));
    }
    change.remove(songTrack, part);
    return true;
}

std::unique_ptr<CPart> partPiece(CSeq* seq, CPart* part, int from, int to) {
    const int length = seq->getTicks(part);
    from = asMax(from, 0);
    to = asMin(to, length);
    const auto whole = [&](int edge) { return edge <= 0 || edge >= length; };
    if (from >= to || (!whole(from) && !cuttable(seq, part, from)) ||
        (!whole(to) && !cuttable(seq, part, to)))
        return nullptr;
    return uncheckedPiece(seq, part, from, to);
}

int nearestCut(CSeq* seq, CPart* part, int at) {
    const int length = seq->getTicks(part), kept = asMinMax(at, 0, length);
    if (kept == 0 || kept == length || cuttable(seq, part, kept)) return kept;
    return kept < length - kept ? 0 : length;
}

std::unique_ptr<CPart> uncheckedPiece(CSeq* seq, CPart* part, int from, int to) {
    return Piece{seq, part, from, to, seq->getTicks(part)}.make();
}

bool CSeq::splitPart(CSongTrack* songTrack, CPart* part, int at, int gap, int mode, CUndo* undo) {
    PartChange change;
    const bool cut = cutPart(this, songTrack, part, at, gap, mode, change);
    change.record(undo);
    return cut;
}

void CSeq::splitAtCursorClicked(CObject*) {
    if (!getProg()) return;
    CUndo* undo = host->undoStart("Split", this, splitEffects);
    const int tick = asInt(getPos());
    if (CPart* part = getEditPart()) {
        if (!isLocked(part))
            splitEventsInPart(this, part, saturate(int64_t(tick) - part->pos - part->offset), undo);
    } else {
        PartChange change;
        splitPartsAt(this, tick, change);
        change.record(undo);
    }
    host->undoEnd(undo, false);
}
