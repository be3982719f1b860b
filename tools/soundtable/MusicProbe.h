#pragma once

#include "data/presets/ArpPresets.h"
#include "data/presets/Clips.h"
#include "data/presets/TrackPresets.h"
#include "tools/soundtable/SoundFigures.h"

class CQV;

namespace soundtable {

// What presets that play, or are played, sound like: four seconds at 120 beats a minute, in shapes
// of eight sixteenths each. Of their figures these have the name, family, loudness, peak and width.
// The host has the rate of the probe; interface thread.

/// A chord that is held for two bars, played by one and the same program.
Figures measureArpeggio(CQV* host, const presets::ArpPreset& preset);

// From their beginning on.
Figures measureClip(const presets::DrumClip& clip);
Figures measureClip(CQV* host, const presets::NoteClip& clip);
Figures measureClip(const presets::SoundLoop& loop);

/// With all its effects: of notes a low one and a chord; of drums a bar and a half of strokes; of
/// audio what racks are tried on. Without its fader.
Figures measureTrack(CQV* host, const presets::TrackPreset& preset);

} // namespace soundtable
