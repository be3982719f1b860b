#pragma once

#include "engine/CUndo.h"

/// Calls `visit` for each object that an open step, which may be null, is about to add to a list.
template <class T, class F>
void eachPending(const CUndo* undo, const ListOf<T>* list, F&& visit) {
    if (!undo) return;
    for (auto* item : undo->items)
        if (item->object && item->addTo == list) visit(static_cast<T*>(item->object));
}

/// The same, after those that are in the list already.
template <class T, class F>
void eachWithPending(const CUndo* undo, const ListOf<T>* list, F&& visit) {
    for (auto* object : *list) visit(object);
    eachPending(undo, list, visit);
}
