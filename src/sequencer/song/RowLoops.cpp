#include "sequencer/song/RowLoops.h"

#include "base/Numbers.h"
#include "sequencer/edit/EventEdits.h"
#include "sequencer/edit/MidiProcess.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/EventKinds.h"

int RowLoops::longestRow() const {
    int length = 0;
    for (const int row : ticks) length = asMax(length, row);
    return length;
}

void RowLoops::set(int sound, int length) {
    if (sound < 0) return;
    if (size_t(sound) >= ticks.size()) ticks.resize(size_t(sound) + 1);
    ticks[size_t(sound)] = length > 0 ? asMinMax(length, int(shortest), int(longest)) : 0;
    while (!ticks.empty() && ticks.back() == 0) ticks.pop_back();
}

const RowLoops* rowLoops(CPart* part) {
    if (part->type != partDrum) return nullptr;
    return static_cast<CDrumPart*>(part->content())->rows.loadAcquire();
}

void setRowLoops(CPart* draft, const RowLoops* loops) {
    if (draft->type != partDrum) return;
    RowLoops* kept = loops && !loops->empty() ? new RowLoops(*loops) : nullptr;
    delete static_cast<CDrumPart*>(draft)->rows.exchange(kept);
}

bool canWriteOut(CPart* part, int end) {
    const RowLoops* loops = rowLoops(part);
    int64_t repeats = 0;
    if (!loops) return true;
    eachEvent(part->getEvents(), [&](const CBaseEvent* e, int tick) {
        const int length = loops->of(asHit(e)->sound);
        if (length > 0 && tick < length && tick < end)
            repeats += (int64_t(end) - tick - 1) / length;
    });
    return repeats <= maxPieces;
}

PlayedEvents::PlayedEvents(CPart* part, int end) : own(part->getEvents()) {
    const RowLoops* loops = rowLoops(part);
    if (!loops) return;
    EventCollector hits;
    eachEvent(own, [&](const CBaseEvent* e, int tick) {
        const auto* hit = asHit(e);
        if (inRow(loops, hit->sound, tick)) hits.add(tick, createDrumEvent(hit));
    });
    eachRepeat(own, *loops, 0, end,
               [&](const CDrumEvent* hit, int tick) { hits.add(tick, createDrumEvent(hit)); });
    own = nullptr;
    made = hits.takeList();
}

void setRowLoop(CSeq* seq, CPart* part, int row, int ticks) {
    if (part->type != partDrum) return;
    const RowLoops* now = rowLoops(part);
    RowLoops wanted = now ? *now : RowLoops();
    wanted.set(row, ticks);
    std::unique_ptr<CPart> draft = contentDraft(part);
    setRowLoops(draft.get(), &wanted);
    applyDraft(seq, part, std::move(draft), "Row length");
}
