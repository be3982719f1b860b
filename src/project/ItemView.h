#pragma once

#include "base/CStream.h"

#include <algorithm>

/// One item of a file as a stream of its own: nothing is read beyond its end, and it takes note
/// when somebody wanted to. Positions are those of the file.
class ItemView : public CStream {
public:
    /// `bytes` from where `parent` stands, which has them and outlives the view.
    ItemView(CStream* parent, int64_t bytes)
        : from(parent), begin(parent->getPos()), end(begin + bytes) {
        size = end;
    }

    bool tooShort = false; ///< more was wanted than the item has

    int read(void* to, int bytes) override {
        if (bytes > left()) tooShort = true;
        return from->read(to, int(std::clamp<int64_t>(left(), 0, bytes)));
    }
    int seek(int64_t offset, int whence) override {
        const int64_t to = std::clamp(target(offset, whence), begin, end);
        return to == getPos() ? pos() : from->seek(to, seekStart);
    }
    int64_t getPos() override { return from->getPos(); }
    int64_t getSize() override { return end; }

    void skipRest() { seek(end, seekStart); }
    bool has(int64_t bytes) { return left() >= bytes; }
    /// All of it was read, and no more was wanted.
    bool exact() { return getPos() == end && !tooShort; }

private:
    CStream* from;
    int64_t begin, end;
};
