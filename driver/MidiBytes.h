#pragma once

#include <cstddef>
#include <cstdint>

/// Channel messages as bytes on a wire and as packed words, status in the low byte. System
/// messages (exclusive, clock, sensing) do not pass the module.

constexpr int maxMessageBytes = 3;

/// Bytes of a channel message with this status, 0 if it is none.
constexpr int messageBytes(int status) {
    if (status < 0x80 || status >= 0xF0) return 0;
    const int kind = status & 0xF0;
    return kind == 0xC0 || kind == 0xD0 ? 2 : 3;
}

/// Packs a message; false if the bytes are not exactly one channel message.
inline bool packMessage(const unsigned char* bytes, size_t count, int32_t& data) {
    if (count == 0 || count != size_t(messageBytes(bytes[0]))) return false;
    data = bytes[0] | bytes[1] << 8 | (count > 2 ? bytes[2] << 16 : 0);
    return true;
}

/// Writes the message to `bytes`, of which there are `maxMessageBytes`, and says how many it has:
/// 0 if it is no channel message. Data bytes lose their top bit.
inline int unpackMessage(int32_t data, unsigned char* bytes) {
    bytes[0] = data & 0xFF;
    bytes[1] = (data >> 8) & 0x7F;
    bytes[2] = (data >> 16) & 0x7F;
    return messageBytes(bytes[0]);
}
