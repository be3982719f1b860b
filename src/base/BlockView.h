#pragma once

#include "base/CStream.h"
#include "base/LoadBudget.h"

#include <algorithm>

/// The bytes of another stream up to a position, as a stream of their own: nothing is read beyond.
class BlockView : public CStream {
public:
    /// From where `parent` stands to `last`, a position of `parent`, which outlives the view.
    BlockView(CStream* parent, int64_t last) : from(parent), end(last) {}

    int read(void* to, int bytes) override {
        return from->read(to, int(std::clamp<int64_t>(end - from->getPos(), 0, bytes)));
    }
    int64_t getPos() override { return from->getPos(); }
    int64_t getSize() override { return end; }
    int pos() override { return from->pos(); }
    bool has(int64_t bytes) { return left() >= bytes; }

private:
    CStream* from;
    int64_t end;
};

/// The head of a block. False at the end of the view, for a name or body that does not fit, and
/// for a negative size.
inline bool readBlockHead(BlockView& view, CStr& name, int& size) {
    if (!view.has(int64_t(2 * sizeof(int)))) return false;
    constexpr int longestName = 256;
    const int length = view.readInt();
    if (length < 0 || length > longestName || !view.has(length + int64_t(sizeof(int))))
        return false;
    name.resize(length);
    view.read(name.buffer(), length);
    size = view.readInt();
    return size >= 0 && view.has(size);
}

/// Hands each block from where `stream` stands to `end`, or to the end of the stream if that comes
/// first, to `take(name, body)`, which need not read all of it. A head that does not fit ends the
/// walk, and is noted as damage. The stream stands at `end` then, wherever its own end is.
template <class Take>
void eachBlock(CStream* stream, int64_t end, Take&& take) {
    BlockView view(stream, std::min(end, stream->getSize()));
    CStr name;
    int size = 0;
    while (readBlockHead(view, name, size)) {
        const int64_t next = view.getPos() + size;
        BlockView body(stream, next);
        take(name, body);
        stream->seek(next, seekStart);
    }
    if (view.left() > 0) LoadBudget::noteDamage();
    stream->seek(end, seekStart);
}
