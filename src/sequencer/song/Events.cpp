#include "sequencer/song/Events.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>
#include <type_traits>

namespace {

/// A record in memory of `malloc`, that `freeEvent` returns: records are freed without their class.
template <class E>
E* make(const E& content) {
    static_assert(std::is_trivially_destructible_v<E>);
    void* memory = std::malloc(sizeof(E));
    if (!memory) throw std::bad_alloc();
    E* event = new (memory) E(content);
    event->next = nullptr;
    return event;
}

constexpr CMIDIEvent midiDefaults{{}, 0, defaultNoteTicks};
constexpr CDrumEvent drumDefaults{{}, 0, defaultNoteTicks, 1.0f, 0.0f, 1.0f};

CAudioEvent audioDefaults() {
    CAudioEvent event{};
    event.gain = 1.0f;
    event.ticks = 960;
    return event;
}

} // namespace

CMIDIEvent* createMIDIEvent(const CMIDIEvent* source) {
    return make(source ? *source : midiDefaults);
}

CAudioEvent* createAudioEvent(const CAudioEvent* source) {
    return make(source ? *source : audioDefaults());
}

CDrumEvent* createDrumEvent(const CDrumEvent* source) {
    return make(source ? *source : drumDefaults);
}

CEnvEvent* createEnvEvent(const CEnvEvent* source, float value) {
    if (source) return make(*source);
    const float inRange = value > 0.0f ? std::min(value, 1.0f) : 0.0f;
    return make(CEnvEvent{{}, inRange, 0.0f, 0});
}

void select(CBaseEvent* event, bool on) {
    event->flags =
        (unsigned char)(on ? event->flags | eventSelected : event->flags & ~eventSelected);
}

void freeEvent(CBaseEvent* event) {
    std::free(event);
}

void freeEvents(CBaseEvent* head) {
    while (head) {
        CBaseEvent* next = head->next;
        freeEvent(head);
        head = next;
    }
}

std::vector<DrumParam> drumParamList(CDrumEvent* event) {
    std::vector<DrumParam> list;
    const auto offer = [&](int id, float& value, float standard) {
        if (value != standard) list.push_back({id, &value});
    };
    offer(0, event->velocity, drumDefaults.velocity);
    offer(1, event->pan, drumDefaults.pan);
    offer(2, event->tune, drumDefaults.tune);
    return list;
}

EventCollector::~EventCollector() {
    for (const Item& item : items) freeEvent(item.event);
}

void EventCollector::add(int tick, CBaseEvent* event) {
    items.push_back({tick, event});
}

CBaseEvent* EventCollector::takeList() {
    std::stable_sort(items.begin(), items.end(),
                     [](const Item& a, const Item& b) { return a.tick < b.tick; });
    CBaseEvent* head = nullptr;
    CBaseEvent** link = &head;
    int before = 0;
    for (const Item& item : items) {
        item.event->delta = item.tick - before;
        before = item.tick;
        *link = item.event;
        link = &item.event->next;
    }
    *link = nullptr;
    items.clear();
    return head;
}
