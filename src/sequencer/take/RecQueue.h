#pragma once

#include "base/Atomic.h"

/// A message that was played, on its way into a part.
struct RecEvent {
    double tick = 0.0; ///< where it counts in the song
    double heard =
        0.0;      ///< where it was played; ahead of the end of a loop it counts as the next pass
    int msg = 0;  ///< packed message
    int pass = 0; ///< of the loop, that it counts to
};

/// What is played on one track while it records. The audio thread puts in, the interface thread
/// takes out; what comes while it is full is lost.
class RecQueue {
public:
    static constexpr unsigned capacity = 2048; ///< two seconds of a full MIDI line

    void push(const RecEvent& event) {
        const unsigned at = written;
        if (at - taken.loadAcquire() >= capacity) return;
        events[at % capacity] = event;
        written.storeRelease(at + 1);
    }
    /// False when there is nothing.
    bool take(RecEvent& event) {
        const unsigned at = taken;
        if (at == written.loadAcquire()) return false;
        event = events[at % capacity];
        taken.storeRelease(at + 1);
        return true;
    }
    bool empty() const { return taken == written.loadAcquire(); } ///< the side that takes
    /// Drops what there is. The side that takes.
    void clear() { taken.storeRelease(written.loadAcquire()); }

private:
    RecEvent events[capacity];
    Shared<unsigned> written{0}, taken{0};
};
