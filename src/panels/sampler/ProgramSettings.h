#pragma once

#include "panels/Compare.h"

class CSynthProg;

/// All settings of a program's sounds, of their modulators and effects, and of its own effects.
std::vector<SettingValue> settingsOfProgram(CSynthProg& prog);
