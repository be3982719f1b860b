#include "sequencer/song/PartOrder.h"

#include "base/CList.h"
#include "sequencer/song/CPart.h"

#include <utility>

namespace {

/// Sorted runs by size: slot n holds 2 to the power of n parts, or none.
constexpr int runSlots = 32;

class Sorter {
public:
    Sorter(PartBefore before, void* context) : isBefore(before), arg(context) {}

    void sort(CList& parts) {
        while (!parts.empty()) {
            moveFirst(parts, runs[runSlots]);
            int slot = 0;
            for (; !runs[slot].empty(); slot++) mergeInto(runs[slot], runs[runSlots]);
            moveAll(runs[runSlots], runs[slot]);
        }
        for (int slot = 0; slot < runSlots; slot++) {
            mergeInto(runs[slot], parts);
            moveAll(runs[slot], parts);
        }
    }

private:
    static CPart* firstOf(const CList& list) { return static_cast<CPart*>(list.getFirst()); }
    static void moveFirst(CList& from, CList& to) { to.move(&from, firstOf(from), -1); }
    static void moveAll(CList& from, CList& to) {
        while (!from.empty()) moveFirst(from, to);
    }

    /// Joins two runs in `later`; at a tie `earlier` goes first.
    void mergeInto(CList& earlier, CList& later) {
        if (earlier.empty()) return;
        while (!earlier.empty() && !later.empty())
            moveFirst(isBefore(firstOf(later), firstOf(earlier), arg) ? later : earlier, merged);
        moveAll(earlier, merged);
        moveAll(later, merged);
        moveAll(merged, later);
    }

    PartBefore isBefore;
    void* arg;
    CList runs[runSlots + 1]; ///< the last one carries
    CList merged;
};

} // namespace

bool inOrder(const CList& parts, PartBefore before, void* context) {
    CPart* last = nullptr;
    for (auto* part : each<CPart>(parts)) {
        if (last && before(part, last, context)) return false;
        last = part;
    }
    return true;
}

void sortParts(CList& parts, PartBefore before, void* context) {
    if (!inOrder(parts, before, context)) Sorter(before, context).sort(parts);
}

bool earlier(CPart* a, CPart* b, void*) {
    return a->pos < b->pos;
}

void sortByPos(CList& parts) {
    sortParts(parts, earlier, nullptr);
}
