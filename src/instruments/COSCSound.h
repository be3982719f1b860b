#pragma once

#include "instruments/CSound.h"

/// Two operators on a sine table: a modulator that feeds back on itself moves the phase of a
/// carrier that feeds back on itself; both go through a quadratic shaper. Left and right are a pair
/// each, which `detune`, `phase` and `phase2` set apart.
class COSCSound : public CSound {
public:
    static constexpr int maxPmMul = 32;
    static constexpr float ownGain = 0.6f; ///< of its volume, before it is modulated

    Stored<float> feed1{0.0f};  ///< feedback of the carrier; 0 to 1 as all here unless told
    Stored<float> detune{0.0f}; ///< 1: half a semitone either way
    Stored<float> phase{0.0f};  ///< start of the right side, half cycles
    Stored<float> width{0.0f};  ///< 0 both channels get both pairs, 1 each its own
    Stored<float> phaseMod{0.0f};
    Stored<float> coarse2{0.0f}; ///< modulator above the carrier, semitones, -48 to 48
    Stored<float> phase2{0.0f};  ///< start of the right modulator, half cycles
    Stored<float> feed2{0.0f};   ///< feedback of the modulator
    Stored<float> oscRing{0.0f}; ///< 0 the inverted sine, 1 its square
    Stored<float> modRing{0.0f};
    Stored<int> pmMul{1};       ///< multiplies `phaseMod`, 1 to 32
    Stored<float> oscInv{1.0f}; ///< +1 or -1: sign of the right pair

    COSCSound(CLayer* owner, CQV* host);

    void process(float* left, float* right, CVoice* voice, int frames) override;
    void processVoices(CVoice** voices, int count, float* left, float* right, int frames) override;
    void startVoice(CVoice* voice) override;
    Stored<float>* target(int number) override;
};
