#pragma once

#include "base/CList.h"

#include <vector>

class CPart;

/// Copies of parts, for pasting. Interface thread.
class SongClipboard {
public:
    ListOf<CPart> parts;     ///< owned
    std::vector<int> tracks; ///< of each: index of the track it came from

    SongClipboard() = default;
    ~SongClipboard() { clear(); }
    SongClipboard(const SongClipboard&) = delete;
    SongClipboard& operator=(const SongClipboard&) = delete;

    /// Takes the part over.
    void add(CPart* part, int track);
    void clear();
};
