#include "instruments/FactoryShapes.h"

namespace factory {

namespace {

constexpr Patch digitalPluckRows[] = {
    {.name = "Glass",
     .volume = 0.8f,
     .osc = {.phaseMod = 0.72f, .modCoarse = 24, .modFeed = 0.4f, .detune = 0.1f, .width = 0.8f},
     .amp = {.attack = 1, .decay = 1600, .sustain = 0.0f, .release = 420, .decayCurve = 0.2f},
     .mod = {targetPhaseMod, 0.8f, {.decay = 1100, .sustain = 0.0f, .release = hold}},
     .velPhaseMod = 0.3f,
     .reverb = 0.18f,
     .delay = 0.35f},
    {.name = "Ping",
     .volume = 0.45f,
     .osc = {.phaseMod = 0.5f, .modCoarse = 19, .width = 0.6f},
     .coarse = 24,
     .amp = {.decay = 260, .sustain = 0.0f, .release = 150, .decayCurve = 0.3f},
     .velVolume = 0.9f,
     .delay = 0.2f}};

constexpr Patch digitalRows[] = {
    {.name = "Bar",
     .volume = 0.85f,
     .osc = {.phaseMod = 0.55f, .detune = 0.1f, .width = 0.5f},
     .amp = {.attack = 1, .decay = 2600, .sustain = 0.35f, .release = 260, .decayCurve = 0.15f},
     .mod = {targetPhaseMod, 0.5f, {.decay = 1200, .sustain = 0.3f, .release = hold}},
     .velVolume = 0.88f,
     .velPhaseMod = 0.5f,
     .reverb = 0.15f,
     .chorus = {.wet = 0.35f, .delay = 16, .depth = 0.12f, .hz = 0.7f}},
    // Fourteen times as high.
    {.name = "Tine",
     .volume = 0.85f,
     .osc = {.phaseMod = 0.5f, .modCoarse = 45.69f, .width = 0.5f},
     .amp = {.decay = 800, .sustain = 0.0f, .release = 200, .decayCurve = 0.4f},
     .velVolume = 0.85f,
     .velPhaseMod = 0.6f,
     .reverb = 0.15f}};

constexpr Patch klangRows[] = {
    {.name = "Bell",
     .volume = 0.85f,
     .osc = {.phaseMod = 0.72f, .modCoarse = 21.35f, .detune = 0.08f, .width = 0.9f},
     .amp = {.attack = 1, .decay = 3600, .sustain = 0.0f, .release = 1300, .decayCurve = 0.35f},
     .mod = {targetPhaseMod,
             0.75f,
             {.decay = 2200, .sustain = 0.1f, .release = hold, .decayCurve = 0.2f}},
     .velPhaseMod = 0.25f,
     .reverb = 0.35f},
    {.name = "Strike",
     .volume = 0.45f,
     .osc = {.phaseMod = 0.55f, .modCoarse = 29.6f, .modRing = 0.5f, .width = 0.7f},
     .coarse = 12,
     .amp = {.attack = 1, .decay = 900, .sustain = 0.0f, .release = 800, .decayCurve = 0.4f},
     .velVolume = 0.9f,
     .reverb = 0.35f}};

constexpr Env pianoTone(float decay) {
    return {.attack = 1, .decay = decay, .sustain = 0.0f, .release = 190, .decayCurve = 0.35f};
}

/// The strings of one half of the keyboard: low ones ring longer and have more partials.
constexpr Patch pianoStrings(int lowKey, int hiKey, float decay, float depth) {
    Patch p = {.name = "Strings",
               .volume = 0.85f,
               .filter = filterHigh,
               .cutoff = clean,
               .velPhaseMod = 0.25f,
               .velFeed = 0.4f,
               .reverb = 0.14f,
               .bend = 2};
    p.osc = {.feed = 0.86f, .phaseMod = depth, .detune = 0.2f, .width = 0.5f};
    p.amp = pianoTone(decay);
    p.mod = {targetPhaseMod,
             0.4f,
             {.decay = 1200, .sustain = 0.35f, .release = hold, .decayCurve = 0.3f}};
    p.mod2 = {
        targetFeed1, 0.5f, {.decay = 1600, .sustain = 0.3f, .release = hold, .decayCurve = 0.2f}};
    p.lowKey = lowKey;
    p.hiKey = hiKey;
    return p;
}

constexpr Patch oldPianoRows[] = {
    pianoStrings(0, 59, 3600, 0.5f),
    pianoStrings(60, 127, 2400, 0.4f),
    // The other string of each key has gone flat.
    {.name = "Flat string",
     .volume = 0.6f,
     .osc = {.phaseMod = 0.7f, .modCoarse = 12, .modFeed = 0.7f, .detune = 0.4f, .width = 0.7f},
     .coarse = 12,
     .amp = {.attack = 1, .decay = 1100, .sustain = 0.0f, .release = 160, .decayCurve = 0.35f},
     .velVolume = 0.85f,
     .velPhaseMod = 0.4f,
     .reverb = 0.14f,
     .bend = 2},
    {.name = "Hammer",
     .volume = 0.6f,
     .osc = noise,
     .filter = filterBand,
     .cutoff = 0.55f,
     .q = 0.2f,
     .amp = {.decay = 50, .sustain = 0.0f, .release = 30, .decayCurve = 0.4f},
     .velVolume = 1.0f,
     .reverb = 0.1f}};

/// The lips open: partials come one after the other. The bell hardly sounds below its cutoff.
constexpr Patch brass(int lowKey, int hiKey, float cutoff) {
    Patch p = {.name = "Brass",
               .volume = 0.85f,
               .filter = filterHigh,
               .velPhaseMod = 0.2f,
               .velFeed = 0.4f,
               .reverb = 0.2f,
               .bend = 2};
    p.osc = {.feed = 0.86f, .phaseMod = 0.5f, .detune = 0.05f, .width = 0.6f};
    p.cutoff = cutoff;
    p.amp = {.attack = 38, .decay = 300, .sustain = 0.88f, .release = 90, .attackCurve = -0.1f};
    p.mod = {targetFeed1,
             0.7f,
             {.attack = 75, .decay = 350, .sustain = 0.86f, .release = hold, .initial = 0.1f}};
    p.mod2 = {
        targetPhaseMod, 0.5f, {.attack = 60, .decay = 300, .sustain = 0.85f, .release = hold}};
    p.lfos[0] = vibrato(0.18f, 5.2f, 600);
    p.lowKey = lowKey;
    p.hiKey = hiKey;
    return p;
}

constexpr Patch trumpetRows[] = {
    brass(0, 47, 0.12f),
    brass(48, 127, 0.13f),
    {.name = "Breath",
     .volume = 0.3f,
     .osc = noise,
     .filter = filterBand,
     .cutoff = 0.6f,
     .q = 0.3f,
     .amp = {.attack = 10, .decay = 90, .sustain = 0.15f, .release = 60},
     .reverb = 0.15f}};

constexpr Patch fluteRows[] = {
    {.name = "Tube",
     .volume = 0.85f,
     .osc = {.phaseMod = 0.46f, .detune = 0.03f, .width = 0.5f},
     .amp = {.attack = 85, .decay = 500, .sustain = 0.9f, .release = 120, .attackCurve = 0.1f},
     .mod = {targetPhaseMod, 0.4f, {.attack = 120, .decay = 500, .sustain = 0.7f, .release = hold}},
     .lfos = {vibrato(0.1f, 5.0f, 400),
              {.target = targetVolume, .amount = 0.12f, .hz = 5.0f, .wave = lfoSin, .delay = 400}},
     .velPhaseMod = 0.35f,
     .reverb = 0.3f,
     .bend = 2},
    {.name = "Air",
     .volume = 0.42f,
     .osc = noise,
     .filter = filterBand,
     .cutoff = 0.55f,
     .q = 0.7f,
     .amp = {.attack = 30, .decay = 240, .sustain = 0.4f, .release = 90},
     .reverb = 0.3f},
    // The tongue, an octave and a fifth up.
    {.name = "Chiff",
     .volume = 0.35f,
     .osc = {.phaseMod = 0.4f, .modCoarse = 7.3f, .modFeed = 0.6f},
     .coarse = 19,
     .amp = {.attack = 8, .decay = 110, .sustain = 0.0f, .release = 60},
     .velVolume = 0.9f,
     .reverb = 0.3f}};

/// The string of one part of the keyboard: the body hardly sounds below its cutoff, so that the
/// second and third partials are the strongest.
constexpr Patch violinString(int lowKey, int hiKey, float cutoff) {
    Patch p = {.name = "String",
               .volume = 0.8f,
               .osc = brightSaw(0.07f, 0.5f),
               .filter = filterHigh,
               .velFeed = sawVelocity,
               .reverb = 0.32f,
               .bend = 2};
    p.cutoff = cutoff;
    p.amp = {.attack = 90, .decay = 600, .sustain = 0.88f, .release = 170, .attackCurve = 0.1f};
    p.mod = {targetFeed1, 0.3f, {.attack = 150, .decay = 700, .sustain = 0.86f, .release = hold}};
    p.lfos[0] = vibrato(0.26f, 5.7f, 280);
    p.lfos[1] = {.target = targetVolume, .amount = 0.15f, .hz = 5.7f, .wave = lfoSin, .delay = 280};
    p.lowKey = lowKey;
    p.hiKey = hiKey;
    return p;
}

constexpr Patch violinaRows[] = {
    violinString(0, 47, 0.1f),
    violinString(48, 127, 0.17f),
    {.name = "Box",
     .volume = 0.6f,
     .osc = plainSaw(0.04f, 0.8f),
     .filter = filterBand,
     .cutoff = 0.36f,
     .q = 0.3f,
     .amp = {.attack = 110, .sustain = 1.0f, .release = 150},
     .lfos = {vibrato(0.26f, 5.7f, 280)},
     .reverb = 0.25f,
     .bend = 2},
    {.name = "Bow",
     .volume = 0.36f,
     .osc = noise,
     .filter = filterHigh,
     .cutoff = 0.7f,
     .amp = {.attack = 40, .decay = 160, .sustain = 0.35f, .release = 80},
     .reverb = 0.2f}};

} // namespace

const Patches digitalPluck = digitalPluckRows, digital = digitalRows, klang = klangRows,
              oldPiano = oldPianoRows, trumpet = trumpetRows, flute = fluteRows,
              violina = violinaRows;

} // namespace factory
