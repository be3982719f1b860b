#pragma once

#include <vector>

class CMIDIPart;
class CPart;
class CSampler;
class CTrack;
class CUndo;

/// What a file of MIDI tells about the mix of one track, by its controllers: volume (7), expression
/// (11), pan (10), sends to reverb (91) and chorus (93), and how far a bend goes. Values are those
/// of strips: faders of 0 to 1, pan of -1 to 1.
struct ChannelMix {
    /// From this tick of the part on.
    struct Point {
        int tick;
        float value;
    };
    /// A part and what moves in it.
    struct Moves {
        CPart* part;
        std::vector<Point> faders, pans;
    };

    float fader, pan;       ///< at the first note
    float reverb, chorus;   ///< sends, 0 to 1
    int bend = -1;          ///< semitones, -1 untold
    bool tellsTone = false; ///< it has brightness or resonance, relative to its own sound
    std::vector<Moves> moves;

    /// Reads the parts of a track, in their order.
    explicit ChannelMix(const std::vector<CPart*>& parts);

    /// Sets the strip of the instrument of a track, times `headroom`, and where something moves
    /// adds a lane that does so, as part of the step if there is one. Interface thread.
    void apply(CSampler* instrument, CTrack* track, float headroom, CUndo* undo) const;
};
