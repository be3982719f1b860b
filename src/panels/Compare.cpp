#include "panels/Compare.h"

#include "engine/ValueDoor.h"

#include <cmath>

namespace {

/// Of what can be between: numbers in their own scale, words and switches change half way.
StoredValue::Numbers between(const Setting& s, const StoredValue::Numbers& a,
                             const StoredValue::Numbers& b, double share) {
    if (share <= 0.0) return a;
    if (share >= 1.0) return b;
    if (s.form == Setting::onOff || s.form == Setting::choice) return share < 0.5 ? a : b;
    StoredValue::Numbers made = a;
    made[0] = s.form == Setting::ratio ? a[0] * std::pow(b[0] / a[0], share)
                                       : a[0] + (b[0] - a[0]) * share;
    if (s.form == Setting::whole) made[0] = std::round(made[0]);
    return made;
}

} // namespace

std::vector<StoredValue::Numbers> Compare::numbers() const {
    std::vector<StoredValue::Numbers> all;
    for (const SettingValue& one : about) all.push_back(one.value.get());
    return all;
}

bool Compare::known() const {
    return !about.empty() && values() == about;
}

/// The state that is in force is as it stands now; one that lies between is none.
void Compare::keep() {
    if (!known()) {
        forget();
        about = values();
        states[0] = states[1] = numbers();
    } else if (at == 0.0 || at == 1.0) {
        states[at == 1.0] = numbers();
    }
}

void Compare::forget() {
    about.clear();
    at = 0.0;
}

void Compare::apply(double to) {
    for (size_t i = 0; i < about.size(); i++) {
        const auto &a = states[0][i], &b = states[1][i];
        if (a != b || at == to) door.set(about[i].value, between(*about[i].setting, a, b, to));
    }
    at = to;
}

void Compare::turn(int side) {
    keep();
    door.begin(side ? "Compare: B" : "Compare: A");
    apply(side);
    door.end();
}

void Compare::morph(double to) {
    if (at == 0.0 || at == 1.0 || !known()) keep();
    apply(std::fmin(std::fmax(to, 0.0), 1.0));
}
