#pragma once

#include "data/presets/Kits.h"
#include "data/presets/RackPresets.h"
#include "tools/soundtable/SoundFigures.h"

class CQV;

namespace soundtable {

// What presets that are no programs sound like. Of their figures these have the name, loudness,
// peak, width and the two shapes, by which they are told apart. The host has the rate of the probe;
// interface thread.

/// What an effect is tried on: a loud chord and a soft one, and for `beat` a bar of drums instead.
/// Both end long before they are heard to the end.
Sound probeOf(bool beat);
/// The same through a chain of effects.
Sound playRack(CQV* host, const presets::RackPreset& preset, const Sound& in);
/// The low shape is that of the beat.
Figures measureRack(CQV* host, const presets::RackPreset& preset);

/// The first five sounds of a kit, and the rest, one after the other.
Figures measureKit(const presets::Kit& kit);

} // namespace soundtable
