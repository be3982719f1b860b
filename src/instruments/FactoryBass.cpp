#include "instruments/FactoryShapes.h"

namespace factory {

namespace {

constexpr Patch danceBassRows[] = {
    {.osc = {.feed = 1.0f},
     .cutoff = 0.9f,
     .filterEnv = {.decay = 112.5f, .sustain = 0.24f, .release = hold, .decayCurve = 0.2f},
     .velVolume = 0.0f}};

constexpr Patch eightiesBassRows[] = {
    {.name = "String",
     .volume = 0.85f,
     .osc = {.phaseMod = 0.9f, .modFeed = 0.45f, .detune = 0.05f, .width = 0.6f},
     .coarse = -12,
     .filter = filterHigh,
     .cutoff = clean,
     .amp = {.attack = 1, .decay = 1600, .sustain = 0.45f, .release = 90},
     .mod = {targetPhaseMod,
             0.45f,
             {.decay = 420, .sustain = 0.35f, .release = hold, .decayCurve = 0.2f}},
     .velPhaseMod = 0.25f,
     .chorus = {.wet = 0.35f, .delay = 12, .depth = 0.08f, .hz = 0.4f}},
    {.name = "Slap",
     .volume = 0.7f,
     .osc = {.phaseMod = 0.85f, .modCoarse = 19, .modFeed = 0.8f, .width = 0.5f},
     .coarse = 12,
     .filter = filterHigh,
     .cutoff = clean,
     .amp = {.decay = 150, .sustain = 0.0f, .release = 60},
     .velVolume = 0.9f,
     .velPhaseMod = 0.3f}};

constexpr Patch deepBassRows[] = {
    {.name = "Saws",
     .volume = 1.0f,
     .osc = pulsePair(0.22f, 0.35f, fullSaw, 0.45f),
     .coarse = -12,
     .cutoff = 0.75f,
     .q = 0.5f,
     .amp = {.attack = 4, .decay = 1400, .sustain = 0.85f, .release = 120},
     .filterEnv = {.decay = 900, .sustain = 0.55f, .release = hold},
     .velCutoff = 0.5f},
    {.name = "Ground",
     .volume = 0.75f,
     .osc = {.phaseMod = 0.3f},
     .coarse = -12,
     .amp = {.attack = 4, .decay = 1400, .sustain = 0.85f, .release = 120},
     .velPhaseMod = 0.4f},
    {.name = "Sides",
     .volume = 0.5f,
     .osc = plainSaw(0.3f, 1.0f),
     .coarse = -12,
     .filter = filterHigh,
     .cutoff = 0.15f,
     .amp = {.attack = 8, .decay = 500, .sustain = 0.55f, .release = 120},
     .velFeed = sawVelocity}};

constexpr Patch uprightBassRows[] = {
    {.name = "Body",
     .volume = 0.9f,
     .osc = {.phaseMod = 0.66f},
     .coarse = -12,
     .amp = {.attack = 3, .decay = 2200, .sustain = 0.0f, .release = 140, .decayCurve = 0.15f},
     .mod = {targetPhaseMod,
             0.75f,
             {.decay = 600, .sustain = 0.25f, .release = hold, .decayCurve = 0.3f}},
     .velPhaseMod = 0.3f,
     .reverb = 0.12f,
     .bend = 2},
    {.name = "String",
     .volume = 0.66f,
     .osc = {.phaseMod = 0.75f, .modCoarse = 12, .modFeed = 0.7f, .detune = 0.08f, .width = 0.9f},
     .filter = filterHigh,
     .cutoff = clean,
     .amp = {.attack = 2, .decay = 620, .sustain = 0.0f, .release = 120, .decayCurve = 0.2f},
     .mod = {targetPhaseMod, 0.6f, {.decay = 300, .sustain = 0.2f, .release = hold}},
     .velPhaseMod = 0.3f,
     .reverb = 0.12f,
     .hiKey = 83,
     .bend = 2},
    {.name = "Finger",
     .volume = 0.6f,
     .osc = noise,
     .filter = filterBand,
     .cutoff = 0.45f,
     .q = 0.45f,
     .amp = {.decay = 70, .sustain = 0.0f, .release = 40, .decayCurve = 0.4f},
     .velVolume = 0.95f,
     .reverb = 0.1f}};

constexpr Patch phaserBassRows[] = {
    {.name = "Saw",
     .volume = 0.8f,
     .osc = edge(0.92f, 0.14f, 0.5f),
     .coarse = -12,
     .filter = filterHigh,
     .cutoff = clean,
     .amp = {.attack = 2, .decay = 1200, .sustain = 0.75f, .release = 110},
     .mod = {targetPhaseMod, 0.4f, {.decay = 600, .sustain = 0.4f, .release = hold}},
     .velPhaseMod = 0.3f,
     .phaser =
         {.wet = 0.7f, .hz = 0.35f, .feedback = 0.35f, .low = 160, .high = 6000, .phase = 80}},
    {.name = "Ground",
     .volume = 0.8f,
     .osc = {.phaseMod = 0.4f},
     .coarse = -12,
     .amp = {.attack = 2, .decay = 1200, .sustain = 0.8f, .release = 110}}};

// Small speakers play its second and third partials.
constexpr Patch subRows[] = {{.name = "Sub",
                              .volume = 0.8f,
                              .coarse = -12,
                              .amp = {.attack = 6, .decay = 2500, .sustain = 0.9f, .release = 90}},
                             // Small speakers need more of them the lower the note is.
                             {.name = "Partials",
                              .volume = 0.75f,
                              .osc = {.phaseMod = 0.5f, .detune = 0.12f, .width = 1.0f},
                              .coarse = -12,
                              .amp = {.attack = 6, .decay = 1800, .sustain = 0.8f, .release = 90},
                              .velPhaseMod = 0.45f},
                             {.name = "Low partials",
                              .volume = 0.75f,
                              .osc = {.phaseMod = 0.62f},
                              .coarse = -12,
                              .amp = {.attack = 6, .decay = 1800, .sustain = 0.8f, .release = 90},
                              .velPhaseMod = 0.45f,
                              .hiKey = 42}};

} // namespace

const Patches danceBass = danceBassRows, eightiesBass = eightiesBassRows, deepBass = deepBassRows,
              uprightBass = uprightBassRows, phaserBass = phaserBassRows, sub = subRows;

} // namespace factory
