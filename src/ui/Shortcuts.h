#pragma once

#include "base/CStr.h"
#include "gui/Keys.h"

// Keys as texts, for menus, hints and the setup.

/// "F5", "DEL", "SPACE", or the capital of a character; empty for 0 and keys without a name.
CStr keyToStr(int key);
/// The key of such a text, whatever the case; 0 for anything else.
int strToKey(const CStr& text);
/// With its modifiers, such as "CTRL + SHIFT + S"; empty without a key.
CStr shortcutToStr(int key, int mods);
