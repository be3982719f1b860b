#include "sequencer/take/LiveEdits.h"

#include "base/Numbers.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace {

/// Calls `visit` for each part that shows the content of `part`, with its song track.
template <class F>
void eachUser(CSongTrack* on, CPart* part, F visit) {
    const CPart* content = part->content();
    if (content == part) return visit(on, part);
    on->prog->seq->eachSongTrack([&](CSongTrack* songTrack) {
        for (CPart* user : songTrack->parts)
            if (user->content() == content) visit(songTrack, user);
    });
}

/// After `added` was linked into the list that now begins with `head`.
void fixPointer(CPlayStruct* p, CBaseEvent* head, const CBaseEvent* added) {
    p->head = head;
    if (p->current && p->current == added->next) p->pos += added->delta;
}

/// Calls `visit` for each play pointer into the points of a slot.
template <class F>
void eachPointer(CSongTrack* on, CPart* part, int slot, F visit) {
    eachUser(on, part, [&](CSongTrack*, CPart* user) {
        for (int i = 0; i < user->numPlay; i++)
            if (CPlayStruct* p = user->play(i); p->lane && p->lane->slot == slot) visit(user, p);
    });
}

/// What stands at a tick of the list comes to lie within the part.
void growTo(CPart* part, int tick) {
    const int at = saturate(int64_t(tick) + part->offset);
    if (at >= part->length) part->length = saturate(int64_t(at) - at % quarterTicks + quarterTicks);
}

void linkPoint(CSongTrack* on, const LivePoint& w, int tick, CEnvEvent*& owned) {
    CEnvEvent* point = std::exchange(owned, nullptr);
    w.part->addEventParam(tick, point, w.lane->slot);
    eachPointer(on, w.part, w.lane->slot, [&](CPart*, CPlayStruct* p) {
        fixPointer(p, w.part->getParam(w.lane->slot), point);
    });
}

/// Moves the points within the range from the list to `cut`.
void cutList(LivePoint& w) {
    CBaseEvent* head = nullptr;
    CBaseEvent** kept = &head;
    CBaseEvent** cut = &w.cut;
    int tick = 0, lastKept = 0;
    for (CBaseEvent* e = w.part->getParam(w.lane->slot); e;) {
        CBaseEvent* next = std::exchange(e->next, nullptr);
        tick += e->delta;
        if (tick >= w.cutFrom && tick < w.cutTo) {
            *cut = e;
            cut = &e->next;
        } else {
            e->delta = tick - std::exchange(lastKept, tick);
            *kept = e;
            kept = &e->next;
        }
        e = next;
    }
    w.part->relinkParam(w.lane->slot, asLanePoint(head));
}

/// Puts a pointer on the first event at or after a song tick. It says nothing until it gets there:
/// the ramp that it was in has lost its end.
void seekFrom(CPlayStruct* p, const CPart* part, int songTick) {
    int tick = part->pos + part->offset;
    CBaseEvent* e = p->head;
    for (; e && tick + e->delta < songTick; e = e->next) tick += e->delta;
    p->current = e;
    p->pos = tick;
    p->state = RampState::beforeFirst;
}

void cutPoints(CSongTrack* on, LivePoint& w) {
    // Meanwhile the pointers stand on the tick of their event itself.
    eachPointer(on, w.part, w.lane->slot, [](CPart*, CPlayStruct* p) {
        if (p->current) p->pos += p->current->delta;
    });
    cutList(w);
    eachPointer(on, w.part, w.lane->slot, [&w](CPart* user, CPlayStruct* p) {
        p->head = w.part->getParam(w.lane->slot);
        if (p->current) seekFrom(p, user, p->pos);
    });
}

} // namespace

LivePoint::~LivePoint() {
    for (CBaseEvent* list :
         {static_cast<CBaseEvent*>(point), static_cast<CBaseEvent*>(anchor), cut})
        freeEvents(list);
}

void addLiveEvent(CSongTrack* on, CPart* part, int tick, CBaseEvent* event) {
    assert(on->track->heldByThread());
    part->addEvent(tick, event);
    CBaseEvent* head = part->getEvents();
    eachUser(on, part, [&](CSongTrack*, CPart* user) {
        if (user->numPlay > 0) fixPointer(user->play(0), head, event);
    });
    growTo(part, tick);
    on->index.expire();
}

void addLivePoint(CSongTrack* on, LivePoint& w) {
    assert(on->track->heldByThread());
    if (w.pass == on->track->seq->getProg()->loopCount) w.lane->recorded = true;
    const bool had = w.part->getParam(w.lane->slot) != nullptr;
    if (had && w.replace) cutPoints(on, w);
    const int start = -w.part->offset;
    if (!w.part->getParam(w.lane->slot)) {
        if (w.tick > start) linkPoint(on, w, start, w.anchor);
    } else if (had && w.replace && w.tick > w.cutFrom) {
        const int from = std::max(start, asRound(w.cutFrom));
        linkPoint(on, w, from, w.anchor);
    }
    linkPoint(on, w, w.tick, w.point);
    growTo(w.part, w.tick);
    eachUser(on, w.part, [](CSongTrack* songTrack, CPart*) { songTrack->index.expire(); });
}
