#pragma once

#include "gui/Fonts.h"

/// An outlined, anti-aliased face for texts in UTF-8, by the library Xft, which is looked for at
/// run time. `family` and `size` are as in `TextSettings`; the size is that of all looks. What the
/// font lacks comes from the best of the others that have it. Null when the library, its fonts or
/// what they need of the server are not there.
std::unique_ptr<TextFace> openSmoothFace(const CStr& family, int size, const TextLook& look);
