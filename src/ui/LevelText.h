#pragma once

#include "base/CStr.h"

/// An amplitude in dB of full scale: "-6.0 dB", "-inf dB".
CStr decibelText(float level);
