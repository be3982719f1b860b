#pragma once

#include "base/ZeroPages.h"
#include "engine/CMIDIQ.h"

/// Events that wait for the sound that they are about: a list in the order of their times, so long
/// that it drops as little as a port does in a block. Graph holder, but for making and deleting.
class EventLine {
public:
    /// Takes an event of this block that is due so many frames later.
    void take(const CMIDIBytes& event, int delay);
    /// Inserts what is due in a block, and moves on by it.
    void serve(CMIDIQ* to, int frames);
    bool empty() const { return count == 0; }
    void clear() { count = 0; }

private:
    static constexpr int capacity = 4096;

    const ZeroPages<CMIDIBytes> events = makeZeroPages<CMIDIBytes>(capacity);
    int count = 0;
};
