#include "driver/LongMessages.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr unsigned char begins = 0xF0, ends = 0xF7, status = 0x80, realtime = 0xF8;

} // namespace

bool LongMessages::put(const AamMessage& message) {
    const Head head{message.device, message.frame, message.length};
    if (message.length < 1 || size_t(message.length) > mostBytes) return false;
    std::memcpy(whole.data(), &head, sizeof head);
    std::copy_n(message.bytes, message.length, whole.data() + sizeof head);
    return ring.put(whole.data(), sizeof head + size_t(message.length));
}

bool LongMessages::join(const unsigned char* bytes, size_t count, int device) {
    if (count == 0) return false;
    if (bytes[0] == begins) {
        inside = true;
        tooLong = false;
        come = 0;
    } else if (!inside || (bytes[0] >= status && bytes[0] != ends)) {
        if (bytes[0] < realtime) inside = false;
        return false;
    }
    for (size_t i = 0; i < count; ++i) {
        if (bytes[i] >= realtime) continue;
        tooLong = tooLong || come == mostBytes;
        if (!tooLong) coming[come++] = bytes[i];
    }
    if (bytes[count - 1] != ends) return true;
    inside = false;
    if (!tooLong) put({device, 0, int32_t(come), 0, coming.data()});
    return true;
}

void LongMessages::skip(size_t count) {
    unsigned char lost[256];
    while (count > 0) count -= ring.take(lost, count < sizeof lost ? count : sizeof lost);
}

bool LongMessages::take(AamMessage& to) {
    for (;;) {
        Head head{};
        if (ring.waiting() < sizeof head) return false;
        ring.take(reinterpret_cast<unsigned char*>(&head), sizeof head);
        if (head.length <= to.length) {
            ring.take(to.bytes, size_t(head.length));
            to = {head.device, head.frame, head.length, 0, to.bytes};
            return true;
        }
        skip(size_t(head.length));
    }
}
