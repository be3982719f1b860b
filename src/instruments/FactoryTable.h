#pragma once

#include "instruments/FactoryPrograms.h"
#include "instruments/Modulators.h"

#include <span>

// The factory programs as data. Times are milliseconds; what a row leaves out has the default of a
// new sound.

namespace factory {

struct Env {
    float attack = 0.0f, decay = 0.0f, sustain = 1.0f, release = 50.0f;
    float initial = 0.0f, attackCurve = 0.0f, decayCurve = 0.0f;
};

/// Of the volume by the velocity: 19 dB from 20 to 127.
constexpr float usualVelocity = 0.78f;

/// The operators: see COSCSound.
struct Osc {
    float feed = 0.0f;
    float phaseMod = 0.0f;
    int times = 1;          ///< multiplies `phaseMod`
    float modCoarse = 0.0f; ///< semitones
    float modFeed = 0.0f;
    float ring = 0.0f, modRing = 0.0f;
    float detune = 0.0f, width = 0.0f;
    float phase = 0.0f, modPhase = 0.0f;
    bool inverted = false;
};

struct Lfo {
    int target = targetNone;
    float amount = 0.0f; ///< semitones on the pitch
    float hz = 6.0f;
    int wave = 1; ///< LfoWave, the triangle
    int delay = 0;
    int restart = restartPoly;
    int beatDiv = 0; ///< above 0: that many cycles a beat, locked to the tempo
};

/// A further envelope and what it moves. Its release of 5000 ms holds it after the note.
struct ModEnv {
    int target = targetNone;
    float amount = 0.0f;
    Env env = {};
};

struct Chorus {
    float wet = 0.0f, dry = 0.7f; ///< wet 0: off
    float delay = 20.0f, depth = 0.1f, hz = 0.6f;
};

struct Phaser {
    float wet = 0.0f; ///< 0: off
    float hz = 0.2f, feedback = 0.5f, low = 300.0f, high = 4000.0f, phase = 60.0f;
};

/// One sound of a program.
struct Patch {
    const char* name = "Tone"; ///< names the knob of its level
    float volume = 1.0f, pan = 0.0f;
    Osc osc = {};
    float coarse = 0.0f, fine = 0.0f;
    int filter = 0; ///< SoundFilter
    float cutoff = 1.0f, q = 0.0f;
    bool dist = false, mono = false;
    int glide = 0;
    Env amp = {};
    Env filterEnv = {.release = 5000.0f};
    ModEnv mod = {}, mod2 = {};
    Lfo lfos[lfoCount] = {};
    float velVolume = usualVelocity, velCutoff = 0.0f, velPhaseMod = 0.0f, velFeed = 0.0f;
    float reverb = 0.0f, delay = 0.0f; ///< send levels
    Chorus chorus = {};
    Phaser phaser = {};
    int lowKey = 0, hiKey = 127, lowVel = 0, hiVel = 127, group = 0;
    int bend = 12; ///< semitones
};

/// The echo of a program in beats, `mul` / `div` on each side.
struct Echo {
    float feedback = 0.0f; ///< 0: off
    int mulLeft = 3, divLeft = 4, mulRight = 1, divRight = 1;
};

struct Program {
    const char* name;
    const char* family; ///< its category
    const char* words;  ///< to look for it by
    std::span<const Patch> patches;
    float level = 1.0f; ///< of all volumes: makes the programs alike in loudness
    int reverbMs = 2000;
    Echo echo = {};
};

extern const Program programs[factoryCount];

/// A new program from a row, owned by the caller.
CSynthProg* buildProgram(CQV* host, CSampler* sampler, const Program& row);

} // namespace factory
