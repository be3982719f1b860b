#pragma once

#include "base/CStream.h"

#include <bit>
#include <cstring>

/// Gathers values for another stream, little-endian, and hands them on in pieces: for very many
/// small writes. Nobody else writes to that stream meanwhile, and it outlives the writer.
class BufferedWriter {
public:
    explicit BufferedWriter(CStream* to) : stream(to) {}
    ~BufferedWriter() { flush(); }
    BufferedWriter(const BufferedWriter&) = delete;
    BufferedWriter& operator=(const BufferedWriter&) = delete;

    void writeByte(unsigned char v) { put(v); }
    void writeShort(short v) { put(v); }
    void writeInt(int v) { put(v); }
    void writeFloat(float v) { put(v); }
    void writeDouble(double v) { put(v); }
    void flush() {
        stream->write(window, used);
        used = 0;
    }

private:
    static_assert(std::endian::native == std::endian::little, "values are stored as they lie");
    static constexpr int windowBytes = 1 << 13;

    template <class T>
    void put(T v) {
        if (used > windowBytes - int(sizeof v)) flush();
        std::memcpy(window + used, &v, sizeof v);
        used += int(sizeof v);
    }

    CStream* stream;
    int used = 0;
    unsigned char window[windowBytes];
};
