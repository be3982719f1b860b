#include "engine/CMIDIQ.h"

#include "base/Numbers.h"
#include "base/ZeroPages.h"

#include <algorithm>

namespace {

constexpr size_t queueBytes = CMIDIQ::capacity * sizeof(CMIDIBytes);

} // namespace

CMIDIQ::CMIDIQ(CComp* owner) : events(static_cast<CMIDIBytes*>(takeZeroPages(queueBytes))) {
    category = categoryPort;
    comp = owner;
    events[0] =
        CMIDIBytes(); // so that the first events of a song do not all ask for a page at once
}

CMIDIQ::~CMIDIQ() {
    GiveZeroPages{queueBytes}(events);
}

CInputPort::CInputPort(CComp* owner) : CMIDIQ(owner) {
    type = portInput;
}

COutputPort::COutputPort(CComp* owner) : CMIDIQ(owner) {
    type = portOutput;
}

void CMIDIQ::clear() {
    count = 0;
}

CMIDIBytes* CMIDIQ::first() {
    return count > 0 ? events : nullptr;
}

void CMIDIQ::put(int i, double time, int data, unsigned char kind, float value, int param,
                 void* owner, void* extra) {
    CMIDIBytes& e = events[i];
    e.time = time;
    e.data = data;
    e.kind = kind;
    e.value = value;
    e.param = param;
    e.owner = owner;
    e.extra = extra;
    e.next = i + 1 < count ? &events[i + 1] : nullptr;
    if (i > 0) events[i - 1].next = &e;
}

void CMIDIQ::push(double time, int data, unsigned char kind, float value, int param, void* owner,
                  void* extra) {
    if (count >= maxEvents) return;
    ++count;
    put(count - 1, time, data, kind, value, param, owner, extra);
}

void CMIDIQ::insert(double time, int data, unsigned char kind, float value, int param, void* owner,
                    void* extra) {
    if (count >= maxEvents) return;
    int i = count++;
    for (; i > 0 && events[i - 1].time > time; --i) {
        events[i] = events[i - 1];
        events[i].next = i + 1 < count ? &events[i + 1] : nullptr;
    }
    put(i, time, data, kind, value, param, owner, extra);
}

void CMIDIQ::pop(int i) {
    if (i < 0 || i >= count) return;
    --count;
    for (; i < count; ++i) {
        events[i] = events[i + 1];
        events[i].next = &events[i + 1];
    }
    if (count > 0) events[count - 1].next = nullptr;
}

void CMIDIQ::addMidiEvent(double time, int data) {
    push(time, data, eventMidi, 0.0f, 0, nullptr, nullptr);
}

void CMIDIQ::copyEvents(CMIDIQ* src) {
    clear();
    for (const CMIDIBytes* e = src->first(); e; e = e->next)
        push(e->time, e->data, e->kind, e->value, e->param, e->owner, e->extra);
}

int CMIDIQ::frameOf(const CMIDIBytes* event, int low, int high) {
    return std::min(std::max(asRound(event->time), low), high);
}
