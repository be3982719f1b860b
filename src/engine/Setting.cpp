#include "engine/Setting.h"

CStr Setting::text(const CObject* object, double v) const {
    if (form != choice) return unit->text(object, v);
    const int word = asRound(v - least);
    return word >= 0 && word < int(words.size()) ? CStr(words[size_t(word)]) : CStr();
}

double Setting::shareOf(double v) const {
    v = std::clamp(v, least, most);
    if (form == ratio) return std::log(v / least) / std::log(most / least);
    return (v - least) / (most - least);
}

double Setting::atShare(double share) const {
    share = std::clamp(share, 0.0, 1.0);
    if (form == ratio) return least * std::pow(most / least, share);
    const double v = least + share * (most - least);
    return form == number ? v : std::round(v);
}

const Setting* findSetting(Settings all, const char* name) {
    for (const Setting& s : all)
        if (CStr(s.name()) == name) return &s;
    return nullptr;
}
