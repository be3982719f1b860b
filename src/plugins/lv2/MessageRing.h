#pragma once

#include "base/Atomic.h"

#include <cstdint>
#include <memory>
#include <vector>

/// Messages of any length from one thread to another. No allocation, no waiting.
class MessageRing {
public:
    static constexpr uint32_t room = 1 << 17; ///< bytes of all that wait, with 8 for each message

    /// Producer. False where there is no room: then only this one is lost.
    bool push(uint32_t kind, const void* data, uint32_t size);
    /// Consumer. False, with all as it was, when there is none. `into` has room for `room` bytes.
    bool pop(uint32_t& kind, std::vector<char>& into);
    /// Consumer's room for messages, made once.
    static std::vector<char> buffer();

private:
    void put(uint32_t at, const void* from, uint32_t size);
    void get(uint32_t at, void* to, uint32_t size) const;

    const std::unique_ptr<char[]> bytes = std::make_unique<char[]>(room);
    Shared<uint32_t> taken{0}, given{0}; ///< bytes so far
};
