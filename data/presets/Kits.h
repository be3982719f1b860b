#pragma once

#include <vector>

class CSeq;
class CTrack;

// Drum kits as data: each sound is a body that falls in pitch, a noise, and a field of metal.

namespace presets {

// Parts of a sound. Times are seconds in which it falls to a third; a level of 0 leaves it out.

struct DrumPlace {
    float volume = 0.9f, pan = 0.0f;
    int group = 0; ///< sounds of one group choke each other; 0 none
};

struct DrumBody {
    double level = 0.0, hz = 100.0;    ///< of the ground, where it arrives
    double drop = 0.0, dropTau = 0.02; ///< hertz above that at the stroke
    double tau = 0.15;
    double second = 0.0, ratio = 1.59; ///< a further partial
};

struct DrumNoise {
    double level = 0.0, hz = 2000.0, q = 0.7, tau = 0.08; ///< in a band
    double hiss = 0.0;                                    ///< what lies above that
    double attack = 0.0006;
    int hands = 1; ///< that clap one after the other
};

/// Partials without harmony.
struct DrumMetal {
    double level = 0.0, low = 2600.0, high = 15000.0, tau = 0.3;
};

struct DrumVoice {
    const char* name;
    DrumPlace place = {};
    DrumBody body = {};
    DrumNoise noise = {};
    DrumMetal metal = {};
    double drive = 0.0; ///< into saturation
    int coarse = 0;     ///< levels of its waveform to each side, 0 all
    double seconds = 0.5;
};

/// The first five are kick, snare, clap or its like, closed and open hat, as in the built-in kit:
/// a pattern plays on each.
struct Kit {
    const char* name;
    std::vector<DrumVoice> voices;
};

const std::vector<Kit>& kits();

/// What it sounds like: one channel at 44100 Hz, within -1 to 1.
std::vector<float> synthesize(const DrumVoice& voice);

/// Gives a drum track without sounds that kit. Interface thread, the graph held or nothing running.
void takeKit(CSeq* seq, CTrack* track, const Kit& kit);

} // namespace presets
