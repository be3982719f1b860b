#pragma once

#include "driver/Ring.h"
#include "driver/libaam.h"

#include <cstdint>
#include <vector>

/// Messages of any length on their way between two threads: one puts them in, in one piece or in
/// several, the other takes them whole. One that does not fit, or is cut off by another message, is
/// dropped whole.
class LongMessages {
public:
    static constexpr size_t mostBytes = aamMostMessage, ringBytes = 256 * 1024;

    LongMessages() : ring(ringBytes), coming(mostBytes), whole(sizeof(Head) + mostBytes) {}
    LongMessages(const LongMessages&) = delete;
    LongMessages& operator=(const LongMessages&) = delete;

    // Putting thread.
    bool put(const AamMessage& message);
    /// Bytes of a port: a system exclusive message (0xF0 to 0xF7), or the next piece of one. True
    /// when they belong to one.
    bool join(const unsigned char* bytes, size_t count, int device);

    // Taking thread.
    /// The oldest one, if there is one: into its `bytes`, of which there are `length`. False
    /// without one; one that has no room there is dropped, and the result is the next.
    bool take(AamMessage& to);

private:
    struct Head {
        int32_t device, frame, length;
    };
    void skip(size_t count);

    Ring<unsigned char> ring;
    std::vector<unsigned char> coming; ///< what has come of a message
    std::vector<unsigned char> whole;  ///< head and bytes of what is put, at once
    size_t come = 0;                   ///< bytes of it
    bool inside = false;               ///< a message has begun
    bool tooLong = false;
};
