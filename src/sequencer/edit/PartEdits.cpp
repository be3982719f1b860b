#include "sequencer/edit/PartEdits.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/RowLoops.h"
#include "sequencer/take/Takes.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

void takeList(CBaseEvent* head, EventCollector& into) {
    moveList(head, into, [](CBaseEvent*, int tick) { return tick; });
}

int growthOf(const CUndoItem* item, Shared<int> CPart::*number) {
    if (!item->number || item->object->category != categoryPart) return 0;
    auto* part = static_cast<CPart*>(item->object);
    return item->number == (part->*number).address() ? item->growth : 0;
}

auto fieldsOf(const CMIDIEvent* e) {
    return std::tie(e->data, e->length, e->style);
}

auto fieldsOf(const CDrumEvent* e) {
    return std::tie(e->sound, e->length, e->velocity, e->pan, e->tune, e->style);
}

auto fieldsOf(const CAudioEvent* e) {
    return std::tie(e->sample, e->gain, e->pan, e->mode, e->reverse, e->start, e->end, e->ticks,
                    e->semitones, e->fine, e->slice, e->fadeInMs, e->fadeInCurve, e->fadeOutMs,
                    e->fadeOutCurve, e->pins);
}

auto fieldsOf(const CEnvEvent* e) {
    return std::tie(e->value, e->curve, e->shape);
}

template <class E>
bool sameList(const CBaseEvent* a, const CBaseEvent* b) {
    for (; a && b; a = a->next, b = b->next)
        if (a->delta != b->delta ||
            fieldsOf(static_cast<const E*>(a)) != fieldsOf(static_cast<const E*>(b)))
            return false;
    return a == b; // both at their end
}

bool sameRows(CPart* a, CPart* b) {
    const RowLoops *one = rowLoops(a), *other = rowLoops(b);
    return one && other ? *one == *other : one == other;
}

} // namespace

std::unique_ptr<CPart> newPartLike(CPart* part) {
    CPart* content = part->content();
    std::unique_ptr<CPart> made = emptyPart(part->type);
    made->id = content->id;
    made->setMuted(part->muted());
    made->colour = part->colour;
    made->pos = part->pos;
    made->offset = part->offset;
    made->length = part->length;
    if (CAudioPart* audio = asAudio(made.get())) {
        audio->chs = asAudio(part)->getChs();
        audio->multiclip = asAudio(content)->multiclip;
    }
    return made;
}

void copyTakes(CPart* from, CPart* to, int shift) {
    const Takes* takes = takesOf(from);
    if (!takes) return;
    auto* copied = new Takes(*takes);
    copied->shift(shift);
    delete to->takes.exchange(copied);
}

std::unique_ptr<CPart> ownCopy(CPart* part) {
    std::unique_ptr<CPart> made = newPartLike(part);
    const std::unique_ptr<CPart> copied(part->content()->copy(0));
    made->reserveSlots(copied->reservedSlots());
    made->swap(copied.get()); // rows of their own length with it
    copyTakes(part, made.get(), 0);
    return made;
}

std::unique_ptr<CPart> emptyPart(int partType) {
    switch (partType) {
    case partMIDI:
        return std::make_unique<CMIDIPart>();
    case partAudio:
        return std::make_unique<CAudioPart>();
    case partDrum:
        return std::make_unique<CDrumPart>();
    default:
        return std::make_unique<CPart>();
    }
}

std::vector<CPart*> selectedParts(const CSongTrack* songTrack) {
    std::vector<CPart*> parts;
    if (songTrack->track->locked) return parts;
    for (auto* part : songTrack->parts)
        if (part->selected()) parts.push_back(part);
    return parts;
}

std::vector<CPart*> selectedParts(const CSeqProg* prog) {
    std::vector<CPart*> parts;
    for (const auto* songTrack : prog->tracks) {
        const std::vector<CPart*> more = selectedParts(songTrack);
        parts.insert(parts.end(), more.begin(), more.end());
    }
    return parts;
}

std::vector<PlacedPart> selectedParts(CSeq* seq) {
    std::vector<PlacedPart> parts;
    CSeqProg* prog = seq->getProg();
    if (!prog) return parts;
    int row = 0;
    for (auto* songTrack : prog->tracks) {
        for (CPart* part : selectedParts(songTrack)) parts.push_back({part, songTrack, row});
        row++;
    }
    return parts;
}

std::vector<CPart*> partsShowing(CSeq* seq, CPart* part) {
    CPart* content = part->content();
    if (content == part) return {part};
    std::vector<CPart*> parts;
    seq->eachSongTrack([&](CSongTrack* songTrack) {
        for (auto* user : songTrack->parts)
            if (user->content() == content) parts.push_back(user);
    });
    return parts;
}

CBaseEvent* copyEvent(int partType, const CBaseEvent* event) {
    if (partType == partAudio) return createAudioEvent(asClip(event));
    if (partType == partDrum) return createDrumEvent(asHit(event));
    return createMIDIEvent(asMessage(event));
}

int* eventLength(int partType, CBaseEvent* event) {
    if (partType == partDrum) return &asHit(event)->length;
    return isNote(partType, event) ? &asMessage(event)->length : nullptr;
}

bool isMulticlip(CPart* part) {
    const CAudioPart* audio = asAudio(part->content());
    return audio && audio->multiclip;
}

bool hasSelectedEvents(CPart* part) {
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next)
        if (e->flags & eventSelected) return true;
    return false;
}

void takeEvents(CPart* part, EventCollector& into) {
    CBaseEvent* head = part->events;
    part->events = nullptr;
    takeList(head, into);
}

void takePoints(CPart* part, int slot, EventCollector& into) {
    CBaseEvent* head = part->getParam(slot);
    part->relinkParam(slot, nullptr);
    takeList(head, into);
}

void putPoints(CPart* part, int slot, EventCollector& points) {
    if (!points.empty()) part->setParam(slot, asLanePoint(points.takeList()));
}

bool sameContent(CPart* a, CPart* b) {
    using Same = bool (*)(const CBaseEvent*, const CBaseEvent*);
    const Same same = a->type == partAudio  ? sameList<CAudioEvent>
                      : a->type == partDrum ? sameList<CDrumEvent>
                                            : sameList<CMIDIEvent>;
    if (!same(a->events, b->events) || !sameRows(a, b)) return false;
    const int slots = std::max(a->reservedSlots(), b->reservedSlots());
    for (int slot = 0; slot < slots; slot++)
        if (!sameList<CEnvEvent>(a->getParam(slot), b->getParam(slot))) return false;
    return true;
}

void PartChange::add(CSongTrack* songTrack, std::unique_ptr<CPart> part) {
    coming.push_back({songTrack, std::move(part)});
}

void PartChange::record(CUndo* undo) {
    const CTrack* last = nullptr;
    for (int slots = 0; const Coming& c : coming) {
        CTrack* track = c.songTrack->track;
        if (track != std::exchange(last, track)) slots = track->slotsInUse(undo);
        c.part->reserveSlots(slots);
    }
    undo->effects.song = undo->effects.song || !empty(); // puts the lists in order
    for (const Leaving& l : leaving) undo->asRemove(l.part, &l.songTrack->parts);
    for (Coming& c : coming) undo->asAdd(c.part.release(), &c.songTrack->parts);
    leaving.clear();
    coming.clear();
}

void recordTransfer(CUndo* undo, CPart* part, CSongTrack* from, CSongTrack* to, int ticks) {
    if (ticks) recordMove(undo, part, ticks);
    if (from == to) return;
    part->reserveSlots(to->track->slotsInUse(undo));
    undo->asMove(part, &from->parts, &to->parts);
}

void recordMove(CUndo* undo, CPart* part, int ticks) {
    const int target = limitTicks(int64_t(part->pos) + ticks);
    undo->effects.song = true;
    undo->asGrow(part, part->pos, target - part->pos);
}

void recordGrow(CUndo* undo, CPart* part, int ticks) {
    const int target = asMax(limitTicks(int64_t(part->length) + ticks), 0);
    undo->asGrow(part, part->length, target - part->length);
}

void recordMuteToggle(CUndo* undo, CPart* part) {
    undo->asToggle(part, partMuted);
}

void recordMulticlip(CSeq* seq, CPart* part, CUndo* undo) {
    const auto mark = [&](CPart* user) {
        auto* audio = asAudio(user);
        if (audio->multiclip) return;
        seq->getTicks(audio); // the length stays that of the clip
        undo->asInt(audio->multiclip.address());
        audio->multiclip = 1;
    };
    for (CPart* user : partsShowing(seq, part)) mark(user);
    mark(part->content());
}

int moveOf(const CUndoItem* item) {
    return growthOf(item, &CPart::pos);
}

int growthOf(const CUndoItem* item) {
    return growthOf(item, &CPart::length);
}
