#pragma once

#include "engine/Setting.h"

/// What is set of a CMIDIIn.
Settings midiInSettings();
