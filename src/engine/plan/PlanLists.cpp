#include "engine/plan/PlanLists.h"

#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/UndoPlan.h"

#include <algorithm>

namespace {

constexpr uint64_t hashStart = 14695981039346656037u, hashFactor = 1099511628211u;

uint64_t withObject(uint64_t hash, const CObject* object) {
    return (hash ^ reinterpret_cast<uintptr_t>(object)) * hashFactor;
}

void putIn(std::vector<CObject*>& list, CObject* object, int index) {
    const bool behind = index < 0 || index >= int(list.size());
    list.insert(behind ? list.end() : list.begin() + index, object);
}

} // namespace

/// What `UndoHost` does with the items that are carried out one by one.
PlanLists::PlanLists(const CQV* host, const UndoPlan& step, bool first) {
    for (const CUndoItem* item : step.rest()) {
        if (!item->moves()) continue;
        const CList* from = step.isForward() ? item->removeFrom : item->addTo;
        const CList* to = step.isForward() ? item->addTo : item->removeFrom;
        std::vector<CObject*>& source = after(*from);
        const auto at = std::ranges::find(source, item->object);
        if (at == source.end()) continue;
        if (to == &host->sends && from != to && int(after(*to).size()) >= maxSends) continue;
        const int old = int(at - source.begin());
        const bool countsItself = from == to && first && item->index > old;
        after(*from).erase(after(*from).begin() + old);
        putIn(after(*to), item->object, item->index - (countsItself ? 1 : 0));
    }
}

std::vector<CObject*>& PlanLists::after(const CList& list) {
    const auto [known, fresh] = changed.try_emplace(&list);
    if (fresh) known->second = objectsIn(list);
    return known->second;
}

std::vector<CObject*> PlanLists::of(const CList& list) const {
    if (const auto known = changed.find(&list); known != changed.end()) return known->second;
    return objectsIn(list);
}

PlanSource::PlanSource(const CList& from, const std::vector<CObject*>& objects)
    : list(&from), version(from.version()), contents(hashStart) {
    for (const CObject* object : objects) contents = withObject(contents, object);
}

bool PlanSource::confirm() {
    uint64_t now = hashStart;
    for (const CObject* object : each<CObject>(*list)) now = withObject(now, object);
    if (now != contents) return false;
    version = list->version();
    return true;
}
