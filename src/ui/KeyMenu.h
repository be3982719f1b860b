#pragma once

#include "base/CStr.h"
#include "engine/KeyInput.h"

#include <functional>

class CComp;
class COutputChannel;
class CPopup;

// The choice of what compressors and gates follow. Interface thread.

/// Offers the strips that a component may follow, and its own sound; the choice is a step of the
/// history. `keyed` gives the component, or null once it has gone, and `name` what a strip is
/// called.
void fillKeyMenu(CPopup* popup, const std::function<CComp*()>& keyed,
                 const std::function<CStr(const COutputChannel*)>& name = stripName);

/// "Kick", or "its own sound".
CStr keyText(CComp* keyed);
