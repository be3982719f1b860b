#pragma once

#include "common/fx/amp/Cabinet.h"
#include "common/fx/amp/GainStage.h"
#include "common/fx/amp/ToneStack.h"

/// What the knobs of all amplifiers do.
enum AmpKnob { knobDrive, knobBass, knobMid, knobTreble, knobShelf, knobVolume, ampKnobs };

/// All that makes one amplifier sound unlike another.
struct AmpVoicing {
    static constexpr int maxStages = 3;

    int parameters;
    AmpKnob knobs[ampKnobs]; ///< of the parameters, by index
    float rest[ampKnobs];    ///< where a knob stands at first, or always if it is no parameter

    double inputHz;             ///< less bass than the guitar has, so that chords stay clear
    double driveLow, driveHigh; ///< gain before the first stage; the knob goes through it in dB
    int stages;
    StageParts stage[maxStages];
    bool toneFirst; ///< the tone stack stands before the stages, not behind
    ToneStackParts tone;
    double shelfHz, shelfDb; ///< high shelf of the power stage: its lift with the knob at 1
    CabinetSection cabinet[Cabinet::sections];
    double level; ///< makes up for the tone stack and evens out the loudness; volume is squared
};

/// By `AmpType`.
extern const AmpVoicing ampVoicings[];
