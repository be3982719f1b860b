#pragma once

#include "base/CStr.h"

// Keys as texts, for menus, hints and the setup.

/// A key code with a small letter made a capital; all others as they are.
int upperKey(int key);
/// "F5", "DEL", "SPACE", or the capital of a character; empty for 0 and keys without a name.
CStr keyToStr(int key);
/// The key of such a text, whatever the case; 0 for anything else.
int strToKey(const CStr& text);
/// With its modifiers, such as "CTRL + SHIFT + S"; empty without a key.
CStr shortcutToStr(int key, int mods);
