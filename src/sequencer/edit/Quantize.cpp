#include "sequencer/edit/Quantize.h"

#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TempoMap.h"

#include <unordered_set>

bool quantize(CUndo* undo, CPart* part, int grid, bool selectedOnly) {
    CPart* content = part->content();
    const bool all = !selectedOnly || !hasSelectedEvents(content);
    bool moved = false;
    EventCollector placed;
    eachEvent(content->getEvents(), [&](const CBaseEvent* e, int tick) {
        const bool moves = all || (e->flags & eventSelected);
        const int target = moves ? snapped(grid, tick, true) : tick;
        moved |= target != tick;
        placed.add(target, copyEvent(content->type, e));
    });
    if (!moved) return false;
    std::unique_ptr<CPart> edited = newPartLike(content);
    edited->setEvents(placed.takeList());
    swapUndoEvents(undo, content, edited.release());
    return true;
}

void quantizeParts(CSeq* seq) {
    if (!seq->getProg()) return;
    CUndo* undo = seq->host->undoStart("Quantize", seq, {.seq = SeqNotice::parts});
    const CPart* edited = seq->getEditPart();
    std::unordered_set<const CPart*> done;
    for (CPart* part : selectedParts(seq->getProg()))
        if (done.insert(part->content()).second)
            quantize(undo, part, seq->gridTicks(), part == edited);
    seq->host->undoEnd(undo, false);
}
