#pragma once

#include "engine/Setting.h"

#include <algorithm>
#include <cctype>
#include <cstring>
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

/// Of a name, or of its length before it.
inline bool isText(const std::string& bytes, size_t at) {
    const auto letter = [&](size_t i) { return i < bytes.size() && std::isalnum(bytes[i]); };
    for (size_t i = at; i <= at + 4; i++)
        if (letter(i) && (letter(i + 1) || (i > 0 && letter(i - 1)))) return true;
    return false;
}

/// Where what is stored from a place on, up to another, can differ at all: one word after the other
/// becomes another number, wherever none of the texts stands, and the whole is read and written.
template <class F>
StoredPlaces storable(const std::string& usual, F&& again, size_t from = 0,
                      size_t to = std::string::npos) {
    StoredPlaces all;
    for (size_t at = from; at + 4 <= std::min(to, usual.size()); at++) {
        if (isText(usual, at)) continue;
        for (const float number : {0.2718281f, -0.5772156f, 17.77215f}) {
            std::string other = usual;
            std::memcpy(&other[at], &number, sizeof number);
            all.merge(differing(usual, again(other)));
        }
        for (const char byte : {0, 1, 3, 9, 44}) {
            std::string other = usual;
            other[at] = byte;
            all.merge(differing(usual, again(other)));
        }
    }
    return all;
}

/// What is stored without a control.
inline StoredPlaces missing(const StoredPlaces& stored, const StoredPlaces& controls) {
    StoredPlaces all;
    std::ranges::set_difference(stored, controls, std::inserter(all, all.end()));
    return all;
}
