#include "engine/UndoPlan.h"

#include "engine/CComp.h"
#include "engine/CUndo.h"

#include <algorithm>
#include <climits>

namespace {

/// Bit of an item's `flags`: it goes its way with those behind it.
constexpr unsigned startsRun = 1;

std::vector<CUndoItem*> itemsOf(CUndo* step, bool forward, bool first) {
    std::vector<CUndoItem*> items;
    for (auto* item : step->items)
        if (!first || !item->linked) items.push_back(item);
    if (!forward) std::reverse(items.begin(), items.end());
    return items;
}

bool sameAs(const CList& list, const std::vector<CObject*>& contents) {
    size_t i = 0;
    for (const auto* object : each<CObject>(list))
        if (i == contents.size() || contents[i++] != object) return false;
    return i == contents.size();
}

} // namespace

void UndoPlan::prepare(CUndo* step, bool forward, bool first) {
    leave();
    forwards = forward;
    firstTime = first;
    sortItems(step);
    std::vector<Move> kept;
    for (Run begin = moving.begin(); begin != moving.end();) {
        const Run end = endOfRun(begin);
        if (firstTime) begin->item->setFlag(startsRun, true);
        const Run found = takeOut(begin, end);
        putIn(begin, found);
        kept.insert(kept.end(), begin, found);
        begin = end;
    }
    moving = std::move(kept);
    step->comp->planStep(*this, step);
    build();
}

void UndoPlan::sortItems(CUndo* step) {
    for (CUndoItem* item : itemsOf(step, forwards, firstTime)) {
        listWords(item);
        if (item->number || item->toggled) continue;
        if (!step->comp->takesWhole(item)) {
            single.push_back(item);
            continue;
        }
        if (!item->moves()) continue;
        CList* from = forwards ? item->removeFrom : item->addTo;
        CList* to = forwards ? item->addTo : item->removeFrom;
        moving.push_back({item, item->object, from == &item->holding ? nullptr : from,
                          to == &item->holding ? nullptr : to, item->index, 0});
    }
}

void UndoPlan::listWords(CUndoItem* item) {
    if (item->replaced) {
        auto* content = static_cast<CUndoContent*>(item->object);
        content->listWords(item->replaced, words);
        swapping.push_back(content);
    }
    if (item->number) words.add(item->number, forwards ? item->growth : -item->growth);
    if (item->toggled) words.toggle(item->toggled, item->toggledBits);
}

/// Behind those that go the same way. The indices of a run count in the list that has taken all of
/// it, and where a caller's indices, which count one after the other, would tell something else, a
/// new run begins; the way back has the same runs.
UndoPlan::Run UndoPlan::endOfRun(Run begin) {
    Run last = begin;
    for (Run m = begin + 1; m != moving.end(); last = m++) {
        if (m->from != begin->from || m->to != begin->to || m->from == m->to) return m;
        if (firstTime && m->index >= 0 && (last->index < 0 || m->index <= last->index)) return m;
        if (!firstTime && (forwards ? m : last)->item->hasFlag(startsRun)) return m;
    }
    return moving.end();
}

/// Takes a run out of where it is. Whatever is not there stays behind; returns the end of the rest.
UndoPlan::Run UndoPlan::takeOut(Run begin, Run end) {
    if (!begin->from)
        return std::stable_partition(begin, end, [](const Move& m) { return m.item->held(); });
    std::vector<Move*> wanted;
    for (Run m = begin; m != end; ++m) {
        m->old = -1;
        wanted.push_back(&*m);
    }
    std::ranges::sort(wanted, {}, [](const Move* m) { return m->object; });
    std::vector<CObject*>& list = contents(begin->from);
    size_t kept = 0;
    for (size_t i = 0; i < list.size(); i++) {
        const auto it =
            std::ranges::lower_bound(wanted, list[i], {}, [](const Move* m) { return m->object; });
        if (it != wanted.end() && (*it)->object == list[i] && (*it)->old < 0)
            (*it)->old = int(i);
        else
            list[kept++] = list[i];
    }
    list.resize(kept);
    // The user's index counts with the object in the list, a stored one without it.
    if (begin->from == begin->to && firstTime && begin->index > begin->old) begin->index--;
    return std::stable_partition(begin, end, [](const Move& m) { return m.old >= 0; });
}

void UndoPlan::putIn(Run begin, Run end) {
    if (begin == end) return;
    if (!begin->to) {
        for (Run m = begin; m != end; ++m)
            if (!m->item->held()) m->item->holding.add(m->object);
        return;
    }
    std::vector<const Move*> coming;
    for (Run m = begin; m != end; ++m) coming.push_back(&*m);
    const auto place = [](const Move* m) { return m->index < 0 ? INT_MAX : m->index; };
    std::ranges::stable_sort(coming, {}, place);
    std::vector<CObject*>& list = contents(begin->to);
    std::vector<CObject*> merged;
    merged.reserve(list.size() + coming.size());
    auto next = coming.begin();
    for (auto present = list.begin(); next != coming.end() || present != list.end();) {
        const bool due = next != coming.end() && place(*next) <= int(merged.size());
        if (due || present == list.end())
            merged.push_back((*next++)->object);
        else
            merged.push_back(*present++);
    }
    list.swap(merged);
}

UndoPlan::Change& UndoPlan::change(CList* list) {
    Change*& known = byList[list];
    if (known) return *known;
    changes.push_back(std::make_unique<Change>());
    known = changes.back().get();
    known->list = list;
    known->version = list->version();
    known->contents = objectsIn(*list);
    return *known;
}

std::vector<CObject*>& UndoPlan::contents(CList* list) {
    return change(list).contents;
}

std::vector<CList*> UndoPlan::lists() const {
    std::vector<CList*> all;
    for (const auto& c : changes) all.push_back(c->list);
    return all;
}

void UndoPlan::build() {
    byList.clear();
    std::erase_if(changes, [](const auto& c) { return sameAs(*c->list, c->contents); });
    for (const auto& c : changes)
        for (CObject* object : c->contents) c->other.add(object);
}

bool UndoPlan::carryOut() {
    for (const auto& c : changes)
        if (c->list->version() != c->version) return false;
    for (const auto& c : changes) c->list->swap(c->other);
    words.carryOut();
    return true;
}

void UndoPlan::finish() {
    for (const Move& m : moving) {
        m.item->index = m.old;
        if (!m.from) m.item->holding.clear();
    }
    moving.clear();
    leave();
}

void UndoPlan::leave() {
    for (const Move& m : moving)
        if (!m.to) m.item->holding.clear();
    moving.clear();
    swapping.clear();
    words.clear();
    single.clear();
    byList.clear();
    changes.clear();
}
