#pragma once

#include "engine/Setting.h"

#include <functional>
#include <vector>

class ValueDoor;

/// A setting of some object, to be kept.
struct SettingValue {
    const Setting* setting; ///< not owned
    StoredValue value;
    bool operator==(const SettingValue&) const = default;
};

/// Two states of many settings, A and B, of which one is in force and is left as it then stands;
/// and what lies between. They last as long as the settings are the same ones. Interface thread.
class Compare {
public:
    using Values = std::function<std::vector<SettingValue>()>;

    /// `values` tells the settings; `door` outlives it.
    Compare(ValueDoor& through, Values of) : door(through), values(std::move(of)) {}

    double place() const { return at; }          ///< 0 is A, 1 is B
    bool both() const { return !about.empty(); } ///< there is another state than the present one
    void turn(int side);                         ///< to A, 0, or B, as one step
    void morph(double to); ///< within a gesture of the door, or as a step of its own
    void forget();         ///< the present state is A, and there is no B

private:
    std::vector<StoredValue::Numbers> numbers() const;
    bool known() const;
    void keep();
    void apply(double to);

    ValueDoor& door;
    Values values;
    std::vector<SettingValue> about; ///< what is kept; empty: nothing
    std::vector<StoredValue::Numbers> states[2];
    double at = 0.0;
};
