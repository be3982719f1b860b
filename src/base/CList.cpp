#include "base/CList.h"

#include <utility>

CList::~CList() {
    clear();
}

/// The first item that holds `p`, null if there is none, and the one in front of it.
CListItem* CList::find(const void* p, CListItem** before) const {
    CListItem* previous = nullptr;
    CListItem* item = head.loadAcquire();
    for (; item && item->data.loadAcquire() != p; item = item->next.loadAcquire()) previous = item;
    if (before) *before = previous;
    return item;
}

/// The item at index `i`, null outside the list, and the one in front of it.
CListItem* CList::itemAt(int i, CListItem** before) const {
    CListItem* previous = nullptr;
    CListItem* item = i < 0 ? nullptr : head.loadAcquire();
    for (; item && i > 0; item = item->next.loadAcquire(), --i) previous = item;
    if (before) *before = previous;
    return item;
}

/// Puts an item behind `before`, null for the head. The store of the link publishes it.
void CList::link(CListItem* item, CListItem* before) {
    Shared<CListItem*>& slot = before ? before->next : head;
    CListItem* follower = slot.load();
    item->next.store(follower);
    if (!follower) tail = item;
    slot.storeRelease(item);
    count.storeRelease(count + 1);
    changes += 1;
}

void CList::unlink(CListItem* item, CListItem* before) {
    CListItem* follower = item->next.load();
    if (!follower) tail = before;
    if (cursor == item) cursor = before;
    (before ? before->next : head).storeRelease(follower);
    count.storeRelease(count - 1);
    changes += 1;
}

void* CList::items(int i) const {
    CListItem* item = i < getCount() ? itemAt(i, nullptr) : nullptr;
    return item ? item->data.loadAcquire() : nullptr;
}

void* CList::first() {
    CListItem* item = head.loadAcquire();
    cursor = item;
    return item ? item->data.loadAcquire() : nullptr;
}

void* CList::next_old() {
    CListItem* at = cursor.load();
    CListItem* item = at ? at->next.loadAcquire() : head.loadAcquire();
    if (!item) return nullptr;
    cursor = item;
    return item->data.loadAcquire();
}

void* CList::next2(CListItem** it) const {
    CListItem* item = *it ? (*it)->next.loadAcquire() : head.loadAcquire();
    void* data = item ? item->data.loadAcquire() : nullptr;
    *it = data ? item : nullptr;
    return data;
}

void* CList::next(const void* p) const {
    CListItem* item = find(p, nullptr);
    if (item) item = item->next.loadAcquire();
    return item ? item->data.loadAcquire() : nullptr;
}

void* CList::last() const {
    return items(getCount() - 1);
}

int CList::indexed(const void* p) const {
    int index = 0;
    for (CListItem* item = head.loadAcquire(); item; item = item->next.loadAcquire(), ++index) {
        if (item->data.loadAcquire() == p) return index;
    }
    return -1;
}

void CList::add(void* p) {
    auto* item = new CListItem;
    item->data = p;
    link(item, tail);
}

void CList::addUnique(void* p) {
    if (!contains(p)) add(p);
}

void CList::addLast(void* p) {
    auto* item = new CListItem;
    item->data = p;
    CListItem* at = cursor.load();
    link(item, at ? at : tail);
    cursor = item;
}

void CList::insert(int i, void* p) {
    auto* item = new CListItem;
    item->data = p;
    CListItem* before = tail;
    if (i < count) itemAt(i, &before); // nothing is in front of a negative index
    link(item, before);
}

void CList::del(int i) {
    CListItem* before = nullptr;
    CListItem* item = itemAt(i, &before);
    if (!item) return;
    unlink(item, before);
    delete item;
}

void CList::remove(const void* p) {
    CListItem* before = nullptr;
    CListItem* item = find(p, &before);
    if (!item) return;
    unlink(item, before);
    delete item;
}

void CList::replace(const void* a, void* b) {
    CListItem* item = find(a, nullptr);
    if (!item) return;
    item->data.storeRelease(b);
    changes += 1;
}

void CList::exchange(int i, int j) {
    CListItem* a = itemAt(i, nullptr);
    CListItem* b = itemAt(j, nullptr);
    if (!a || !b) return;
    void* data = a->data.load();
    a->data.storeRelease(b->data.load());
    b->data.storeRelease(data);
    changes += 1;
}

void* CList::pop() {
    CListItem* before = nullptr;
    CListItem* item = itemAt(count - 1, &before);
    if (!item) return nullptr;
    void* data = item->data.load();
    unlink(item, before);
    delete item;
    return data;
}

int CList::move(CList* src, const void* p, int index) {
    if (head.load() == src->head.load()) return 0;
    CListItem* before = nullptr;
    CListItem* item = src->find(p, &before);
    if (!item) return 0;
    src->unlink(item, before);
    before = tail;
    if (index >= 0 && index < count) itemAt(index, &before);
    link(item, before);
    return 1;
}

void CList::swap(CList& other) {
    CListItem *mine = head.load(), *others = other.head.load();
    const int size = count;
    head.storeRelease(others);
    other.head.storeRelease(mine);
    count.storeRelease(other.count);
    other.count.storeRelease(size);
    std::swap(tail, other.tail);
    for (CList* list : {this, &other}) {
        list->cursor = nullptr;
        list->changes += 1;
    }
}

void CList::clear() {
    CListItem* item = head.load();
    head.storeRelease(nullptr);
    cursor = nullptr;
    tail = nullptr;
    count.storeRelease(0);
    changes += 1;
    while (item) delete std::exchange(item, item->next.load());
}
