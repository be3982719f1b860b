#pragma once

#include "engine/CComp.h"
#include "engine/StoredValue.h"

#include <array>

// Eight knobs of a component, each of which turns one of its parameters. Interface thread.

using MacroNumbers = std::array<int, CComp::macroCount>; ///< of the parameters, -1 for none

/// Whether a component stores macros: instruments, racks and plug-ins do.
bool hasMacros(const CComp& comp);
/// The number of the parameter that a macro turns, -1 for none. Where programs have macros of their
/// own it is that of the current one.
StoredValue macroOf(CComp* comp, int macro);

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
