#pragma once

#include "base/CStr.h"
#include "engine/CComp.h"
#include "engine/StoredValue.h"

#include <array>
#include <functional>
#include <optional>

/// What the user gives a macro: a name, empty for that of its parameter, and from where to where it
/// turns that, 0 to 1. They stand in the component.
struct MacroStyle {
    CStr* name;
    float *low, *high;
};

/// Such, for a component with one set of macros.
struct MacroLooks {
    struct One {
        CStr name;
        float low = 0.0f, high = 1.0f;
    };
    One all[CComp::macroCount];
    MacroStyle of(int macro) {
        One& one = all[macro];
        return {&one.name, &one.low, &one.high};
    }
};

/// A component whose macros can be called and limited by the user.
class StyledMacros {
public:
    virtual std::optional<MacroStyle> macroStyle(int macro) = 0; ///< none without a program

protected:
    ~StyledMacros() = default;
};

// Eight knobs of a component, each of which turns one of its parameters. Interface thread.

using MacroNumbers = std::array<int, CComp::macroCount>; ///< of the parameters, -1 for none

/// Whether a component stores macros: instruments, racks and plug-ins do.
bool hasMacros(const CComp& comp);
/// The number of the parameter that a macro turns, -1 for none. Where programs have macros of their
/// own it is that of the current one.
StoredValue macroOf(CComp* comp, int macro);

std::optional<MacroStyle> macroStyleOf(CComp& comp, int macro);
/// Another name, or other ends, as a step of the history; `low` is below `high`, else the whole
/// range.
void setMacroStyle(CComp& comp, int macro, const CStr& name, float low, float high);
/// The payload of a block: eight names and both ends of each; what is not a number, or no range,
/// becomes the whole. `style(macro)` tells where they stand.
void writeMacroStyles(CStream* stream, const std::function<MacroStyle(int)>& style);
void readMacroStyles(CStream& body, const std::function<MacroStyle(int)>& style);
bool anyMacroStyle(const std::function<MacroStyle(int)>& style); ///< that is not the usual one

/// Block "macros", unless none turns anything.
void writeMacros(CStream* stream, CComp& comp);
/// The payload of that block.
MacroNumbers readMacros(CStream& body);
void takeMacros(CComp& comp, const MacroNumbers& numbers);
constexpr MacroNumbers noMacros() {
    MacroNumbers none{};
    none.fill(-1);
    return none;
}
