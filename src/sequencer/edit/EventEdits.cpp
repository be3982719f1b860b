#include "sequencer/edit/EventEdits.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "sequencer/edit/EventShift.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_set>
#include <utility>

namespace {

constexpr StepEffects eventEffects{.song = true, .seq = SeqNotice::parts};

void unselectAll(CBaseEvent* list) {
    for (CBaseEvent* e = list; e; e = e->next) select(e, false);
}

bool singleClip(CPart* part) {
    return part->type == partAudio && !isMulticlip(part);
}

bool editable(CSeq* seq, CPart* part, const EventLane& lane) {
    return !seq->isLocked(part) && (lane.automation() || !singleClip(part));
}

/// Takes the lane's events out of a part, hands each with its tick to `each`, and puts back what
/// that gives to the collector.
template <class F>
void rearrange(CPart* draft, const EventLane& lane, F&& each) {
    EventCollector placed;
    CBaseEvent* next = listOf(draft, lane);
    lane.automation() ? draft->relinkParam(lane.number, nullptr) : draft->events.store(nullptr);
    for (int tick = 0; CBaseEvent* e = next;) {
        next = e->next;
        each(e, tick += e->delta, placed);
    }
    if (lane.automation())
        draft->setParam(lane.number, asLanePoint(placed.takeList()));
    else
        draft->setEvents(placed.takeList());
}

/// Does `change(draft)` as one step.
template <class F>
void edit(CSeq* seq, CPart* part, const EventLane& lane, const char* title, F&& change) {
    if (!editable(seq, part, lane)) return;
    std::unique_ptr<CPart> draft = contentDraft(part);
    change(draft.get());
    applyDraft(seq, part, std::move(draft), title);
}

float valueAt(const ValueLine& line, int tick) {
    const double span = double(line.toTick) - line.fromTick;
    const double part = span != 0.0 ? (double(tick) - line.fromTick) / span : 0.0;
    return float(double(line.from) + (double(line.to) - double(line.from)) * part);
}

void bend(CEnvEvent* point, float before, float amount, bool absolute) {
    const float turned = point->value < before ? -amount : amount;
    point->curve = fLimit(absolute ? amount : point->curve + turned, -1.0f, 1.0f);
}

/// For the key of each selected note, on its channel.
void addAftertouch(CPart* draft, int tick, float value) {
    if (draft->type != partMIDI) return;
    std::set<int> keys; // status and key
    for (const CBaseEvent* e = draft->events; e; e = e->next) {
        const int data = asMessage(e)->data;
        if (isSelected(e) && noteOn(data))
            keys.insert(asData(midiAftertouch | (data & 15), asByte1(data), 0));
    }
    for (const int key : keys) {
        CMIDIEvent* made = createMIDIEvent();
        made->data = key;
        setLaneValue({laneAftertouch, 0}, draft->type, made, value);
        draft->addEvent(tick, made);
    }
}

} // namespace

EventRange eventRange(CSeq* seq, CPart* part, const EventLane& lane) {
    return rangeOf(seq, part, listOf(part, lane), lane);
}

void dragEvents(CSeq* seq, CPart* part, const EventLane& lane, const EventDelta& delta) {
    const char* title = delta.ticks || delta.pitch ? "Move" : "Edit";
    edit(seq, part, lane, title,
         [&](CPart* draft) { changeEvents(seq, part, draft, lane, delta); });
}

void copyEvents(CSeq* seq, CPart* part, const EventLane& lane, const EventDelta& delta) {
    edit(seq, part, lane, "Copy", [&](CPart* draft) { addCopies(seq, part, draft, lane, delta); });
}

void addCopies(CSeq* seq, CPart* part, CPart* draft, const EventLane& lane,
               const EventDelta& delta) {
    const EventDelta kept = limited(delta, rangeOf(seq, part, listOf(draft, lane), lane));
    const EventShift change(seq, part, lane, kept);
    const int type = draft->type;
    rearrange(draft, lane, [&](CBaseEvent* e, int tick, EventCollector& into) {
        into.add(tick, e);
        if (!change.concerns(e)) return;
        CBaseEvent* copied =
            lane.automation() ? createEnvEvent(asLanePoint(e)) : copyEvent(type, e);
        select(e, false);
        into.add(change.change(copied, tick), copied);
    });
}

void resizeEvents(CSeq* seq, CPart* part, int delta) {
    const EventLane lane;
    edit(seq, part, lane, "Resize",
         [&](CPart* draft) { changeEvents(seq, part, draft, lane, {.length = delta}); });
}

void resizeEventStart(CSeq* seq, CPart* part, int delta) {
    edit(seq, part, {}, "Resize", [&](CPart* draft) { trimEvents(seq, part, draft, delta); });
}

void trimEvents(CSeq* seq, CPart* part, CPart* draft, int delta) {
    const EventLane lane;
    const EventDelta none;
    const EventShift change(seq, part, lane, none);
    rearrange(draft, lane, [&](CBaseEvent* e, int tick, EventCollector& into) {
        into.add(change.concerns(e) ? change.trim(e, tick, delta) : tick, e);
    });
}

void deleteEvents(CSeq* seq, CPart* part) {
    if (seq->isLocked(part)) return;
    std::unique_ptr<CPart> draft = contentDraft(part);
    draft->deleteSelected();
    applyDraft(seq, part, std::move(draft), "Delete");
}

void deletePoints(CSeq* seq, const std::vector<PartSlot>& places) {
    std::map<CPart*, uint64_t> slots; // of contents
    for (const PartSlot& place : places)
        if (!seq->isLocked(place.part)) slots[place.part->content()] |= uint64_t(1) << place.slot;
    CUndo* undo = seq->host->undoStart("Delete", seq, eventEffects);
    for (const auto& [content, chosen] : slots) {
        std::unique_ptr<CPart> draft = contentDraft(content);
        unselectAll(draft->events);
        for (int slot = 0; slot < maxSlots; slot++)
            if (!(chosen >> slot & 1)) unselectAll(draft->getParam(slot));
        draft->deleteSelected();
        if (!sameContent(draft.get(), content)) swapUndoPart(undo, content, draft.release());
    }
    seq->host->undoEnd(undo, false);
}

CBaseEvent* insertEvent(CSeq* seq, CPart* part, int tick, CBaseEvent* event) {
    if (seq->isLocked(part)) {
        freeEvent(event);
        return nullptr;
    }
    std::unique_ptr<CPart> draft = contentDraft(part);
    unselectAll(draft->events);
    select(event, true);
    draft->addEvent(limitTicks(tick), event);
    applyDraft(seq, part, std::move(draft), "Insert");
    return event;
}

CEnvEvent* insertPoint(CSeq* seq, CPart* part, int slot, int tick, CEnvEvent* point) {
    if (seq->isLocked(part) || slot < 0 || slot >= maxSlots) {
        freeEvent(point);
        return nullptr;
    }
    std::unique_ptr<CPart> draft = contentDraft(part);
    unselectAll(draft->getParam(slot));
    select(point, true);
    draft->addEventParam(limitTicks(tick), point, slot);
    applyDraft(seq, part, std::move(draft), "Insert");
    return point;
}

void curveEvents(CSeq* seq, CPart* part, int slot, float amount, bool absolute) {
    const EventLane lane{laneAutomation, slot};
    edit(seq, part, lane, "Edit curve",
         [&](CPart* draft) { bendPoints(draft, slot, amount, absolute); });
}

void bendPoints(CPart* draft, int slot, float amount, bool absolute) {
    float before = 0.0f;
    eachEvent(draft->getParam(slot), [&](CEnvEvent* point, int) {
        if (isSelected(point)) bend(point, before, amount, absolute);
        before = point->value;
    });
}

void lineEditParts(CSeq* seq, const std::vector<CPart*>& parts, const EventLane& lane,
                   const ValueLine& line) {
    const int first = std::min(line.fromTick, line.toTick);
    const int last = std::max(line.fromTick, line.toTick);
    CUndo* undo = seq->host->undoStart("Edit", seq, eventEffects);
    std::unordered_set<const CPart*> done;
    for (CPart* part : parts) {
        if (!editable(seq, part, lane) || !done.insert(part->content()).second) continue;
        std::unique_ptr<CPart> draft = contentDraft(part);
        eachEvent(listOf(draft.get(), lane), [&](CBaseEvent* e, int tick) {
            const int at = saturate(int64_t(part->pos) + part->offset + tick);
            if (at >= first && at <= last && onLane(lane, part->type, e))
                setLaneValue(lane, part->type, e, valueAt(line, at));
        });
        if (!sameContent(draft.get(), part->content()))
            swapUndoPart(undo, part->content(), draft.release());
    }
    seq->host->undoEnd(undo, false);
}

std::unique_ptr<CPart> contentDraft(CPart* part) {
    return std::unique_ptr<CPart>(part->content()->copy(0));
}

void changeEvents(CSeq* seq, CPart* part, CPart* draft, const EventLane& lane,
                  const EventDelta& delta) {
    const EventDelta kept = limited(delta, rangeOf(seq, part, listOf(draft, lane), lane));
    const EventShift change(seq, part, lane, kept);
    rearrange(draft, lane, [&](CBaseEvent* e, int tick, EventCollector& into) {
        into.add(change.concerns(e) ? change.change(e, tick) : tick, e);
    });
}

void placeEvents(CPart* draft, const std::function<int(CBaseEvent* event, int tick)>& change) {
    rearrange(draft, {},
              [&](CBaseEvent* e, int tick, EventCollector& into) { into.add(change(e, tick), e); });
}

void setController(CPart* draft, const EventLane& lane, int from, int to, float value) {
    bool found = false;
    eachEvent(listOf(draft, lane), [&](CBaseEvent* e, int tick) {
        if (tick < from || tick >= to || !onLane(lane, draft->type, e)) return;
        setLaneValue(lane, draft->type, e, value);
        found = true;
    });
    if (!found && lane.kind == laneAftertouch) return addAftertouch(draft, from, value);
    CBaseEvent* added = found ? nullptr : newLaneEvent(lane, draft->type, value);
    if (added && lane.automation())
        draft->addEventParam(from, asLanePoint(added), lane.number);
    else if (added)
        draft->addEvent(from, added);
}

void applyDraft(CSeq* seq, CPart* part, std::unique_ptr<CPart> draft, const char* title) {
    if (seq->isLocked(part) || sameContent(draft.get(), part->content())) return;
    CUndo* undo = seq->host->undoStart(title, seq, eventEffects);
    swapUndoPart(undo, part->content(), draft.release());
    seq->host->undoEnd(undo, false);
}
