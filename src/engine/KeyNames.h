#pragma once

#include "base/CStr.h"

// Names of MIDI keys. Any thread.

CStr noteToStr(int key);     ///< 60 is "C4"
CStr keyName(int key);       ///< of any octave, "C#"
int keyOf(const CStr& name); ///< of a name as "C4", "Db4" too; -1 for none
