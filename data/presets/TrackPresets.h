#pragma once

#include <vector>

class COutputChannel;
class CSampler;
class CTrack;

// Whole tracks as data.

namespace presets {

/// A band of the equaliser of a strip, 0 high shelf, 1 and 2 peaks, 3 low shelf.
struct EqCut {
    int band;
    float hz, db;
};

struct TrackPreset {
    const char* name;
    int kind;                              ///< TrackKind
    const char* sound;                     ///< a factory program, or a kit; empty for audio
    std::vector<const char*> effects = {}; ///< of `rackPresets`, by name
    const char* arpeggio = "";             ///< of `arpPresets`; empty: off
    std::vector<EqCut> eq = {};
    float fader = 0.9f, pan = 0.0f;
    int colour = -1; ///< 0xRRGGBB
};

const std::vector<TrackPreset>& trackPresets();

/// Gives an empty track of that kind all of it. Interface thread, with nothing running. False when
/// there is nothing of a name that it calls for.
bool fillTrack(CTrack* track, const TrackPreset& preset);

/// The arpeggio of that name on a track, and an effect behind those of a strip. False without one.
bool giveArpeggio(CTrack* track, const char* name);
bool addRack(COutputChannel* strip, const char* name);
/// Fader 0 to 1 and pan -1 to 1, at once.
void setLevel(COutputChannel* strip, float fader, float pan);

/// A synthesizer with a factory program of that name, which plays the track; null without one.
CSampler* giveProgram(CTrack* track, const char* program);

} // namespace presets
