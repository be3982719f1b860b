#include "instruments/FactoryTable.h"

#include "instruments/CSound.h"

namespace factory {

namespace {

constexpr float hold = 5000.0f; ///< release of a modulating envelope that keeps its value

/// The brightest sawtooth that the feedback gives before it begins to alternate from sample to
/// sample: one radian.
constexpr float fullSaw = 0.89f;

/// A modulator far above the carrier, many cycles deep: noise.
constexpr Osc noise = {.phaseMod = 1.0f, .times = 32, .modCoarse = 31.7f, .modFeed = 1.0f};

constexpr Lfo vibrato(float semitones, float hz, int delayMs) {
    return {.target = targetPitch, .amount = semitones, .hz = hz, .wave = lfoSin, .delay = delayMs};
}

const Patch danceBass[] = {
    {.osc = {.feed = 1.0f},
     .cutoff = 0.9f,
     .filterEnv = {.decay = 112.5f, .sustain = 0.24f, .release = hold, .decayCurve = 0.2f}}};

const Patch eightiesBass[] = {
    // The slap: a short modulator at the carrier's own pitch.
    {.volume = 0.9f,
     .osc = {.feed = 0.25f, .phaseMod = 0.85f, .modFeed = 0.35f},
     .coarse = -12,
     .cutoff = 0.85f,
     .amp = {.decay = 900, .sustain = 0.68f, .release = 90},
     .mod = {targetPhaseMod,
             0.75f,
             {.decay = 260, .sustain = 0.15f, .release = hold, .decayCurve = 0.5f}},
     .velVolume = 0.5f,
     .velPhaseMod = 0.3f,
     .chorus = {.wet = 0.3f, .delay = 12, .depth = 0.08f, .hz = 0.4f}},
    {.volume = 0.45f,
     .osc = {.feed = 0.8f, .detune = 0.1f},
     .cutoff = 0.75f,
     .amp = {.decay = 300, .sustain = 0.2f, .release = 80},
     .filterEnv = {.decay = 180, .sustain = 0.3f, .release = hold},
     .velVolume = 0.5f}};

const Patch deepBass[] = {{.osc = {.feed = 0.85f},
                           .coarse = -12,
                           .cutoff = 0.5f,
                           .q = 0.5f,
                           .amp = {.attack = 4, .decay = 1400, .sustain = 0.75f, .release = 120},
                           .filterEnv = {.decay = 500, .sustain = 0.55f, .release = hold},
                           .velVolume = 0.4f,
                           .velCutoff = 0.2f},
                          {.volume = 0.5f,
                           .osc = {.feed = 0.75f, .detune = 0.18f, .width = 0.4f},
                           .coarse = -12,
                           .cutoff = 0.36f,
                           .amp = {.attack = 6, .decay = 700, .sustain = 0.6f, .release = 120},
                           .velVolume = 0.4f}};

const Patch pads[] = {
    {.volume = 0.8f,
     .osc = {.feed = 0.7f, .detune = 0.42f, .width = 0.8f, .phase = 0.4f},
     .cutoff = 0.62f,
     .q = 0.15f,
     .amp = {.attack = 650, .decay = 1500, .sustain = 0.8f, .release = 850},
     .filterEnv =
         {.attack = 1400, .decay = 2500, .sustain = 0.75f, .release = hold, .initial = 0.45f},
     .lfos = {{}, {}, {}, {.target = targetCutoff, .amount = 0.18f, .hz = 0.21f, .wave = lfoSin}},
     .velVolume = 0.3f,
     .reverb = 0.5f,
     .chorus = {.wet = 0.5f, .delay = 24, .depth = 0.22f, .hz = 0.45f}},
    {.volume = 0.4f,
     .osc = {.phaseMod = 0.4f, .modCoarse = 12, .detune = 0.3f, .width = 1.0f},
     .coarse = 12,
     .cutoff = 0.6f,
     .amp = {.attack = 1000, .sustain = 1.0f, .release = 950},
     .velVolume = 0.3f,
     .reverb = 0.6f}};

const Patch uprightBass[] = {
    {.osc = {.feed = 0.35f, .phaseMod = 0.62f},
     .coarse = -12,
     .cutoff = 0.74f,
     .amp = {.attack = 3, .decay = 2600, .sustain = 0.0f, .release = 140, .decayCurve = 0.15f},
     .filterEnv = {.decay = 700, .sustain = 0.45f, .release = hold, .decayCurve = 0.3f},
     .mod = {targetPhaseMod,
             1.0f,
             {.decay = 320, .sustain = 0.25f, .release = hold, .decayCurve = 0.5f}},
     .velVolume = 0.6f,
     .velPhaseMod = 0.4f,
     .reverb = 0.08f},
    // The finger on the string.
    {.volume = 0.42f,
     .osc = noise,
     .filter = filterBand,
     .cutoff = 0.4f,
     .q = 0.4f,
     .amp = {.decay = 55, .sustain = 0.0f, .release = 40, .decayCurve = 0.4f},
     .velVolume = 0.9f}};

const Patch eurosynth[] = {
    {.volume = 0.8f,
     .osc = {.feed = fullSaw, .phaseMod = 0.38f, .detune = 0.45f, .width = 0.9f},
     .cutoff = 0.97f,
     .q = 0.2f,
     .amp = {.decay = 650, .sustain = 0.65f, .release = 160},
     .filterEnv = {.decay = 450, .sustain = 0.6f, .release = hold, .decayCurve = 0.3f},
     .velVolume = 0.3f,
     .velCutoff = 0.15f,
     .reverb = 0.22f,
     .delay = 0.22f},
    {.volume = 0.6f,
     .osc = {.feed = fullSaw, .phaseMod = 0.3f, .detune = 0.3f, .width = 1.0f, .phase = 0.5f},
     .coarse = 12,
     .cutoff = 0.95f,
     .amp = {.decay = 420, .sustain = 0.5f, .release = 160},
     .velVolume = 0.3f,
     .reverb = 0.25f,
     .delay = 0.25f},
    {.volume = 0.55f,
     .osc = {.feed = fullSaw},
     .coarse = -12,
     .cutoff = 0.6f,
     .amp = {.decay = 650, .sustain = 0.6f, .release = 120}}};

const Patch digitalPluck[] = {
    {.osc = {.phaseMod = 0.62f, .modCoarse = 24, .modFeed = 0.3f, .detune = 0.08f, .width = 0.6f},
     .cutoff = 0.98f,
     .amp = {.decay = 1600, .sustain = 0.0f, .release = 420, .decayCurve = 0.25f},
     .mod = {targetPhaseMod,
             1.0f,
             {.decay = 240, .sustain = 0.1f, .release = hold, .decayCurve = 0.5f}},
     .velVolume = 0.5f,
     .velPhaseMod = 0.4f,
     .reverb = 0.18f,
     .delay = 0.35f},
    {.volume = 0.35f,
     .osc = {.phaseMod = 0.3f, .modCoarse = 19},
     .coarse = 24,
     .amp = {.decay = 180, .sustain = 0.0f, .release = 150, .decayCurve = 0.4f},
     .velVolume = 0.7f,
     .delay = 0.2f}};

const Patch phaserBass[] = {
    {.osc = {.feed = fullSaw, .detune = 0.12f, .width = 0.3f},
     .coarse = -12,
     .cutoff = 0.72f,
     .q = 0.3f,
     .amp = {.decay = 1200, .sustain = 0.75f, .release = 110},
     .filterEnv = {.decay = 600, .sustain = 0.7f, .release = hold},
     .velVolume = 0.4f,
     .velCutoff = 0.2f,
     .phaser = {.wet = 0.9f, .hz = 0.35f, .feedback = 0.75f, .low = 180, .high = 3200}}};

const Patch resonantLead[] = {
    {.osc = {.feed = fullSaw, .detune = 0.1f, .width = 0.4f},
     .cutoff = 0.8f,
     .q = 0.86f,
     .mono = true,
     .glide = 60,
     .amp = {.attack = 3, .decay = 900, .sustain = 0.8f, .release = 160},
     .filterEnv =
         {.decay = 900, .sustain = 0.42f, .release = hold, .initial = 0.9f, .decayCurve = 0.2f},
     .lfos = {vibrato(0.15f, 5.4f, 450)},
     .velVolume = 0.3f,
     .velCutoff = 0.25f,
     .reverb = 0.15f,
     .delay = 0.3f}};

const Patch tremoloPad[] = {
    {.volume = 0.9f,
     .osc = {.feed = 0.5f, .phaseMod = 0.3f, .modCoarse = 12, .detune = 0.25f, .width = 0.7f},
     .cutoff = 0.58f,
     .amp = {.attack = 320, .decay = 1200, .sustain = 0.85f, .release = 900},
     .lfos = {{},
              {.target = targetVolume, .amount = 0.55f, .hz = 5.2f, .wave = lfoSin},
              {.target = targetPan, .amount = 0.35f, .hz = 2.6f, .wave = lfoSin},
              {}},
     .velVolume = 0.3f,
     .reverb = 0.4f,
     .chorus = {.wet = 0.3f, .delay = 18, .depth = 0.15f, .hz = 0.5f}}};

const Patch trumpet[] = {
    {.osc = {.feed = 0.3f, .phaseMod = 0.62f, .modFeed = 0.25f},
     .cutoff = 0.88f,
     .amp = {.attack = 38, .decay = 300, .sustain = 0.85f, .release = 90, .attackCurve = -0.1f},
     .filterEnv = {.attack = 60, .decay = 500, .sustain = 0.85f, .release = hold, .initial = 0.4f},
     .mod = {targetPhaseMod,
             0.75f,
             {.attack = 70, .decay = 350, .sustain = 0.72f, .release = hold}},
     .lfos = {vibrato(0.18f, 5.2f, 600)},
     .velVolume = 0.5f,
     .velPhaseMod = 0.35f,
     .reverb = 0.18f},
    // Breath in the attack.
    {.volume = 0.3f,
     .osc = noise,
     .filter = filterBand,
     .cutoff = 0.5f,
     .q = 0.3f,
     .amp = {.attack = 12, .decay = 90, .sustain = 0.12f, .release = 60},
     .velVolume = 0.6f,
     .reverb = 0.15f}};

const Patch digital[] = {
    {.volume = 0.85f,
     .osc = {.phaseMod = 0.5f, .modFeed = 0.2f, .detune = 0.1f, .width = 0.5f},
     .amp = {.decay = 2600, .sustain = 0.5f, .release = 260, .decayCurve = 0.15f},
     .mod = {targetPhaseMod, 0.6f, {.decay = 900, .sustain = 0.3f, .release = hold}},
     .velVolume = 0.5f,
     .velPhaseMod = 0.5f,
     .reverb = 0.15f,
     .chorus = {.wet = 0.35f, .delay = 16, .depth = 0.12f, .hz = 0.7f}},
    // The tine, fourteen times as high.
    {.volume = 0.45f,
     .osc = {.phaseMod = 0.36f, .modCoarse = 45.69f},
     .amp = {.decay = 700, .sustain = 0.0f, .release = 200, .decayCurve = 0.5f},
     .velVolume = 0.8f,
     .velPhaseMod = 0.6f,
     .reverb = 0.15f}};

const Patch klang[] = {
    {.osc = {.phaseMod = 0.6f, .modCoarse = 21.35f, .detune = 0.06f, .width = 0.8f},
     .amp = {.decay = 3200, .sustain = 0.0f, .release = 1300, .decayCurve = 0.4f},
     .mod = {targetPhaseMod,
             0.85f,
             {.decay = 1700, .sustain = 0.1f, .release = hold, .decayCurve = 0.3f}},
     .velVolume = 0.5f,
     .velPhaseMod = 0.3f,
     .reverb = 0.35f},
    {.volume = 0.4f,
     .osc = {.phaseMod = 0.45f, .modCoarse = 29.6f, .modRing = 0.5f},
     .coarse = 12,
     .amp = {.decay = 1100, .sustain = 0.0f, .release = 800, .decayCurve = 0.4f},
     .velVolume = 0.6f,
     .reverb = 0.35f}};

const Patch amplified[] = {{.osc = {.feed = fullSaw,
                                    .phaseMod = 0.35f,
                                    .modCoarse = 12,
                                    .modFeed = 0.5f,
                                    .detune = 0.08f,
                                    .width = 0.5f},
                            .cutoff = 0.66f,
                            .q = 0.8f,
                            .dist = true,
                            .amp = {.attack = 2, .decay = 3000, .sustain = 0.7f, .release = 180},
                            .filterEnv = {.decay = 400, .sustain = 0.88f, .release = hold},
                            .lfos = {vibrato(0.12f, 5.6f, 700)},
                            .velVolume = 0.4f,
                            .reverb = 0.12f,
                            .delay = 0.12f},
                           {.volume = 0.5f,
                            .osc = {.feed = fullSaw},
                            .coarse = -12,
                            .cutoff = 0.5f,
                            .q = 0.7f,
                            .dist = true,
                            .amp = {.decay = 3000, .sustain = 0.7f, .release = 180}}};

const Patch scary[] = {
    // Unrelated partials that wander, over a tone that keeps the pitch.
    {.osc = {.feed = 0.3f,
             .phaseMod = 0.5f,
             .modCoarse = 6.2f,
             .modFeed = 0.4f,
             .modRing = 0.3f,
             .detune = 0.5f,
             .width = 1.0f},
     .cutoff = 0.7f,
     .q = 0.4f,
     .amp = {.attack = 420, .decay = 2000, .sustain = 0.8f, .release = 950},
     .filterEnv = {.attack = 2600, .sustain = 1.0f, .release = hold, .initial = 0.35f},
     .lfos = {{.target = targetPitch, .amount = 0.3f, .hz = 0.7f, .wave = lfoSin},
              {.target = targetVolume, .amount = 0.35f, .hz = 7.3f},
              {.target = targetPan, .amount = 0.7f, .hz = 0.31f, .wave = lfoSin},
              {.target = targetPhaseMod, .amount = 0.6f, .hz = 0.23f}},
     .reverb = 0.7f,
     .phaser =
         {.wet = 0.6f, .hz = 0.11f, .feedback = 0.8f, .low = 250, .high = 6000, .phase = 120}},
    {.volume = 0.55f,
     .osc = {.feed = 0.2f},
     .amp = {.attack = 500, .sustain = 1.0f, .release = 950},
     .reverb = 0.6f}};

const Patch leadOn[] = {
    {.osc = {.feed = fullSaw, .phaseMod = 0.3f, .modCoarse = 12, .detune = 0.22f, .width = 0.7f},
     .cutoff = 0.96f,
     .q = 0.25f,
     .mono = true,
     .glide = 35,
     .amp = {.attack = 2, .decay = 400, .sustain = 0.85f, .release = 110},
     .filterEnv = {.decay = 500, .sustain = 0.78f, .release = hold},
     .lfos = {vibrato(0.22f, 5.8f, 300)},
     .velVolume = 0.3f,
     .reverb = 0.14f,
     .delay = 0.32f},
    {.volume = 0.6f,
     .osc = {.feed = fullSaw, .detune = 0.12f, .width = 0.5f},
     .coarse = 12,
     .cutoff = 0.9f,
     .mono = true,
     .glide = 35,
     .amp = {.attack = 2, .decay = 400, .sustain = 0.7f, .release = 110},
     .lfos = {vibrato(0.22f, 5.8f, 300)},
     .velVolume = 0.3f,
     .delay = 0.2f}};

const Patch arpeggio[] = {
    {.osc = {.feed = fullSaw, .detune = 0.16f, .width = 0.8f},
     .cutoff = 0.85f,
     .q = 0.5f,
     .amp = {.decay = 520, .sustain = 0.15f, .release = 150, .decayCurve = 0.15f},
     .filterEnv = {.decay = 210, .sustain = 0.3f, .release = hold, .decayCurve = 0.35f},
     .velVolume = 0.5f,
     .velCutoff = 0.25f,
     .reverb = 0.15f,
     .delay = 0.5f}};

const Patch flute[] = {
    {.osc = {.feed = 0.36f, .phaseMod = 0.2f, .modCoarse = 12},
     .cutoff = 0.8f,
     .amp = {.attack = 85, .decay = 500, .sustain = 0.88f, .release = 120, .attackCurve = 0.1f},
     .lfos = {vibrato(0.1f, 5.0f, 400),
              {.target = targetVolume, .amount = 0.12f, .hz = 5.0f, .wave = lfoSin, .delay = 400}},
     .velVolume = 0.4f,
     .reverb = 0.3f},
    // Air.
    {.volume = 0.4f,
     .osc = noise,
     .filter = filterBand,
     .cutoff = 0.45f,
     .q = 0.75f,
     .amp = {.attack = 30, .decay = 220, .sustain = 0.35f, .release = 90},
     .velVolume = 0.5f,
     .reverb = 0.3f}};

const Patch detune[] = {
    {.volume = 0.9f,
     .osc = {.feed = fullSaw, .phaseMod = 0.24f, .detune = 0.78f, .width = 1.0f},
     .cutoff = 0.9f,
     .amp = {.attack = 5, .decay = 1200, .sustain = 0.8f, .release = 240},
     .filterEnv = {.decay = 1500, .sustain = 0.8f, .release = hold},
     .velVolume = 0.3f,
     .velCutoff = 0.1f,
     .reverb = 0.18f},
    {.volume = 0.6f,
     .osc = {.feed = fullSaw, .detune = 0.5f, .width = 0.2f},
     .cutoff = 0.8f,
     .amp = {.attack = 5, .decay = 1200, .sustain = 0.8f, .release = 240},
     .velVolume = 0.3f}};

const Patch massive[] = {
    {.volume = 0.8f,
     .osc = {.feed = fullSaw, .phaseMod = 0.45f, .modFeed = 0.5f, .detune = 0.5f, .width = 1.0f},
     .cutoff = 0.9f,
     .q = 0.3f,
     .dist = true,
     .amp = {.attack = 3, .decay = 1500, .sustain = 0.85f, .release = 260},
     .filterEnv = {.decay = 1200, .sustain = 0.75f, .release = hold},
     .lfos = {{}, {}, {}, {.target = targetCutoff, .amount = 0.15f, .hz = 0.35f}},
     .velVolume = 0.3f,
     .reverb = 0.2f,
     .chorus = {.wet = 0.45f, .delay = 14, .depth = 0.25f, .hz = 0.8f}},
    {.volume = 0.85f,
     .osc = {.feed = fullSaw, .phaseMod = 0.4f, .modFeed = 0.5f},
     .coarse = -12,
     .cutoff = 0.6f,
     .q = 0.4f,
     .dist = true,
     .amp = {.attack = 3, .decay = 1500, .sustain = 0.85f, .release = 240},
     .velVolume = 0.3f},
    {.volume = 0.5f,
     .osc = {.feed = fullSaw, .detune = 0.3f, .width = 1.0f, .phase = 0.5f},
     .coarse = 12,
     .cutoff = 0.95f,
     .amp = {.attack = 10, .decay = 900, .sustain = 0.7f, .release = 260},
     .velVolume = 0.3f,
     .reverb = 0.2f}};

const Patch melody[] = {
    // Odd partials, as of a reed: the modulator an octave up.
    {.osc = {.phaseMod = 0.32f, .modCoarse = 12, .detune = 0.06f, .width = 0.4f},
     .cutoff = 0.78f,
     .amp = {.attack = 18, .decay = 500, .sustain = 0.8f, .release = 140},
     .filterEnv = {.decay = 700, .sustain = 0.75f, .release = hold},
     .lfos = {vibrato(0.14f, 5.3f, 350)},
     .velVolume = 0.4f,
     .reverb = 0.2f,
     .delay = 0.2f}};

const Patch oldPiano[] = {
    {.osc = {.feed = 0.42f, .phaseMod = 0.36f, .detune = 0.2f, .width = 0.35f},
     .cutoff = 0.84f,
     .amp = {.decay = 3600, .sustain = 0.0f, .release = 190, .decayCurve = 0.4f},
     .filterEnv = {.decay = 1500, .sustain = 0.5f, .release = hold, .decayCurve = 0.3f},
     .mod = {targetPhaseMod,
             0.8f,
             {.decay = 700, .sustain = 0.35f, .release = hold, .decayCurve = 0.4f}},
     .velVolume = 0.6f,
     .velCutoff = 0.2f,
     .velPhaseMod = 0.4f,
     .reverb = 0.14f},
    // The other string of each key has gone flat.
    {.volume = 0.5f,
     .osc = {.feed = 0.3f, .phaseMod = 0.42f, .modCoarse = 12, .detune = 0.36f, .width = 0.6f},
     .coarse = 12,
     .amp = {.decay = 1300, .sustain = 0.0f, .release = 160, .decayCurve = 0.4f},
     .velVolume = 0.8f,
     .velPhaseMod = 0.4f,
     .reverb = 0.14f},
    // The hammer.
    {.volume = 0.3f,
     .osc = noise,
     .filter = filterBand,
     .cutoff = 0.42f,
     .q = 0.2f,
     .amp = {.decay = 45, .sustain = 0.0f, .release = 30, .decayCurve = 0.4f},
     .velVolume = 1.0f}};

const Patch noiser[] = {
    {.volume = 0.8f,
     .osc = noise,
     .filter = filterBand,
     .cutoff = 0.62f,
     .q = 0.72f,
     .amp = {.attack = 8, .decay = 1100, .sustain = 0.6f, .release = 350},
     .filterEnv = {.decay = 1600, .sustain = 0.45f, .release = hold, .initial = 0.2f},
     .lfos = {{},
              {},
              {.target = targetPan, .amount = 0.5f, .hz = 0.9f},
              {.target = targetCutoff, .amount = 0.35f, .hz = 3.1f}},
     .velVolume = 0.4f,
     .reverb = 0.25f},
    // The note underneath.
    {.volume = 0.75f,
     .osc = {.feed = 0.7f, .modFeed = 1.0f, .detune = 0.1f},
     .cutoff = 0.6f,
     .amp = {.attack = 8, .decay = 1100, .sustain = 0.65f, .release = 350},
     .velVolume = 0.4f,
     .reverb = 0.2f}};

const Patch violina[] = {
    {.osc = {.feed = fullSaw, .phaseMod = 0.28f, .detune = 0.07f, .width = 0.5f},
     .cutoff = 0.78f,
     .q = 0.3f,
     .amp = {.attack = 110, .decay = 600, .sustain = 0.88f, .release = 170, .attackCurve = 0.1f},
     .filterEnv = {.attack = 150, .decay = 700, .sustain = 0.86f, .release = hold, .initial = 0.6f},
     .lfos = {vibrato(0.26f, 5.7f, 280),
              {.target = targetVolume, .amount = 0.12f, .hz = 5.7f, .wave = lfoSin, .delay = 280}},
     .velVolume = 0.4f,
     .velCutoff = 0.15f,
     .reverb = 0.32f},
    // The box of the instrument.
    {.volume = 0.45f,
     .osc = {.feed = fullSaw},
     .filter = filterBand,
     .cutoff = 0.34f,
     .q = 0.75f,
     .amp = {.attack = 110, .sustain = 1.0f, .release = 150},
     .lfos = {vibrato(0.26f, 5.7f, 280)},
     .velVolume = 0.4f,
     .reverb = 0.25f},
    // The bow.
    {.volume = 0.2f,
     .osc = noise,
     .filter = filterHigh,
     .cutoff = 0.6f,
     .amp = {.attack = 40, .decay = 160, .sustain = 0.3f, .release = 80},
     .velVolume = 0.5f,
     .reverb = 0.2f}};

const Patch synth[] = {
    {.osc = {.feed = 0.85f, .phaseMod = 0.3f, .modCoarse = 19, .detune = 0.24f, .width = 0.6f},
     .cutoff = 0.82f,
     .q = 0.55f,
     .amp = {.attack = 2, .decay = 800, .sustain = 0.7f, .release = 180},
     .filterEnv = {.decay = 650, .sustain = 0.5f, .release = 250},
     .velVolume = 0.4f,
     .velCutoff = 0.2f,
     .reverb = 0.12f,
     .chorus = {.wet = 0.35f, .delay = 18, .depth = 0.14f, .hz = 0.6f}}};

const Patch trance[] = {
    {.volume = 0.75f,
     .osc = {.feed = fullSaw, .phaseMod = 0.4f, .detune = 0.3f, .width = 1.0f},
     .cutoff = 0.94f,
     .amp = {.attack = 4, .decay = 900, .sustain = 0.85f, .release = 320},
     .velVolume = 0.25f,
     .reverb = 0.35f,
     .delay = 0.3f},
    {.volume = 0.75f,
     .osc = {.feed = fullSaw, .phaseMod = 0.36f, .detune = 0.52f, .width = 1.0f, .phase = 0.4f},
     .cutoff = 0.94f,
     .amp = {.attack = 4, .decay = 900, .sustain = 0.85f, .release = 320},
     .velVolume = 0.25f,
     .reverb = 0.35f,
     .delay = 0.3f},
    {.volume = 0.6f,
     .osc = {.feed = 0.88f, .phaseMod = 0.25f, .detune = 0.4f, .width = 0.8f, .phase = 0.7f},
     .coarse = 12,
     .cutoff = 0.92f,
     .amp = {.attack = 4, .decay = 700, .sustain = 0.8f, .release = 320},
     .velVolume = 0.25f,
     .reverb = 0.35f,
     .delay = 0.3f}};

const Patch pulseWave[] = {
    // Two sawtooths, one inverted and a quarter of a cycle late: a narrow pulse.
    {.osc = {.feed = fullSaw, .phase = 0.5f, .inverted = true},
     .cutoff = 0.9f,
     .q = 0.1f,
     .amp = {.attack = 3, .decay = 900, .sustain = 0.85f, .release = 160},
     .velVolume = 0.4f,
     .velCutoff = 0.15f,
     .reverb = 0.12f,
     .chorus = {.wet = 0.25f, .delay = 9, .depth = 0.3f, .hz = 0.5f}}};

const Patch stringsEnsemble[] = {
    {.volume = 0.85f,
     .osc = {.feed = fullSaw, .detune = 0.4f, .width = 0.9f, .phase = 0.3f},
     .cutoff = 0.74f,
     .amp = {.attack = 280, .decay = 900, .sustain = 0.88f, .release = 480},
     .filterEnv = {.attack = 400, .sustain = 1.0f, .release = hold, .initial = 0.7f},
     .lfos = {vibrato(0.09f, 5.1f, 300)},
     .velVolume = 0.35f,
     .velCutoff = 0.1f,
     .reverb = 0.45f,
     .chorus = {.wet = 0.5f, .delay = 22, .depth = 0.2f, .hz = 0.7f}},
    {.volume = 0.55f,
     .osc = {.feed = fullSaw, .detune = 0.48f, .width = 1.0f, .phase = 0.6f},
     .coarse = 12,
     .cutoff = 0.72f,
     .amp = {.attack = 340, .decay = 900, .sustain = 0.85f, .release = 520},
     .lfos = {vibrato(0.11f, 5.6f, 260)},
     .velVolume = 0.35f,
     .reverb = 0.45f}};

const Patch analog[] = {
    {.volume = 0.85f,
     .osc = {.feed = fullSaw, .detune = 0.2f, .width = 0.3f, .phase = 0.2f},
     .cutoff = 0.84f,
     .q = 0.55f,
     .amp = {.attack = 14, .decay = 900, .sustain = 0.75f, .release = 280},
     .filterEnv = {.attack = 90, .decay = 700, .sustain = 0.48f, .release = 400, .initial = 0.25f},
     .lfos = {{.target = targetPitch,
               .amount = 0.06f,
               .hz = 0.8f,
               .wave = lfoSin,
               .restart = restartFree}},
     .velVolume = 0.35f,
     .velCutoff = 0.25f,
     .reverb = 0.12f},
    {.volume = 0.75f,
     .osc = {.feed = fullSaw, .phase = 1.0f, .inverted = true},
     .coarse = -12,
     .cutoff = 0.7f,
     .amp = {.attack = 14, .decay = 900, .sustain = 0.75f, .release = 280},
     .filterEnv = {.decay = 700, .sustain = 0.6f, .release = 400},
     .velVolume = 0.35f}};

const Patch sub[] = {{.osc = {.feed = 0.12f},
                      .coarse = -12,
                      .cutoff = 0.6f,
                      .amp = {.attack = 6, .decay = 2500, .sustain = 0.9f, .release = 90},
                      .velVolume = 0.3f}};

const Patch randomSteps[] = {
    {.osc = {.feed = fullSaw, .phaseMod = 0.3f, .modCoarse = 7, .detune = 0.2f, .width = 0.8f},
     .cutoff = 0.9f,
     .q = 0.78f,
     .amp = {.attack = 3, .decay = 900, .sustain = 0.75f, .release = 280},
     .lfos = {{},
              {},
              {.target = targetPan, .amount = 0.7f, .wave = lfoRandom, .beatDiv = 4},
              {.target = targetCutoff, .amount = 0.75f, .wave = lfoRandom, .beatDiv = 4}},
     .velVolume = 0.4f,
     .reverb = 0.15f,
     .delay = 0.3f}};

const Patch pureSine[] = {
    {.amp = {.attack = 8, .sustain = 1.0f, .release = 140}, .velVolume = 0.4f, .reverb = 0.12f}};

} // namespace

const Program programs[factoryCount] = {
    {"DanceBass", danceBass},
    {"80's Bass", eightiesBass, 0.94f},
    {"DeepBass", deepBass, 0.58f},
    {"Pads", pads, 0.69f, 3500},
    {"Up-right bass", uprightBass, 0.78f, 1000},
    {"Eurosynth", eurosynth, 0.78f, 1800, {0.4f, 3, 4, 3, 4}},
    {"Digital pluck", digitalPluck, 0.79f, 1800, {0.45f, 3, 4, 1, 2}},
    {"Phaser bass", phaserBass, 0.64f},
    {"Resonant lead", resonantLead, 0.72f, 1600, {0.4f, 1, 2, 3, 4}},
    {"Tremolo pad", tremoloPad, 0.94f, 2800},
    {"Trumpet", trumpet, 0.79f, 1600},
    {"Digital", digital, 0.96f, 1500},
    {"Klang", klang, 0.76f, 3000},
    {"Amplified", amplified, 0.69f, 1300, {0.35f, 3, 4, 1, 1}},
    {"Scary", scary, 0.58f, 4500},
    {"Lead on!", leadOn, 0.95f, 1500, {0.42f, 1, 2, 3, 4}},
    {"Arpeggio", arpeggio, 0.78f, 1600, {0.5f, 3, 4, 1, 2}},
    {"Flute", flute, 0.63f, 2200},
    {"Detune", detune, 0.71f, 1800},
    {"Massive", massive, 0.77f, 2200},
    {"Melody", melody, 0.72f, 1800, {0.35f, 3, 4, 1, 1}},
    {"Old piano", oldPiano, 0.84f, 1300},
    {"Noiser", noiser, 0.68f, 2200},
    {"Violina", violina, 0.61f, 2200},
    {"Synth", synth, 0.72f, 1500},
    {"Trance", trance, 0.71f, 2600, {0.42f, 3, 4, 1, 2}},
    {"Pulse", pulseWave, 0.85f, 1400},
    {"Strings", stringsEnsemble, 0.65f, 3000},
    {"Analog", analog, 0.67f, 1400},
    {"Sub", sub, 0.60f},
    {"Random", randomSteps, 0.56f, 1600, {0.4f, 3, 4, 1, 2}},
    {"Sinus", pureSine, 0.58f, 1800},
};

} // namespace factory
