#pragma once

#include "base/CList.h"
#include "sequencer/song/CPart.h"

#include <cstdint>
#include <span>
#include <vector>

class CPart;

/// The parts of a song track side by side, by position, so that a search for those at a position
/// reaches into no others. Graph holder.
class PartIndex {
public:
    struct Entry {
        CPart* part = nullptr;
        uint64_t slots = 0; ///< of the envelopes that have points, a bit each
        int pos = 0;        ///< ticks
        int end = 0;        ///< ticks; where it ends, or later
        int reach = 0;      ///< ticks; the latest end until this entry
    };
    using Room = std::vector<Entry>;

    /// Sees to room for so many parts. Off the audio thread.
    void reserve(int parts);
    /// Empty room for so many and some more. Any thread.
    static Room roomFor(int parts);
    /// Takes the larger one of its own room and `room`, which is given the other. What it holds
    /// stays, and no memory is taken.
    void takeRoom(Room& room);

    /// A part became longer, was moved or shows other content.
    void expire() { valid = false; }
    /// Makes it anew when it has expired, or parts came or went: true. There is room for them all.
    /// Until then it may name parts that are gone.
    bool refresh(const ListOf<CPart>& parts);
    std::span<const Entry> entries() const { return room; }
    /// How many entries begin at or before a tick.
    size_t begunAt(double tick) const;
    /// The first entry that ends behind a tick.
    size_t firstOn(double tick) const;

private:
    Room room;
    bool valid = false;
    unsigned version = 0; ///< of the list that it was made from
};
