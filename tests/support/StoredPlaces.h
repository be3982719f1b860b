#pragma once

#include "engine/Setting.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <string>

/// Places in what an object writes, counted from its first byte.
using StoredPlaces = std::set<size_t>;

/// Where two texts of the same length differ; nothing for others.
inline StoredPlaces differing(const std::string& a, const std::string& b) {
    StoredPlaces all;
    for (size_t i = 0; a.size() == b.size() && i < a.size(); i++)
        if (a[i] != b[i]) all.insert(i);
    return all;
}

/// What the settings of an object reach: the places where its bytes change as each is set to
/// several numbers, uneven ones among them, and back. `write` gives the bytes. A setting that
/// reaches nothing is not stored: a failure.
template <class F>
StoredPlaces reached(Settings table, CObject* object, F&& write, int index = -1) {
    StoredPlaces all;
    const std::string usual = write();
    for (const Setting& s : table) {
        const int at = index < 0 ? s.index : index;
        const StoredValue::Numbers before = s.kind.get(object, at);
        StoredPlaces own;
        for (const double share : {0.0, 0.0123457, 0.1357913, 0.2468013, 0.3791357, 0.4680246,
                                   0.6180339, 0.7182818, 0.8414709, 0.9876543, 1.0}) {
            StoredValue::Numbers to = before;
            to[0] = s.least + share * (s.most - s.least);
            s.kind.set(object, at, to);
            own.merge(differing(usual, write()));
        }
        EXPECT_FALSE(own.empty()) << s.group << ", " << s.name();
        all.merge(own);
        s.kind.set(object, at, before);
    }
    return all;
}

/// What is stored without a control.
inline StoredPlaces missing(const StoredPlaces& stored, const StoredPlaces& controls) {
    StoredPlaces all;
    std::ranges::set_difference(stored, controls, std::inserter(all, all.end()));
    return all;
}
