#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

class CPart;
class CSeq;
struct CBaseEvent;

/// The events of a list side by side with their ticks, so that who asks for a stretch of it looks
/// at those that last over the stretch and at few others, whatever their order. It is not told of
/// changes: it is made anew where the list may have changed. Interface thread.
class EventIndex {
public:
    struct Entry {
        CBaseEvent* event = nullptr;
        int tick = 0; ///< from the list's start
        int end = 0;  ///< ticks; where it ends, of messages `tick` + 1
    };

    EventIndex() = default;
    EventIndex(CSeq* seq, CPart* part) { make(seq, part); }
    /// Of the events that a part, or its master, holds now.
    void make(CSeq* seq, CPart* part);
    /// Makes it anew unless it was made from the same list at the host's present count of changes.
    void refresh(CSeq* seq, CPart* part);

    int count() const { return int(entries.size()); }
    /// By row, whether a note or hit stands on it; rows behind the end are free.
    const std::vector<bool>& rows() const { return used; }
    /// Calls `visit(entry)`, in the order of the list, for each that lasts over a tick from `from`
    /// to before `to`.
    template <class F>
    void eachWithin(double from, double to, F&& visit) const {
        for (size_t b = 0; b < blocks.size(); b++) {
            if (blocks[b].end <= from || blocks[b].tick >= to) continue;
            const size_t last = std::min(entries.size(), (b + 1) * perBlock);
            for (size_t i = b * perBlock; i < last; i++)
                if (entries[i].end > from && entries[i].tick < to) visit(entries[i]);
        }
    }

    /// For each that lasts over a tick.
    template <class F>
    void eachAt(double tick, F&& visit) const {
        eachWithin(tick, std::floor(tick) + 1, visit);
    }

private:
    static constexpr size_t perBlock = 64;
    struct Block {
        int tick, end; ///< the first and the last of its entries
    };

    std::vector<Entry> entries;
    std::vector<Block> blocks;
    std::vector<bool> used;
    const CBaseEvent* head = nullptr; ///< only to be compared
    unsigned madeAt = 0;              ///< at that count of changes
    bool made = false;                ///< by `refresh`
};
