#include "engine/Setting.h"

CStr Setting::text(const CObject* object, double v) const {
    if (form != choice) return unit->text(object, v);
    const int word = asRound(v - least);
    return word >= 0 && word < int(words.size()) ? CStr(words[size_t(word)]) : CStr();
}

const Setting* findSetting(Settings all, const char* name) {
    for (const Setting& s : all)
        if (CStr(s.name()) == name) return &s;
    return nullptr;
}
