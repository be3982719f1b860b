#pragma once

#include "base/BufferedView.h"

#include <string_view>
#include <unordered_set>

/// The head of a block of a file: its name, the size that it tells, and where its bytes begin.
struct BlockStart {
    CStr name; ///< empty where none could be read
    int size = -1;
    int64_t body = 0;
    bool damaged = false; ///< a bit of it had changed; the name is what it was before
};

/// The names of blocks that a reader knows, by which it finds its way again where one of them is
/// not as it says. Streams are moved.
class BlockNames {
public:
    void add(const char* name) { names.insert(name); } ///< stays the caller's

    /// Reads the head where the stream stands. False where none can be made out: then the name is
    /// that of an unknown block with a size that leads nowhere, or empty.
    bool readStart(CStream& stream, BlockStart& start) const;
    /// Whether a block begins at a position, or all ends there.
    bool isAt(CStream& stream, int64_t position) const;
    /// Where, from a position on, the first known block begins; the end without one.
    int64_t find(CStream& stream, int64_t from) const;

private:
    std::unordered_set<std::string_view> names;

    bool has(const CStr& name) const { return names.count(name.asChar()) > 0; }
    template <class Fits>
    bool repair(CStream& stream, int64_t at, BlockStart& start, Fits fits) const;
};
