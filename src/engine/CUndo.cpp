#include "engine/CUndo.h"

#include <atomic>
#include <utility>

namespace {

template <class T>
T loadField(T* field) {
    return std::atomic_ref<T>(*field).load(std::memory_order_relaxed);
}

template <class T>
void exchangeField(T* field, T& value) {
    if (field) value = std::atomic_ref<T>(*field).exchange(value, std::memory_order_relaxed);
}

} // namespace

std::vector<CObject*> objectsIn(const CList& list) {
    std::vector<CObject*> objects;
    for (CObject* object : each<CObject>(list)) objects.push_back(object);
    return objects;
}

CUndoItem::~CUndoItem() {
    if (ownsObjects) deleteAll(holding);
    deleteAll<CObject>(reorder);
    delete replaced;
}

void CUndoItem::exchangeValues() {
    exchangeField(intField, intValue);
    exchangeField(floatField, floatValue);
    exchangeField(ptrField, ptrValue);
    if (kept) kept->exchange();
}

void CUndoItem::exchangeNotes() {
    if (nameField) std::swap(*nameField, nameValue);
    if (listField) std::swap(*listField, listValue);
}

CUndo::CUndo(const CStr& title, CComp* about, const StepEffects& stepEffects)
    : name(title), comp(about), effects(stepEffects) {
}

CUndo::~CUndo() {
    deleteAll<CObject>(items);
}

CUndoItem* CUndo::newItem(CObject* object) {
    lastItem = new CUndoItem(this, lastItem);
    lastItem->object = object;
    items.add(lastItem);
    return lastItem;
}

CUndoItem* CUndo::asAdd(CObject* object, CList* to, int index) {
    CUndoItem* item = newItem(object);
    item->holding.add(object);
    item->removeFrom = &item->holding;
    item->addTo = to;
    item->index = index;
    return item;
}

CUndoItem* CUndo::asRemove(CObject* object, CList* from) {
    CUndoItem* item = newItem(object);
    item->removeFrom = from;
    item->addTo = &item->holding;
    return item;
}

CUndoItem* CUndo::asMove(CObject* object, CList* from, CList* to, int index) {
    CUndoItem* item = newItem(object);
    item->removeFrom = from;
    item->addTo = to;
    item->index = index;
    return item;
}

CUndoItem* CUndo::add2(CObject* object, CList* to, CList* from, int index) {
    CUndoItem* item = newItem(object);
    item->removeFrom = from ? from : &item->holding;
    item->addTo = to;
    item->index = index;
    item->linked = true;
    return item;
}

CUndoItem* CUndo::asPtr(void** field) {
    CUndoItem* item = newItem(nullptr);
    item->ptrField = field;
    item->ptrValue = loadField(field);
    return item;
}

CUndoItem* CUndo::asInt(int* field) {
    CUndoItem* item = newItem(nullptr);
    item->intField = field;
    item->intValue = loadField(field);
    return item;
}

CUndoItem* CUndo::asFloat(float* field) {
    CUndoItem* item = newItem(nullptr);
    item->floatField = field;
    item->floatValue = loadField(field);
    return item;
}

CUndoItem* CUndo::asName(CStr* field) {
    CUndoItem* item = newItem(nullptr);
    item->nameField = field;
    item->nameValue = *field;
    return item;
}

CUndoItem* CUndo::asNumbers(CObject* object, std::vector<int>* field) {
    CUndoItem* item = newItem(object);
    item->listField = field;
    item->listValue = *field;
    return item;
}

CUndoItem* CUndo::asSwap(CUndoContent* object, CUndoContent* edited) {
    CUndoItem* item = newItem(object);
    item->replaced = edited;
    return item;
}

CUndoItem* CUndo::asGrow(CObject* object, Shared<int>& number, int by) {
    CUndoItem* item = newItem(object);
    item->number = number.address();
    item->growth = by;
    return item;
}

CUndoItem* CUndo::asToggle(CObject* object, unsigned bits) {
    CUndoItem* item = newItem(object);
    item->toggled = object->flags.address();
    item->toggledBits = bits;
    return item;
}

void CUndo::asValue(const StoredValue& value, const StoredValue::Numbers& before) {
    for (const auto* item : items)
        if (item->kept && item->kept->value == value) return;
    CUndoItem* item = newItem(nullptr);
    item->kept = std::make_unique<KeptValue>(KeptValue{value, before});
    item->linked = true;
}

void CUndo::drop(const CObject* object) {
    ListOf<CUndoItem> old;
    old.swap(items);
    lastItem = nullptr;
    while (auto* item = old.first()) {
        old.del(0);
        if (item->object == object || (item->kept && item->kept->value.object == object)) {
            delete item;
            continue;
        }
        item->previous = lastItem;
        lastItem = item;
        items.add(item);
    }
}
