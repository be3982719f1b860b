#include "plugins/clap/ClapEvents.h"

using namespace clapabi;

ClapEvents::ClapEvents() {
    events.reserve(most);
    in = {this,
          [](const InEvents* of) {
              return uint32_t(static_cast<const ClapEvents*>(of->context)->events.size());
          },
          [](const InEvents* of, uint32_t index) -> const EventHeader* {
              const auto& all = static_cast<const ClapEvents*>(of->context)->events;
              return index < all.size() ? &all[index].header : nullptr;
          }};
}

template <class T>
T* ClapEvents::add(T Any::*kind, EventType type, int frame) {
    if (events.size() >= most) return nullptr;
    T* made = &(events.emplace_back().*kind);
    *made = {};
    made->header = {sizeof(T), uint32_t(frame), 0, type, 0};
    return made;
}

void ClapEvents::addParam(Id param, void* cookie, double value) {
    ParamEvent* made = add(&Any::param, eventParamValue, 0);
    if (!made) return;
    made->param = param;
    made->cookie = cookie;
    made->note = made->port = made->channel = made->key = -1;
    made->value = value;
}

void ClapEvents::addMidi(int frame, int data) {
    MidiEvent* made = add(&Any::midi, eventMidi, frame);
    if (!made) return;
    for (size_t i = 0; i < 3; i++) made->data[i] = uint8_t(unsigned(data) >> 8 * i);
}

void ClapEvents::addNote(int frame, int data) {
    constexpr int noteOff = 0x80, noteOn = 0x90;
    const int kind = data & 0xf0, velocity = data >> 16 & 0x7f;
    if (kind != noteOn && kind != noteOff) return;
    const bool on = kind == noteOn && velocity > 0;
    NoteEvent* made = add(&Any::note, on ? eventNoteOn : eventNoteOff, frame);
    if (!made) return;
    made->note = -1;
    made->port = 0;
    made->channel = int16_t(data & 0xf);
    made->key = int16_t(data >> 8 & 0x7f);
    made->velocity = velocity / 127.0;
}
