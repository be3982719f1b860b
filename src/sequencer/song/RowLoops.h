#pragma once

#include "sequencer/song/EventKinds.h"
#include "sequencer/song/Events.h"

#include <algorithm>
#include <cmath>
#include <vector>

class CPart;
class CSeq;

/// Rows of a drum part that have a length of their own: from the part's tick 0 on such a row plays
/// its hits before that length over and over, until the part ends; what stands behind it is silent.
/// A part that has it never changes it, but takes another one.
struct RowLoops {
    static constexpr int shortest = 30, longest = 960 * 4 * 64; ///< ticks

    std::vector<int> ticks; ///< by sound; of those that are as long as the part 0, or not there

    int of(int sound) const {
        return sound >= 0 && sound < int(ticks.size()) ? ticks[size_t(sound)] : 0;
    }
    int longestRow() const;
    /// 0 as the part; else kept within the limits.
    void set(int sound, int length);
    bool empty() const { return longestRow() == 0; }
    bool operator==(const RowLoops&) const = default;
};

/// Of the content of a part; null when all rows are as long as the part, and without rows.
const RowLoops* rowLoops(CPart* part);
/// A part that is not linked takes them; none, or empty ones, are dropped. Nothing on other parts
/// than those of drums.
void setRowLoops(CPart* draft, const RowLoops* loops);

/// Whether a hit at that own tick plays at all.
inline bool inRow(const RowLoops* loops, int sound, int tick) {
    const int length = loops ? loops->of(sound) : 0;
    return length == 0 || tick < length;
}

/// Calls `visit(hit, tick)` for each time that a hit of a shorter row comes again, at the part's
/// own ticks from `from` up to before `to`.
template <class F>
void eachRepeat(CBaseEvent* head, const RowLoops& loops, double from, double to, F&& visit) {
    const int longest = loops.longestRow();
    int tick = 0;
    for (CBaseEvent* e = head; e && (tick += e->delta) < longest; e = e->next) {
        auto* hit = asHit(e);
        const int length = loops.of(hit->sound);
        if (length == 0 || tick >= length) continue;
        const double passes = std::max(1.0, std::ceil((from - tick) / length));
        for (double at = tick + passes * length; at < to; at += length) visit(hit, int(at));
    }
}

/// Whether what shorter rows of a part repeat before its own tick `end` is few enough to be written
/// out, 65,536 at the most.
bool canWriteOut(CPart* part, int end);

/// The events of a part, where rows have a length of their own with all that they repeat before the
/// part's own tick `end`.
class PlayedEvents {
public:
    PlayedEvents(CPart* part, int end);
    ~PlayedEvents() { freeEvents(made); }
    PlayedEvents(const PlayedEvents&) = delete;
    PlayedEvents& operator=(const PlayedEvents&) = delete;

    CBaseEvent* list() const { return made ? made : own; }

private:
    CBaseEvent* own; ///< those of the part
    CBaseEvent* made = nullptr;
};

/// Gives a row another length as one step, "Row length".
void setRowLoop(CSeq* seq, CPart* part, int row, int ticks);
