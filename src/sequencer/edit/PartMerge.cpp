#include "sequencer/edit/PartMerge.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/RowLoops.h"

#include <algorithm>

namespace {

/// Collects the content of several parts and puts it into one, in time that grows with all of it.
class PartMerge {
public:
    PartMerge(CSeq* song, CPart* target) : seq(song), to(target) {
        takeEvents(to, events);
        several = !events.empty();
        for (int slot = 0; slot < to->reservedSlots(); slot++) takePoints(to, slot, points[slot]);
    }
    ~PartMerge() {
        to->setEvents(events.takeList());
        for (int slot = 0; slot < maxSlots; slot++) putPoints(to, slot, points[slot]);
    }
    PartMerge(const PartMerge&) = delete;
    PartMerge& operator=(const PartMerge&) = delete;

    void add(CPart* from, int offset);

private:
    CSeq* seq;
    CPart* to;
    bool several = false; ///< an event is there already
    EventCollector events, points[maxSlots];

    void addEvent(const CBaseEvent* event, int tick);
};

void PartMerge::addEvent(const CBaseEvent* event, int tick) {
    CBaseEvent* copied = copyEvent(to->type, event);
    if (int* length = eventLength(to->type, copied))
        *length = std::max(1, std::min(*length, to->length - tick));
    if (CAudioPart* audio = asAudio(to); audio && several) audio->multiclip = 1;
    several = true;
    events.add(tick, copied);
}

void PartMerge::add(CPart* from, int offset) {
    const int length = seq->getTicks(from);
    const auto eachInside = [&](auto* list, auto&& visit) {
        eachEvent(list, [&](const auto* e, int eventTick) {
            const int64_t tick = int64_t(from->offset) + eventTick;
            if (tick >= 0 && tick < length) visit(e, saturate(tick + offset));
        });
    };
    const PlayedEvents played(from, saturate(int64_t(length) - from->offset));
    eachInside(played.list(), [&](const CBaseEvent* e, int tick) { addEvent(e, tick); });
    const int slots = from->content()->reservedSlots();
    for (int slot = 0; slot < slots; slot++)
        eachInside(from->getParam(slot), [&](const CEnvEvent* e, int tick) {
            points[slot].add(tick, createEnvEvent(e));
        });
}

std::unique_ptr<CPart> glued(CSeq* seq, const std::vector<CPart*>& parts) {
    CPart* first = parts.front();
    std::unique_ptr<CPart> made = newPartLike(first);
    made->offset = 0;
    made->length = 0;
    made->setSelected(true);
    auto* audio = asAudio(made.get());
    if (audio) audio->multiclip = 0;
    PartMerge merge(seq, made.get());
    for (CPart* part : parts) {
        const int offset = saturate(int64_t(part->pos) - first->pos);
        made->length =
            std::max(int(made->length), limitTicks(int64_t(offset) + seq->getTicks(part)));
        merge.add(part, offset);
        if (audio) audio->chs = std::max(audio->chs, asAudio(part)->getChs());
    }
    return made;
}

} // namespace

void mergeEvents(CSeq* seq, CPart* to, CPart* from, int offset) {
    PartMerge(seq, to).add(from, offset);
}

void glueParts(CSeq* seq) {
    if (!seq->getProg()) return;
    CUndo* undo = seq->host->undoStart("Glue", seq, {.song = true, .seq = SeqNotice::parts});
    PartChange change;
    for (auto* songTrack : seq->getProg()->tracks) {
        const std::vector<CPart*> parts = selectedParts(songTrack);
        const auto tooLong = [seq](CPart* part) {
            return !canWriteOut(part, saturate(int64_t(seq->getTicks(part)) - part->offset));
        };
        if (parts.size() < 2 || std::ranges::any_of(parts, tooLong)) continue;
        for (CPart* part : parts) change.remove(songTrack, part);
        change.add(songTrack, glued(seq, parts));
    }
    change.record(undo);
    seq->host->undoEnd(undo, false);
}
