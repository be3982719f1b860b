#pragma once

#include "base/Atomic.h"
#include "common/fx/amp/Voicing.h"

/// What the signal path takes from the knobs.
struct AmpSettings {
    double drive, shelf, volume; ///< factors; of `shelf` the highs are added to the signal
    ToneStackCoeffs tone;
};

/// The knobs of one amplifier, and the settings on their way to what the knobs say.
///
/// Time is cut into pieces of `piece` frames, whatever the blocks. At the start of each the knobs
/// make a step towards their targets, and the settings go there in a straight line, so that neither
/// leaves a trace in the sound.
class AmpKnobs {
public:
    static constexpr int piece = 32;

    Shared<float> targets[ampKnobs]; ///< 0 to 1; any thread

    explicit AmpKnobs(const AmpVoicing& parts);
    /// Also does what `jump` does.
    void setRate(double hz);
    /// The next piece starts with all knobs at their targets.
    void jump() { started = false; }
    /// Audio thread, at the start of a piece.
    void startPiece();
    bool still() const; ///< nothing is on its way

    AmpSettings start, step; ///< before this piece, and what each of its frames adds

private:
    bool turn();
    AmpSettings work() const;

    const AmpVoicing& voicing;
    double rate = 44100.0, pull = 0.0;
    double knobs[ampKnobs] = {};
    bool started = false, moving = false;
    AmpSettings end; ///< after this piece
};
