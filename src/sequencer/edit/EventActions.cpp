#include "sequencer/edit/EventActions.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/PartSplit.h"
#include "sequencer/edit/Quantize.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventFind.h"

#include <algorithm>
#include <map>
#include <unordered_set>

namespace {

void glueRows(CPart* draft) {
    struct Row {
        int* length;
        int tick; ///< of the first
    };
    std::map<int, Row> rows;
    std::unordered_set<CBaseEvent*> going;
    eachEvent(draft->getEvents(), [&](CBaseEvent* e, int tick) {
        int* length = eventLength(draft->type, e);
        if (!isSelected(e) || !length) return;
        const auto [row, added] = rows.try_emplace(rowOf(draft, e), Row{length, tick});
        if (added) return;
        int& whole = *row->second.length;
        whole = asMax(whole, saturate(int64_t(tick) + asMax(1, *length) - row->second.tick));
        going.insert(e);
    });
    std::vector<CBaseEvent*> staying;
    for (CBaseEvent* e = draft->getEvents(); e; e = e->next) {
        const bool goes = going.contains(e);
        if (isSelected(e) && !goes) staying.push_back(e);
        select(e, goes);
    }
    draft->deleteSelected();
    for (CBaseEvent* e : staying) select(e, true);
}

/// One part for each content that may be edited.
PartList oneOfEach(CSeq* seq, const PartList& parts) {
    PartList all;
    std::unordered_set<const CPart*> done;
    for (CPart* part : parts)
        if (!seq->isLocked(part) && done.insert(part->content()).second) all.push_back(part);
    return all;
}

template <class F>
void eachSelectedNote(CPart* part, F&& visit) {
    for (CBaseEvent* e = part->getEvents(); e; e = e->next)
        if (isSelected(e) && rowOf(part, e) >= 0) visit(e);
}

} // namespace

void applyDrafts(CSeq* seq, std::vector<PartDraft> drafts, const char* title) {
    std::unordered_set<const CPart*> done;
    const auto idle = [&](const PartDraft& d) {
        return !d.draft || seq->isLocked(d.part) || sameContent(d.draft.get(), d.part->content()) ||
               !done.insert(d.part->content()).second;
    };
    std::erase_if(drafts, idle);
    if (drafts.empty()) return;
    CUndo* undo = seq->host->undoStart(title, seq, {.song = true, .seq = SeqNotice::parts});
    for (PartDraft& d : drafts) swapUndoPart(undo, d.part->content(), d.draft.release());
    seq->host->undoEnd(undo, false);
}

void changeParts(CSeq* seq, const PartList& parts, const char* title,
                 const std::function<void(CPart* part, CPart* draft)>& change) {
    std::vector<PartDraft> drafts;
    for (CPart* part : oneOfEach(seq, parts)) {
        drafts.push_back({part, contentDraft(part)});
        change(part, drafts.back().draft.get());
    }
    applyDrafts(seq, std::move(drafts), title);
}

EventRange eventRange(CSeq* seq, const PartList& parts) {
    EventRange all;
    bool any = false;
    for (CPart* part : parts) {
        if (!hasSelectedEvents(part)) continue;
        const EventRange one = eventRange(seq, part, {});
        if (!any) all = one;
        any = true;
        all = {asMax(all.minTicks, one.minTicks), asMin(all.maxTicks, one.maxTicks),
               asMax(all.minLength, one.minLength), asMax(all.minPitch, one.minPitch),
               asMin(all.maxPitch, one.maxPitch)};
    }
    return all;
}

bool anySelected(const PartList& parts) {
    return std::ranges::any_of(parts, hasSelectedEvents);
}

void dragEvents(CSeq* seq, const PartList& parts, const EventDelta& delta) {
    const char* title = delta.ticks || delta.pitch ? "Move" : "Edit";
    changeParts(seq, parts, title,
                [&](CPart* part, CPart* draft) { changeEvents(seq, part, draft, {}, delta); });
}

void copyEvents(CSeq* seq, const PartList& parts, const EventDelta& delta) {
    changeParts(seq, parts, "Copy",
                [&](CPart* part, CPart* draft) { addCopies(seq, part, draft, {}, delta); });
}

void deleteEvents(CSeq* seq, const PartList& parts, const char* title) {
    changeParts(seq, parts, title, [](CPart*, CPart* draft) { draft->deleteSelected(); });
}

bool allMuted(const PartList& parts) {
    int muted = 0, others = 0;
    for (CPart* part : parts)
        eachSelectedNote(part, [&](const CBaseEvent* e) { (e->style.muted ? muted : others)++; });
    return muted > 0 && others == 0;
}

void muteEvents(CSeq* seq, const PartList& parts) {
    const bool to = !allMuted(parts);
    changeParts(seq, parts, to ? "Mute notes" : "Unmute notes", [to](CPart*, CPart* draft) {
        eachSelectedNote(draft, [to](CBaseEvent* e) { e->style.muted = to; });
    });
}

void glueEvents(CSeq* seq, const PartList& parts) {
    changeParts(seq, parts, "Glue", [](CPart*, CPart* draft) { glueRows(draft); });
}

void splitEvents(CSeq* seq, const PartList& parts, int songTick) {
    CUndo* undo = seq->host->undoStart("Split", seq, {.song = true, .seq = SeqNotice::parts});
    for (CPart* part : oneOfEach(seq, parts))
        splitEventsInPart(seq, part, saturate(int64_t(songTick) - part->pos - part->offset), undo);
    seq->host->undoEnd(undo, false);
}

void quantizeEvents(CSeq* seq, const PartList& parts, int grid) {
    CUndo* undo = seq->host->undoStart("Quantize", seq, {.song = true, .seq = SeqNotice::parts});
    for (CPart* part : oneOfEach(seq, parts)) quantize(undo, part, grid, true);
    seq->host->undoEnd(undo, false);
}
