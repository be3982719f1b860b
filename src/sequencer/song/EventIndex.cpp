#include "sequencer/song/EventIndex.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventFind.h"
#include "sequencer/song/EventKinds.h"

namespace {

/// At least a tick.
int ticksOf(CSeq* seq, CPart* part, CBaseEvent* event, int tick) {
    if (part->type == partAudio)
        return asMax(1, sampleAsTicks2(seq, asClip(event),
                                       saturate(int64_t(part->pos) + part->offset + tick)));
    const int* length = eventLength(part->type, event);
    return length ? asMax(1, *length) : 1;
}

} // namespace

void EventIndex::make(CSeq* seq, CPart* part) {
    made = false;
    head = part->getEvents();
    entries.clear();
    blocks.clear();
    used.clear();
    eachEvent(part->getEvents(), [&](CBaseEvent* e, int tick) {
        const int end = saturate(int64_t(tick) + ticksOf(seq, part, e, tick));
        if (entries.size() % perBlock == 0) blocks.push_back({tick, end});
        Block& block = blocks.back();
        block = {std::min(block.tick, tick), std::max(block.end, end)};
        entries.push_back({e, tick, end});
        const int row = part->type == partAudio ? -1 : rowOf(part, e);
        if (row < 0) return;
        if (size_t(row) >= used.size()) used.resize(size_t(row) + 1);
        used[size_t(row)] = true;
    });
}

void EventIndex::refresh(CSeq* seq, CPart* part) {
    const unsigned changes = seq->host->changes;
    const bool live = seq->host->recording; // events come into the list meanwhile
    if (made && !live && head == part->getEvents() && madeAt == changes) return;
    make(seq, part);
    made = true;
    madeAt = changes;
}
