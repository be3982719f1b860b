#include "sequencer/edit/EventDraft.h"

#include "sequencer/edit/EventShift.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>

namespace {

/// The link to what follows stays.
void restore(int partType, CBaseEvent* event, const CBaseEvent* original) {
    CBaseEvent* next = event->next;
    if (partType == partAudio)
        *asClip(event) = *asClip(original);
    else if (partType == partDrum)
        *asHit(event) = *asHit(original);
    else
        *asMessage(event) = *asMessage(original);
    event->next = next;
}

} // namespace

EventDraft::EventDraft(CSeq* song, CPart* of, CPart* base)
    : seq(song), part(of), copy(base ? base->copy(0) : contentDraft(of).release()),
      range(rangeOf(song, of, copy->getEvents(), {})) {
    const EventDelta none;
    const EventShift shift(seq, part, {}, none);
    int order = 0;
    eachEvent(copy->getEvents(), [&](CBaseEvent* e, int tick) {
        (shift.concerns(e) ? chosen : still).push_back({e, tick, order++});
    });
    for (const Place& p : chosen) originals.push_back(copyEvent(part->type, p.event));
    std::ranges::stable_sort(still, {}, &Place::tick);
}

EventDraft::~EventDraft() {
    for (CBaseEvent* e : originals) freeEvent(e);
}

std::unique_ptr<CPart> EventDraft::take() {
    return std::move(copy);
}

void EventDraft::change(const EventDelta& delta) {
    const EventDelta kept = limited(delta, range);
    const EventShift shift(seq, part, {}, kept);
    place([&](CBaseEvent* e, int tick) { return shift.change(e, tick); });
}

void EventDraft::trim(int delta) {
    const EventDelta none;
    const EventShift shift(seq, part, {}, none);
    place([&](CBaseEvent* e, int tick) { return shift.trim(e, tick, delta); });
}

template <class F>
void EventDraft::place(F&& tickOf) {
    moved.clear();
    for (size_t i = 0; i < chosen.size(); i++) {
        const Place& p = chosen[i];
        restore(part->type, p.event, originals[i]);
        moved.push_back({p.event, tickOf(p.event, p.tick), p.order});
    }
    if (!std::ranges::is_sorted(moved, {}, &Place::tick))
        std::ranges::stable_sort(moved, {}, &Place::tick);
    link();
}

/// Both in order of tick, and where that is the same, as they stood at first.
void EventDraft::link() {
    CBaseEvent* head = nullptr;
    CBaseEvent** next = &head;
    int before = 0;
    const auto add = [&](const Place& p) {
        p.event->delta = p.tick - before;
        before = p.tick;
        *next = p.event;
        next = &p.event->next;
    };
    auto other = still.begin();
    for (const Place& p : moved) {
        const auto first = [&p](const Place& q) {
            return q.tick < p.tick || (q.tick == p.tick && q.order < p.order);
        };
        while (other != still.end() && first(*other)) add(*other++);
        add(p);
    }
    while (other != still.end()) add(*other++);
    *next = nullptr;
    copy->events.store(head);
}
