#include "base/CSettings.h"

CSettings::~CSettings() {
    deleteAll(list);
}

CSettings::Item* CSettings::getItem(int i) const {
    return list.items(i);
}

CSettings::Item* CSettings::getItem(const CStr& key) const {
    for (Item* item : list) {
        if (item->key == key) return item;
    }
    return nullptr;
}

CSettings::Item* CSettings::setInt(const CStr& key, int value) {
    Item* item = getItem(key);
    if (!item) {
        item = new Item;
        item->key = key;
        list.add(item);
    }
    item->value = value;
    return item;
}

int CSettings::getInt(const CStr& key, int def) const {
    const Item* item = getItem(key);
    return item ? item->value : def;
}
