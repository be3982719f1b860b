#pragma once

#include "engine/Setting.h"

/// What is set of a program of an arpeggiator and stored with it. The values belong to the CArp,
/// their index is the number of the program.
Settings arpProgSettings();
Settings arpSettings(); ///< of the CArp, whatever its program
