#pragma once

#include "base/Numbers.h"
#include "engine/SettingUnit.h"
#include "engine/StoredValue.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <span>
#include <type_traits>

/// A stored field of an object as a panel shows it: what it is called, how far it goes, how it is
/// told. Beside each class that has settings stands a table of them. A value made from one is set
/// through `CQV::values`, as all that a user sets.
struct Setting {
    enum Form : unsigned char {
        number, ///< in even steps
        ratio,  ///< in equal ratios, as frequencies; `least` is above 0
        whole,  ///< a whole number
        onOff,  ///< 0 or 1
        choice  ///< the number of one of the words
    };

    const char* group;         ///< under which it stands
    StoredValue::Kind kind;    ///< its name is that of the setting, for steps and readers too
    double least, most, usual; ///< usual: what a new object has
    const SettingUnit* unit = &plainUnit;
    Form form = number;
    std::span<const char* const> words = {}; ///< of a choice, from `least` on
    int index = 0;                           ///< that the kind takes, unless it is told another

    const char* name() const { return kind.name; }
    /// Of an object of the class that the table describes.
    StoredValue of(CObject* object) const { return {&kind, object, index}; }
    StoredValue of(CObject* object, int at) const { return {&kind, object, at}; }
    CStr text(const CObject* object, double v) const; ///< of a number that it may have
    /// Its place on the way from `least` to `most`, 0 to 1, as a knob turns, and back.
    double shareOf(double v) const;
    double atShare(double share) const;
};
using Settings = std::span<const Setting>;

/// The first setting of that name; null without one.
const Setting* findSetting(Settings all, const char* name);

// Kinds of values for tables. A number that is not finite leaves the field as it is.

/// The class and the type of what a pointer to a member leads to.
template <class T>
struct MemberOf;
template <class C, class T>
struct MemberOf<Stored<T> C::*> {
    using Class = C;
    using Type = T;
};
template <class C, class T>
struct MemberOf<T (C::*)() const> {
    using Class = C;
    using Type = T;
};

/// An end of a range as an argument of a template: not every compiler takes a number with a
/// fraction.
struct SettingBound {
    double value;
    constexpr SettingBound(double number) : value(number) {}
};

template <class T>
T settingNumber(double v) {
    if constexpr (std::is_floating_point_v<T>)
        return T(v);
    else
        return T(asRound(v));
}

/// A field itself, kept within its range.
template <auto field, SettingBound least, SettingBound most>
constexpr StoredValue::Kind fieldKind(const char* name) {
    using Class = typename MemberOf<decltype(field)>::Class;
    using Type = typename MemberOf<decltype(field)>::Type;
    return {name,
            [](const CObject* o, int) {
                return StoredValue::Numbers{double((static_cast<const Class*>(o)->*field).load())};
            },
            [](CObject* o, int, const StoredValue::Numbers& to) {
                if (!std::isfinite(to[0])) return;
                static_cast<Class*>(o)->*field =
                    settingNumber<Type>(std::clamp(to[0], least.value, most.value));
            }};
}

/// A pair of functions, of which the second keeps to the range.
template <auto get, auto set>
constexpr StoredValue::Kind accessKind(const char* name) {
    using Class = typename MemberOf<decltype(get)>::Class;
    using Type = typename MemberOf<decltype(get)>::Type;
    return {name,
            [](const CObject* o, int) {
                return StoredValue::Numbers{double((static_cast<const Class*>(o)->*get)())};
            },
            [](CObject* o, int, const StoredValue::Numbers& to) {
                if (std::isfinite(to[0]))
                    (static_cast<Class*>(o)->*set)(settingNumber<Type>(to[0]));
            }};
}

/// A row of a table over a field.
template <auto field, SettingBound least, SettingBound most>
constexpr Setting fieldSetting(const char* group, const char* name, double usual,
                               const SettingUnit& unit = plainUnit,
                               Setting::Form form = Setting::number) {
    return {group, fieldKind<field, least, most>(name), least.value, most.value, usual, &unit,
            form};
}

/// A switch.
template <auto field>
constexpr Setting switchSetting(const char* group, const char* name, double usual = 0.0) {
    return fieldSetting<field, 0.0, 1.0>(group, name, usual, onOffUnit, Setting::onOff);
}

/// One of several words, which stand for the numbers from 0 on.
template <auto field, const auto& words>
constexpr Setting choiceSetting(const char* group, const char* name, double usual = 0.0) {
    constexpr double last = double(std::size(words)) - 1.0;
    Setting made = fieldSetting<field, 0.0, last>(group, name, usual, plainUnit, Setting::choice);
    made.words = words;
    return made;
}

/// A row of a table over a pair of functions.
template <auto get, auto set>
constexpr Setting accessSetting(const char* group, const char* name, double least, double most,
                                double usual, const SettingUnit& unit = plainUnit,
                                Setting::Form form = Setting::number) {
    return {group, accessKind<get, set>(name), least, most, usual, &unit, form};
}
