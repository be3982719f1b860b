#pragma once

#include "engine/StoredValue.h"
#include "mixer/StripModel.h"

// The level and the switches of a strip: those of its output, or of the sound of a kit. Interface
// thread.

StoredValue stripFader(const MixerStrip& strip); ///< 0 to 1, squared when applied
StoredValue stripPan(const MixerStrip& strip);   ///< -1 to 1
StoredValue stripMute(const MixerStrip& strip);
StoredValue stripSolo(const MixerStrip& strip);
CStr faderText(const MixerStrip& strip); ///< "-6.02 dB"
CStr panText(const MixerStrip& strip);   ///< "L12", "<C>"
