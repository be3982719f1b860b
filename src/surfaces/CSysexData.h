#pragma once

#include "base/CStr.h"

#include <vector>

/// Bytes of a system exclusive message, written as hexadecimal numbers. Interface thread.
struct CSysexData {
    static constexpr int mostBytes = 65536;

    std::vector<unsigned char> data;
    int offset = 0; ///< of a preset's first byte in a message that comes

    /// Takes a text of bytes: "F0 43 10", or "0xF0 0x43 0x10"; blanks count for nothing. What is no
    /// such text changes nothing, and neither does one of four characters or fewer.
    void fromStr(const CStr& text, bool append);
    /// Stores or appends bytes; what goes beyond `mostBytes` is left out.
    void assign(const unsigned char* bytes, int size, bool append);
    int size() const { return int(data.size()); }
};
