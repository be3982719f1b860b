#pragma once

#include "base/CStr.h"

#include <optional>

class CObject;

/// How a parameter, which runs from 0 to 1, is told in a unit of its own, and what a number that is
/// typed in that unit means. Any thread.
struct ParamUnit {
    static constexpr float threshold = 0.5f; ///< from which on a switch is on

    CStr (*text)(float share);     ///< "-6.00 dB", "440 Hz", "L32", "on"
    float (*share)(double number); ///< may lie beyond 0 to 1
};
extern const ParamUnit percentUnit; ///< "46%"
extern const ParamUnit switchUnit;  ///< "on", "off"; typed 1 and 0

/// The unit of a parameter of a component, strip or send; percent where it has none.
const ParamUnit& unitOf(const CObject* target, int param);
/// The number in a text that a user has typed, a unit behind it or not: "-6", "1,5 kHz", "L32" for
/// -32, "c" for the centre, "on" and "off", "-inf". Nothing without any.
std::optional<double> typedNumber(const CStr& text);
