#include "base/CStringList.h"

#include "base/CStream.h"
#include "base/SafeFile.h"

CStringList::~CStringList() {
    clear();
}

void CStringList::add(const CStr& s) {
    if (!sorted) return append(s);
    int at = 0;
    for (CStringItem* item : list) {
        if (compareText(item->text, s) > 0) break;
        ++at;
    }
    insert(at, s);
}

void CStringList::append(const CStr& s) {
    list.add(new CStringItem(s));
}

void CStringList::insert(int i, const CStr& s) {
    list.insert(i, new CStringItem(s));
}

CStr CStringList::get(int i) const {
    const auto* item = list.items(i);
    return item ? item->text : CStr();
}

void CStringList::setItem(int i, const CStr& s) {
    if (auto* item = list.items(i)) item->text = s;
}

int CStringList::indexOf(const CStr& s) const {
    int at = 0;
    for (CStringItem* item : list) {
        if (item->text == s) return at;
        ++at;
    }
    return -1;
}

void CStringList::del(int i) {
    auto* item = list.items(i);
    list.del(i);
    delete item;
}

void CStringList::exchange(int i, int j) {
    list.exchange(i, j);
}

void CStringList::clear() {
    deleteAll(list);
}

bool CStringList::save(const CStr& path) const {
    SafeFile file(path);
    CFileStream* to = file.stream();
    if (!to) return false;
    const char* separator = "";
    for (CStringItem* item : list) {
        const CStr line = separator + item->text;
        to->write(line.asChar(), line.length());
        separator = "\r\n";
    }
    return file.commit();
}

void CStringList::open(const CStr& path) {
    CFileStream file(path, 0);
    streamToStrs(&file, this);
}
