#pragma once

#include "base/CStream.h"

/// A block of a file, whose size is stored when it goes out of scope.
class OpenBlock {
public:
    OpenBlock(CStream* s, const char* name) : stream(s) {
        stream->writeId(name, 0);
        sizeAt = stream->getPos() - int64_t(sizeof(int));
    }
    ~OpenBlock() { stream->writeBlockSize(sizeAt); }
    OpenBlock(const OpenBlock&) = delete;
    OpenBlock& operator=(const OpenBlock&) = delete;

private:
    CStream* stream;
    int64_t sizeAt;
};

/// A block of one number.
inline void writeIntBlock(CStream* stream, const char* name, int value) {
    stream->writeId(name, int(sizeof(int)));
    stream->writeInt(value);
}

inline void writeZeros(CStream* stream, int ints) {
    for (int i = 0; i < ints; i++) stream->writeInt(0);
}
