#include "plugins/lv2/MessageRing.h"

#include <algorithm>
#include <cstring>

namespace {

struct Head {
    uint32_t kind, size;
};

} // namespace

std::vector<char> MessageRing::buffer() {
    std::vector<char> made;
    made.reserve(room);
    return made;
}

bool MessageRing::push(uint32_t kind, const void* data, uint32_t size) {
    const uint32_t at = given, used = at - taken.loadAcquire();
    const Head head{kind, size};
    if (size > room - sizeof head || used + sizeof head + size > room) return false;
    put(at, &head, sizeof head);
    put(at + uint32_t(sizeof head), data, size);
    given.storeRelease(at + uint32_t(sizeof head) + size);
    return true;
}

bool MessageRing::pop(uint32_t& kind, std::vector<char>& into) {
    const uint32_t at = taken;
    if (at == given.loadAcquire()) return false;
    Head head{};
    get(at, &head, sizeof head);
    kind = head.kind;
    into.resize(head.size);
    get(at + uint32_t(sizeof head), into.data(), head.size);
    taken.storeRelease(at + uint32_t(sizeof head) + head.size);
    return true;
}

void MessageRing::put(uint32_t at, const void* from, uint32_t size) {
    const uint32_t place = at % room, first = std::min(size, room - place);
    std::memcpy(bytes.get() + place, from, first);
    std::memcpy(bytes.get(), static_cast<const char*>(from) + first, size - first);
}

void MessageRing::get(uint32_t at, void* to, uint32_t size) const {
    const uint32_t place = at % room, first = std::min(size, room - place);
    std::memcpy(to, bytes.get() + place, first);
    std::memcpy(static_cast<char*>(to) + first, bytes.get(), size - first);
}
