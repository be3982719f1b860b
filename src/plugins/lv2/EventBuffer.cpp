#include "plugins/lv2/EventBuffer.h"

#include <cstring>

EventBuffer::EventBuffer(const Lv2Ports::Events& of, UridMap& urids)
    : port(of), memory((of.bytes + sizeof(LV2_Atom_Sequence)) / sizeof(uint64_t) + 1),
      sequenceType(urids.number(LV2_ATOM__Sequence)), chunkType(urids.number(LV2_ATOM__Chunk)) {
    clear();
}

void EventBuffer::clear() {
    *sequence() = {{sizeof(LV2_Atom_Sequence_Body), sequenceType}, {0, 0}};
}

void EventBuffer::vacate() {
    *sequence() = {{uint32_t(bytes() - sizeof(LV2_Atom)), chunkType}, {0, 0}};
}

void EventBuffer::add(int frame, LV2_URID type, const void* data, uint32_t size) {
    LV2_Atom& head = sequence()->atom;
    const uint32_t at = padded(uint32_t(sizeof head) + head.size);
    const uint32_t whole = uint32_t(sizeof(LV2_Atom_Event)) + size;
    if (size > bytes() || at + padded(whole) > bytes()) return;
    LV2_Atom_Event event{};
    event.time.frames = frame;
    event.body = {size, type};
    char* place = reinterpret_cast<char*>(memory.data()) + at;
    std::memcpy(place, &event, sizeof event);
    std::memcpy(place + sizeof event, data, size);
    head.size = at + padded(whole) - uint32_t(sizeof head);
}
