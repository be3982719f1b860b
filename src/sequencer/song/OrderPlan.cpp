#include "sequencer/song/OrderPlan.h"

#include "engine/UndoPlan.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/Points.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace {

/// Where parts will stand, and how long they will last.
class PlannedParts {
public:
    PlannedParts(CSeq* song, const UndoPlan& plan, const CUndo* step) : seq(song) {
        const int sign = plan.isForward() ? 1 : -1;
        for (const auto* item : step->items) {
            if (const int ticks = moveOf(item)) moved[item->object] += sign * ticks;
            if (const int ticks = growthOf(item)) grown[item->object] += sign * ticks;
            if (item->replaced && item->object->type == partAudio)
                other[item->object] = static_cast<CPart*>(item->replaced);
        }
    }

    int pos(const CPart* part) const { return part->pos + find(moved, part); }

    int ticks(CPart* part) const {
        const CPart* content = part->content();
        const auto swapped = other.find(content);
        const auto* event = lengthEvent(part, swapped == other.end() ? content : swapped->second);
        const int length =
            event ? sampleAsTicks2(seq, event, pos(part)) : part->length + find(grown, part);
        return length > 0 ? length : quarterTicks;
    }

    bool before(CPart* a, CPart* b) const {
        const int posA = pos(a), posB = pos(b);
        return posA != posB ? posA < posB : ticks(a) > ticks(b);
    }

    bool touchesAny(ListView<CPart> parts) const {
        if (moved.empty() && grown.empty() && other.empty()) return false;
        for (auto* part : parts)
            if (moved.count(part) || grown.count(part) || other.count(part->content())) return true;
        return false;
    }

private:
    using Ticks = std::unordered_map<const CObject*, int>;

    static int find(const Ticks& ticks, const CPart* part) {
        const auto found = ticks.find(part);
        return found == ticks.end() ? 0 : found->second;
    }

    CSeq* seq;
    Ticks moved, grown;
    std::unordered_map<const CObject*, const CPart*> other; ///< the events that a part is to get
};

bool sameObjects(std::vector<CObject*> a, std::vector<CObject*> b) {
    std::ranges::sort(a);
    std::ranges::sort(b);
    return a == b;
}

template <class T, class Before>
void order(UndoPlan& plan, CUndo* step, ListOf<T>& list, Before before) {
    std::vector<CObject*>& planned = plan.contents(&list);
    const auto isBefore = [&before](CObject* a, CObject* b) {
        return before(static_cast<T*>(a), static_cast<T*>(b));
    };
    const auto former = step->formerOrders.find(&list);
    if (!plan.isForward() && former != step->formerOrders.end() &&
        sameObjects(planned, former->second))
        planned = former->second;
    if (std::ranges::is_sorted(planned, isBefore)) return;
    if (plan.isForward()) step->formerOrders[&list] = objectsIn(list);
    std::ranges::stable_sort(planned, isBefore);
}

} // namespace

void planOrder(CSeq* seq, UndoPlan& plan, CUndo* step) {
    const PlannedParts parts(seq, plan, step);
    const std::vector<CList*> planned = plan.lists();
    const std::unordered_set<const CList*> changed(planned.begin(), planned.end());
    const auto concerns = [&](const auto& list) {
        return changed.count(&list) || parts.touchesAny(list);
    };
    const auto byPlace = [&](auto& points) {
        if (!concerns(points)) return;
        order(plan, step, points,
              [&parts](CPart* a, CPart* b) { return parts.pos(a) < parts.pos(b); });
    };
    for (auto* prog : seq->programs()) {
        byPlace(prog->timesigs);
        byPlace(prog->tempos);
    }
    seq->eachSongTrack([&](CSongTrack* songTrack) {
        if (concerns(songTrack->parts))
            order(plan, step, songTrack->parts,
                  [&parts](CPart* a, CPart* b) { return parts.before(a, b); });
    });
}
