#pragma once

#include "base/CStream.h"

#include <climits>

/// The bytes of another stream up to a position, read ahead in pieces: for very many small reads.
/// Positions are those of the other stream, which nobody else moves meanwhile.
class BufferedView : public CStream {
public:
    /// From where `parent` stands to `last`, a position of it, or its end. `parent` outlives the
    /// view.
    BufferedView(CStream* parent, int64_t last);

    int read(void* to, int bytes) override;
    int seek(int64_t offset, int whence) override; ///< within the view
    int pos() override;
    int64_t getPos() override { return windowAt + used; }
    int64_t getSize() override { return end; }
    bool eof() override { return getPos() >= end; }
    bool has(int64_t bytes) { return left() >= bytes; }
    /// Has the view end at a position of it, for as long as a part of it is read, and returns where
    /// it ended. Another call brings that back.
    int64_t setEnd(int64_t position);
    /// Reads a string; false, at the string's length, when it is negative or above `longest`, or
    /// there are fewer bytes.
    bool readText(CStr& text, int longest = INT_MAX);
    /// Moves the other stream to where the view stands.
    void leave() { from->setPos(getPos()); }

private:
    static constexpr int windowBytes = 1 << 15;

    bool fill();

    CStream* from;
    int64_t begin, end;
    int64_t windowAt; ///< position of the first byte of the window
    int used = 0, filled = 0;
    unsigned char window[windowBytes];
};
