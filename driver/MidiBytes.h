#pragma once

#include <cstddef>
#include <cstdint>

/// Short messages as bytes on a wire and as packed words, status in the low byte: those of
/// channels, and those of the system but for active sensing.

constexpr int maxMessageBytes = 3;

/// Bytes of a message with this status, 0 if it is none.
constexpr int messageBytes(int status) {
    constexpr int timeCode = 0xF1, songPosition = 0xF2, songSelect = 0xF3, clock = 0xF8,
                  sensing = 0xFE;
    if (status < 0x80 || status == sensing) return 0;
    if (status >= clock) return 1;
    if (status == songPosition) return 3;
    if (status == timeCode || status == songSelect) return 2;
    if (status >= 0xF0) return 0;
    const int kind = status & 0xF0;
    return kind == 0xC0 || kind == 0xD0 ? 2 : 3;
}

/// Packs a message; false if the bytes are not exactly one short message.
inline bool packMessage(const unsigned char* bytes, size_t count, int32_t& data) {
    if (count == 0 || count != size_t(messageBytes(bytes[0]))) return false;
    data = bytes[0] | (count > 1 ? bytes[1] << 8 : 0) | (count > 2 ? bytes[2] << 16 : 0);
    return true;
}

/// Writes the message to `bytes`, of which there are `maxMessageBytes`, and says how many it has:
/// 0 if it is no short message. Data bytes lose their top bit.
inline int unpackMessage(int32_t data, unsigned char* bytes) {
    bytes[0] = data & 0xFF;
    bytes[1] = (data >> 8) & 0x7F;
    bytes[2] = (data >> 16) & 0x7F;
    return messageBytes(bytes[0]);
}
