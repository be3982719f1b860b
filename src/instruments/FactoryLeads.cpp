#include "instruments/FactoryShapes.h"

namespace factory {

namespace {

// A stab: all of it in the first half second.
constexpr Patch eurosynthRows[] = {
    {.name = "Saws",
     .volume = 0.9f,
     .osc = brightSaw(0.4f, 0.9f),
     .filter = filterHigh,
     .cutoff = clean,
     .amp = {.attack = 1.5f, .decay = 520, .sustain = 0.22f, .release = 180, .decayCurve = 0.1f},
     .mod = {targetFeed1, 0.2f, {.decay = 260, .sustain = 0.4f, .release = hold}},
     .velFeed = sawVelocity,
     .reverb = 0.22f,
     .delay = 0.22f},
    {.name = "Octave",
     .volume = 0.8f,
     .osc = edge(1.0f, 0.3f, 1.0f, 0.5f),
     .coarse = 12,
     .filter = filterHigh,
     .cutoff = clean,
     .amp = {.attack = 1.5f, .decay = 360, .sustain = 0.2f, .release = 160},
     .velVolume = 0.85f,
     .velPhaseMod = 0.3f,
     .reverb = 0.25f,
     .delay = 0.25f},
    {.name = "Ground",
     .volume = 0.6f,
     .osc = hollow(0.3f),
     .coarse = -12,
     .amp = {.attack = 1.5f, .decay = 500, .sustain = 0.3f, .release = 120},
     .velVolume = 0.7f}};

/// The square of one part of the keyboard; the filter opens further for high notes.
constexpr Patch resonantSquare(int lowKey, int hiKey, float volume, float cutoff, float q) {
    Patch p = {.name = "Square",
               .osc = hollow(0.62f, 0.06f, 0.5f),
               .mono = true,
               .glide = 60,
               .velCutoff = 0.3f,
               .velPhaseMod = 0.2f,
               .reverb = 0.15f,
               .delay = 0.3f};
    p.volume = volume;
    p.cutoff = cutoff;
    p.q = q;
    p.amp = {.attack = 3, .decay = 900, .sustain = 0.85f, .release = 160};
    p.filterEnv = {
        .decay = 1600, .sustain = 0.55f, .release = hold, .initial = 0.9f, .decayCurve = 0.1f};
    p.lfos[0] = vibrato(0.15f, 5.4f, 450);
    p.chorus = {.wet = 0.35f, .delay = 9, .depth = 0.2f, .hz = 0.4f};
    p.lowKey = lowKey;
    p.hiKey = hiKey;
    return p;
}

constexpr Patch resonantLeadRows[] = {
    resonantSquare(0, 41, 1.0f, 0.72f, 0.85f),
    resonantSquare(42, 66, 0.76f, 0.8f, 0.82f),
    resonantSquare(67, 78, 0.95f, 0.92f, 0.8f),
    resonantSquare(79, 127, 0.7f, 1.0f, 0.7f),
    {.name = "Ground",
     .volume = 0.5f,
     .osc = {.phaseMod = 0.3f},
     .mono = true,
     .glide = 60,
     .amp = {.attack = 3, .decay = 900, .sustain = 0.8f, .release = 160},
     .lfos = {vibrato(0.15f, 5.4f, 450)},
     .velVolume = 0.7f}};

constexpr Patch amplifiedRows[] = {
    {.name = "Drive",
     .volume = 0.8f,
     .osc = hollow(0.85f, 0.08f, 0.5f),
     .filter = filterHigh,
     .cutoff = 0.12f,
     .dist = true,
     .amp = {.attack = 2, .decay = 3000, .sustain = 0.75f, .release = 180},
     .lfos = {vibrato(0.12f, 5.6f, 700)},
     .velPhaseMod = 0.4f,
     .reverb = 0.12f,
     .delay = 0.12f},
    {.name = "Low string",
     .volume = 0.8f,
     .osc = pulsePair(0.0f, 1.0f, fullSaw, 0.45f),
     .coarse = -12,
     .filter = filterBand,
     .cutoff = 0.34f,
     .q = 0.6f,
     .dist = true,
     .amp = {.attack = 2, .decay = 3000, .sustain = 0.7f, .release = 180},
     .velCutoff = 0.3f},
    {.name = "Pick",
     .volume = 0.5f,
     .osc = noise,
     .filter = filterBand,
     .cutoff = 0.55f,
     .q = 0.5f,
     .amp = {.decay = 45, .sustain = 0.0f, .release = 30, .decayCurve = 0.3f},
     .velVolume = 0.95f}};

// One oscillator is bent through the turns of another and comes back.
constexpr Patch leadOnRows[] = {
    {.name = "Sync",
     .volume = 0.9f,
     .osc = {.phaseMod = 0.9f, .modCoarse = 7.02f, .modFeed = 0.8f, .detune = 0.1f, .width = 0.7f},
     .filter = filterHigh,
     .cutoff = clean,
     .mono = true,
     .glide = 35,
     .amp = {.attack = 2, .decay = 400, .sustain = 0.85f, .release = 110},
     .mod = {targetPhaseMod,
             0.8f,
             {.attack = 380, .decay = 1500, .sustain = 0.25f, .release = hold, .initial = 0.15f}},
     .lfos = {vibrato(0.22f, 5.8f, 300)},
     .velPhaseMod = 0.25f,
     .reverb = 0.14f,
     .delay = 0.32f},
    {.name = "Top",
     .volume = 0.5f,
     .osc = hollow(0.8f, 0.16f, 0.9f),
     .coarse = 19,
     .filter = filterHigh,
     .cutoff = 0.55f,
     .mono = true,
     .glide = 35,
     .amp = {.attack = 2, .decay = 400, .sustain = 0.7f, .release = 110},
     .lfos = {vibrato(0.22f, 5.8f, 300)},
     .velPhaseMod = 0.2f,
     .delay = 0.2f}};

constexpr Patch arpeggioRows[] = {
    {.name = "Pluck",
     .volume = 0.9f,
     .osc = hollow(0.74f, 0.12f, 0.8f),
     .filter = filterHigh,
     .cutoff = clean,
     .amp = {.attack = 1, .decay = 420, .sustain = 0.05f, .release = 160, .decayCurve = 0.15f},
     .mod = {targetPhaseMod, 0.6f, {.decay = 220, .sustain = 0.2f, .release = hold}},
     .velPhaseMod = 0.3f,
     .reverb = 0.15f,
     .delay = 0.5f},
    {.name = "Spark",
     .volume = 0.35f,
     .osc = {.phaseMod = 0.5f, .modCoarse = 31, .width = 0.6f},
     .coarse = 24,
     .amp = {.decay = 70, .sustain = 0.0f, .release = 60},
     .velVolume = 0.95f,
     .delay = 0.4f}};

constexpr Patch detuneRows[] = {
    {.name = "Flat and sharp",
     .volume = 0.9f,
     .osc = brightSaw(0.75f, 1.0f),
     .filter = filterHigh,
     .cutoff = clean,
     .amp = {.attack = 5, .decay = 1200, .sustain = 0.8f, .release = 240},
     .velFeed = sawVelocity,
     .reverb = 0.18f},
    {.name = "Further apart",
     .volume = 0.7f,
     .osc = edge(1.0f, 0.5f, 0.9f, 0.5f),
     .coarse = -12,
     .filter = filterHigh,
     .cutoff = clean,
     .amp = {.attack = 5, .decay = 1200, .sustain = 0.8f, .release = 240},
     .velVolume = 0.85f,
     .velPhaseMod = 0.35f},
    {.name = "Top",
     .volume = 0.78f,
     .osc = edge(1.0f, 0.6f, 1.0f, 0.3f),
     .filter = filterHigh,
     .cutoff = 0.2f,
     .amp = {.attack = 5, .decay = 1200, .sustain = 0.8f, .release = 240},
     .velVolume = 0.85f,
     .velPhaseMod = 0.3f}};

constexpr Patch massiveRows[] = {
    {.name = "Unison",
     .volume = 0.75f,
     .osc = brightSaw(0.5f, 1.0f),
     .filter = filterHigh,
     .cutoff = clean,
     .amp = {.attack = 3, .decay = 1500, .sustain = 0.85f, .release = 260},
     .velFeed = sawVelocity,
     .reverb = 0.2f,
     .chorus = {.wet = 0.45f, .delay = 14, .depth = 0.25f, .hz = 0.8f}},
    {.name = "Sub",
     .volume = 1.0f,
     .osc = pulsePair(0.0f, 1.0f, fullSaw, 0.45f),
     .coarse = -24,
     .q = 0.3f,
     .dist = true,
     .amp = {.attack = 3, .decay = 1500, .sustain = 0.9f, .release = 240},
     .lfos = {{}, {}, {}, {.target = targetCutoff, .amount = 0.3f, .hz = 0.35f}},
     .velCutoff = 0.3f},
    {.name = "Top",
     .volume = 0.6f,
     .osc = edge(1.0f, 0.35f, 1.0f, 0.5f),
     .filter = filterHigh,
     .cutoff = 0.2f,
     .amp = {.attack = 10, .decay = 900, .sustain = 0.75f, .release = 260},
     .velPhaseMod = 0.3f,
     .reverb = 0.2f}};

constexpr Patch synthRows[] = {
    {.name = "Pulse",
     .volume = 1.0f,
     .osc = pulsePair(0.3f, 1.0f, fullSaw, 0.45f),
     .cutoff = 0.99f,
     .q = 0.4f,
     .amp = {.attack = 2, .decay = 800, .sustain = 0.7f, .release = 180},
     .filterEnv = {.decay = 480, .sustain = 0.48f, .release = 250, .decayCurve = 0.2f},
     .velCutoff = 0.35f,
     .reverb = 0.12f,
     .chorus = {.wet = 0.55f, .delay = 11, .depth = 0.25f, .hz = 0.5f}},
    {.name = "Fourth below",
     .volume = 0.85f,
     .osc = hollow(0.85f, 0.2f, 0.8f),
     .coarse = -5,
     .filter = filterHigh,
     .cutoff = clean,
     .amp = {.attack = 2, .decay = 380, .sustain = 0.42f, .release = 180},
     .velVolume = 0.85f,
     .velPhaseMod = 0.3f,
     .reverb = 0.12f}};

constexpr Patch tranceRows[] = {
    {.name = "Saws",
     .volume = 0.8f,
     .osc = brightSaw(0.32f, 1.0f),
     .filter = filterHigh,
     .cutoff = clean,
     .amp = {.attack = 4, .decay = 900, .sustain = 0.85f, .release = 320},
     .velFeed = sawVelocity,
     .reverb = 0.35f,
     .delay = 0.3f},
    {.name = "Octaves",
     .volume = 0.95f,
     .osc = brightSaw(0.45f, 1.0f, 0.4f),
     .coarse = 12,
     .filter = filterHigh,
     .cutoff = clean,
     .amp = {.attack = 4, .decay = 900, .sustain = 0.85f, .release = 320},
     .velFeed = sawVelocity,
     .reverb = 0.35f,
     .delay = 0.3f},
    {.name = "Air",
     .volume = 0.42f,
     .osc = noise,
     .filter = filterHigh,
     .cutoff = 0.85f,
     .amp = {.attack = 4, .decay = 700, .sustain = 0.8f, .release = 320},
     .velVolume = 0.85f,
     .reverb = 0.35f}};

/// A narrow pulse on one side, for one part of the keyboard.
constexpr Patch pulseSide(const char* name, float side, int lowKey, int hiKey, float cutoff) {
    Patch p = {
        .name = name, .filter = filterHigh, .velVolume = 0.66f, .velFeed = 0.4f, .reverb = 0.12f};
    p.pan = 0.6f * side;
    p.fine = 0.03f * side;
    p.cutoff = cutoff;
    p.osc = pulsePair(0.0f, 0.1f, fullSaw, 0.45f);
    p.amp = {.attack = 3, .decay = 900, .sustain = 0.85f, .release = 160};
    p.lowKey = lowKey;
    p.hiKey = hiKey;
    return p;
}

constexpr Patch pulseWaveRows[] = {
    pulseSide("Left", -1, 0, 47, 0.12f), pulseSide("Right", 1, 0, 47, 0.12f),
    pulseSide("Left", -1, 48, 127, 0.3f), pulseSide("Right", 1, 48, 127, 0.3f)};

constexpr Patch analogRows[] = {
    {.name = "Two saws",
     .volume = 1.0f,
     .osc = pulsePair(0.34f, 0.3f, fullSaw, 0.3f),
     .cutoff = 0.8f,
     .q = 0.65f,
     .amp = {.attack = 20, .decay = 900, .sustain = 0.85f, .release = 280},
     .filterEnv = {.attack = 450, .decay = 1100, .sustain = 0.5f, .release = 400, .initial = 0.1f},
     .lfos = {{.target = targetPitch,
               .amount = 0.06f,
               .hz = 0.8f,
               .wave = lfoSin,
               .restart = restartFree}},
     .velCutoff = 0.45f,
     .reverb = 0.12f,
     .chorus = {.wet = 0.4f, .delay = 15, .depth = 0.1f, .hz = 0.3f}},
    {.name = "Octave",
     .volume = 0.9f,
     .osc = hollow(0.4f, 0.1f, 0.6f),
     .coarse = 12,
     .amp = {.attack = 20, .decay = 1300, .sustain = 0.8f, .release = 280},
     .filterEnv = {.attack = 260, .decay = 900, .sustain = 0.55f, .release = 400, .initial = 0.3f},
     .velCutoff = 0.4f}};

constexpr Patch randomStepsRows[] = {
    {.name = "Steps",
     .volume = 1.0f,
     .osc = pulsePair(0.2f, 0.5f, fullSaw, 0.45f),
     .q = 0.6f,
     .amp = {.attack = 3, .decay = 900, .sustain = 0.85f, .release = 280},
     .lfos = {{},
              {},
              {.target = targetPan, .amount = 0.7f, .wave = lfoRandom, .beatDiv = 4},
              {.target = targetCutoff, .amount = 0.6f, .wave = lfoRandom, .beatDiv = 4}},
     .velCutoff = 0.35f,
     .velPhaseMod = 0.3f,
     .reverb = 0.15f,
     .delay = 0.3f},
    {.name = "Ground",
     .volume = 0.7f,
     .osc = {.phaseMod = 0.2f, .detune = 0.1f, .width = 0.8f},
     .coarse = -12,
     .amp = {.attack = 3, .decay = 900, .sustain = 0.75f, .release = 280},
     .velPhaseMod = 0.4f}};

// A reed: odd partials, and the breath behind them.
constexpr Patch melodyRows[] = {
    {.name = "Reed",
     .volume = 0.85f,
     .osc = {.phaseMod = 0.42f, .modCoarse = 12, .modFeed = 0.6f, .detune = 0.06f, .width = 0.4f},
     .amp = {.attack = 18, .decay = 500, .sustain = 0.8f, .release = 140},
     .mod = {targetPhaseMod, 0.4f, {.attack = 60, .decay = 600, .sustain = 0.7f, .release = hold}},
     .lfos = {vibrato(0.14f, 5.3f, 350)},
     .velPhaseMod = 0.3f,
     .reverb = 0.2f,
     .delay = 0.2f,
     .bend = 2},
    {.name = "Breath",
     .volume = 0.22f,
     .osc = noise,
     .filter = filterBand,
     .cutoff = 0.6f,
     .q = 0.5f,
     .amp = {.attack = 15, .decay = 160, .sustain = 0.3f, .release = 90},
     .reverb = 0.2f}};

constexpr Patch pureSineRows[] = {{.name = "Sine",
                                   .osc = {.phaseMod = 0.26f},
                                   .amp = {.attack = 8, .sustain = 1.0f, .release = 140},
                                   .velPhaseMod = 0.95f,
                                   .reverb = 0.14f}};

} // namespace

const Patches eurosynth = eurosynthRows, resonantLead = resonantLeadRows, amplified = amplifiedRows,
              leadOn = leadOnRows, arpeggio = arpeggioRows, detune = detuneRows,
              massive = massiveRows, synth = synthRows, trance = tranceRows,
              pulseWave = pulseWaveRows, analog = analogRows, randomSteps = randomStepsRows,
              melody = melodyRows, pureSine = pureSineRows;

} // namespace factory
