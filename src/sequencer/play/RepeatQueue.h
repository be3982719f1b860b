#pragma once

#include "sequencer/play/CPlayStruct.h"

#include <cstdint>

/// A note or hit by value, as it is played.
struct Strike {
    PlayKind kind = PlayKind::midi;
    int data = 0;  ///< message of a note
    int sound = 0; ///< of a hit, as what follows
    float velocity = 1.0f, pan = 0.0f, tune = 1.0f;
};

/// The repeats to come of a note or hit that has played once.
struct Repeats {
    Strike strike;
    int tick = 0;       ///< of the first, on the timeline
    double moved = 0;   ///< the same with the swing
    int length = 0;     ///< ticks that all of them take
    int count = 0;      ///< of all
    int next = 0;       ///< the one that is due next
    double partEnd = 0; ///< tick

    /// Where a repeat begins, in ticks from the first one.
    int start(int index) const { return int(int64_t(length) * index / count); }
};

/// Those of one song track. What finds no place is left out. Graph holder; no allocation.
class RepeatQueue {
public:
    static constexpr int room = 64;

    void add(const Repeats& repeats) {
        if (count < room) places[count++] = repeats;
    }
    void clear() { count = 0; }
    /// Keeps those for which `more(repeats)` is true.
    template <class F>
    void keep(F&& more) {
        int kept = 0;
        for (int i = 0; i < count; i++)
            if (more(places[i])) places[kept++] = places[i];
        count = kept;
    }

private:
    Repeats places[room];
    int count = 0;
};
