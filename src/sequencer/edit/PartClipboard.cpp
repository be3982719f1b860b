#include "sequencer/edit/PartClipboard.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ForgetHooks.h"
#include "sequencer/edit/PartActions.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/PartRange.h"
#include "sequencer/edit/SamplePaste.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>

namespace {

/// Where a copied event of a new part ends, in its ticks.
int endOf(CSeq* seq, CPart* part, CBaseEvent* event, int tick) {
    if (part->type == partAudio) {
        const int ticks = sampleAsTicks(seq->host, asClip(event));
        return snapped(quarterTicks, saturate(int64_t(ticks) + tick), true);
    }
    const int* length = eventLength(part->type, event);
    return length ? saturate(int64_t(tick) + *length) : 0;
}

/// A part of the selected events of another, from the first of them on.
std::unique_ptr<CPart> copySelected(CSeq* seq, CPart* part) {
    std::unique_ptr<CPart> made = newPartLike(part);
    made->offset = 0;
    made->length = quarterTicks;
    int first = 0, count = 0;
    EventCollector copies;
    eachEvent(part->getEvents(), [&](const CBaseEvent* e, int tick) {
        if (!(e->flags & eventSelected)) return;
        if (!count++) first = tick;
        CBaseEvent* copied = copyEvent(part->type, e);
        made->length = std::max(int(made->length), endOf(seq, part, copied, tick - first));
        copies.add(tick - first, copied);
    });
    made->setEvents(copies.takeList());
    if (CAudioPart* audio = asAudio(made.get())) audio->multiclip = count > 1;
    return made;
}

bool copiesEvents(CPart* part) {
    const CAudioPart* audio = asAudio(part->content());
    return (!audio || audio->multiclip) && hasSelectedEvents(part);
}

/// A copy for the song: a ghost only while its master is in it.
std::unique_ptr<CPart> fromClipboard(CSeq* seq, CPart* copied) {
    const bool whole = !copied->ghostOf || seq->masterParts.contains(copied->ghostOf);
    return whole ? std::unique_ptr<CPart>(copied->copy(0)) : ownCopy(copied);
}

/// What the events of `target` become when those that `source` shows come in, selected, from a tick
/// of the target's own time on.
CPart* withEvents(CSeq* seq, CPart* source, CPart* target, int at) {
    CPart* edited = target->content()->copy(0);
    EventCollector all;
    eachEvent(edited->events,
              [](CBaseEvent* e, int) { e->flags &= (unsigned char)~eventSelected; });
    takeEvents(edited, all);
    const int length = seq->getTicks(source);
    eachEvent(source->getEvents(), [&](const CBaseEvent* e, int eventTick) {
        const int64_t tick = int64_t(source->offset) + eventTick;
        if (tick < 0 || tick >= length) return;
        CBaseEvent* copied = copyEvent(source->type, e);
        copied->flags |= eventSelected;
        all.add(saturate(at + tick), copied);
    });
    edited->setEvents(all.takeList());
    return edited;
}

/// Puts the copies on tracks of the current program.
class Paste {
public:
    Paste(CSeq* song, CUndo* step) : seq(song), prog(song->getProg()), undo(step) {}

    void run(int tick) {
        seq->unselectParts();
        const int shift = trackShift();
        int first = maxTicks;
        for (auto* part : seq->clipboard.parts) first = std::min(first, int(part->pos));
        PartChange change;
        int index = 0;
        for (auto* copied : seq->clipboard.parts) {
            CSongTrack* songTrack =
                trackFor(copied, seq->clipboard.tracks[size_t(index++)] + shift);
            if (!songTrack) continue;
            std::unique_ptr<CPart> part = fromClipboard(seq, copied);
            part->pos = limitTicks(int64_t(tick) + copied->pos - first);
            part->setSelected(true);
            change.add(songTrack, std::move(part));
        }
        change.record(undo);
    }

private:
    CSeq* seq;
    CSeqProg* prog;
    CUndo* undo;

    int trackShift() const {
        const std::vector<int>& from = seq->clipboard.tracks;
        int index = 0, firstSelected = -1;
        for (auto* songTrack : prog->tracks) {
            if (songTrack->track->selected()) {
                if (std::find(from.begin(), from.end(), index) != from.end()) return 0;
                if (firstSelected < 0) firstSelected = index;
            }
            index++;
        }
        return firstSelected < 0 ? 0 : firstSelected - *std::min_element(from.begin(), from.end());
    }

    CSongTrack* trackFor(const CPart* part, int index) const {
        for (index = asMax(0, index); index < prog->tracks.getCount(); index++) {
            auto* songTrack = prog->tracks.items(index);
            if (songTrack && songTrack->takesEdits(part)) return songTrack;
        }
        return nullptr;
    }
};

/// Whether the range is a part of what the only clip of a part plays.
bool meets(CPart* part, const PartRange& range) {
    if (range.part != part || range.from == range.to) return false;
    const CAudioEvent* clip = onlyClip(part);
    return clip && clip->sample;
}

void addCopy(CSeq* seq, CPart* part, int trackIndex, const PartRange& range) {
    std::unique_ptr<CPart> copied;
    if (meets(part, range))
        copied = partOfFrames(seq, part, framesOf(seq, part, range));
    else if (copiesEvents(part))
        copied = copySelected(seq, part);
    else
        copied.reset(part->copy(0));
    copied->colour = -1;
    seq->clipboard.add(copied.release(), trackIndex);
}

bool pasteIntoEdited(CSeq* seq, CUndo* undo, int tick) {
    CPart* target = seq->getEditPart();
    if (!target || seq->isLocked(target) || seq->clipboard.parts.getCount() != 1) return false;
    const int64_t into = int64_t(tick) - target->pos;
    if (into < 0 || into >= seq->getTicks(target)) return false;
    return seq->pasteData(undo, seq->clipboard.parts.getFirst(), target, tick);
}

} // namespace

void CSeq::copyToClipboard(CPart* part) {
    addCopy(this, part, asMax(0, tracks.indexed(partToTrack(part))), {});
}

bool CSeq::pasteData(CUndo* undo, CPart* source, CPart* target, int tick) {
    if (source->type != target->type) return false;
    const auto single = [](CPart* part) {
        const CAudioPart* audio = asAudio(part->content());
        return audio && !audio->multiclip;
    };
    const int at = saturate(int64_t(tick) - target->pos - target->offset);
    if (single(target)) {
        if (!single(source) || !pasteFrames(this, undo, source, target, at)) return false;
    } else if (source->getEvents()) {
        swapUndoPart(undo, target->content(), withEvents(this, source, target, at));
    }
    unselectParts();
    target->setSelected(true);
    return true;
}

void copyParts(CSeq* seq) {
    copyPartRange(seq, {});
}

void copyPartRange(CSeq* seq, const PartRange& range) {
    CSeqProg* prog = seq->getProg();
    if (!prog || !prog->getFirstSelectedPart()) return;
    seq->clearCopies();
    int index = 0;
    for (auto* songTrack : prog->tracks) {
        for (auto* part : songTrack->parts)
            if (part->selected()) addCopy(seq, part, index, range);
        index++;
    }
}

void cutParts(CSeq* seq) {
    copyParts(seq);
    removeSelected(seq, "Cut");
}

void pasteParts(CSeq* seq) {
    if (!seq->getProg() || seq->clipboard.parts.empty()) return;
    CUndo* undo = seq->host->undoStart("Paste", seq, {.song = true, .seq = SeqNotice::parts});
    const int tick = asInt(seq->getPos());
    if (!pasteIntoEdited(seq, undo, tick)) Paste(seq, undo).run(tick);
    seq->host->undoEnd(undo, false);
}

void releaseCopies(CSeq* seq, const ForgetSet& masters) {
    for (auto* copied : seq->clipboard.parts) {
        if (!masters.has(copied->ghostOf)) continue;
        const std::unique_ptr<CPart> own(ownCopy(copied));
        copied->ghostOf = nullptr;
        copied->reserveSlots(own->reservedSlots());
        copied->swap(own.get());
    }
}
