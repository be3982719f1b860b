#pragma once

#include "base/CStr.h"

class CSound;

/// A sound as lines of assignments to its fields, through a pointer `so`, as a factory program in
/// the making would have them.
CStr patchText(const CSound& sound);

/// Writes that into "patch.txt" in the home folder, for a button of the panel that edits the sound;
/// false when it cannot be written.
bool savePatchText(const CSound& sound);
