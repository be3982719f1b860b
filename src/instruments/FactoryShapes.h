#pragma once

#include "instruments/CSound.h"
#include "instruments/FactoryTable.h"

// Pieces that the programs of the tables share.

namespace factory {

constexpr float hold = 5000.0f; ///< release of a modulating envelope that keeps its value

/// The feedback of a sawtooth that the velocity makes softer: at 100 it is one radian, the most
/// before the operator begins to alternate from sample to sample, and at 127 it rasps a little.
constexpr float fullSaw = 0.95f;
constexpr float sawVelocity = 0.35f;

/// A high-pass at 25 Hz. Feedback acts a sample late, and that adds a constant offset.
constexpr float clean = 0.06f;

/// A modulator far above the carrier, many cycles deep: noise.
constexpr Osc noise = {.phaseMod = 1.0f, .times = 32, .modCoarse = 31.7f, .modFeed = 1.0f};

/// A soft sawtooth: partials fall by 8 dB an octave, and faster from the tenth on.
constexpr Osc plainSaw(float detune = 0.0f, float width = 0.0f, float phase = 0.0f) {
    return {.feed = fullSaw, .detune = detune, .width = width, .phase = phase};
}

/// A sawtooth as bright as one is, up to the sixteenth partial.
constexpr Osc brightSaw(float detune = 0.0f, float width = 0.0f, float phase = 0.0f) {
    return {.feed = fullSaw, .phaseMod = 0.45f, .detune = detune, .width = width, .phase = phase};
}

/// A sine that a sawtooth of its own pitch drives through several turns: all partials, the high
/// ones as strong as the low.
constexpr Osc edge(float depth, float detune = 0.0f, float width = 0.0f, float phase = 0.0f) {
    return {.phaseMod = depth, .modFeed = 0.9f, .detune = detune, .width = width, .phase = phase};
}

/// The same with the modulator an octave up: odd partials alone.
constexpr Osc hollow(float depth, float detune = 0.0f, float width = 0.0f, float phase = 0.0f) {
    return {.phaseMod = depth,
            .modCoarse = 12,
            .modFeed = 0.9f,
            .detune = detune,
            .width = width,
            .phase = phase};
}

/// Two sawtooths against each other, in the middle: no offset, and a pulse that moves with
/// `detune`.
constexpr Osc pulsePair(float detune, float phase, float feed = fullSaw, float depth = 0.0f) {
    return {.feed = feed, .phaseMod = depth, .detune = detune, .phase = phase, .inverted = true};
}

constexpr Lfo vibrato(float semitones, float hz, int delayMs) {
    return {.target = targetPitch, .amount = semitones, .hz = hz, .wave = lfoSin, .delay = delayMs};
}

using Patches = std::span<const Patch>;

// Bass.
extern const Patches danceBass, eightiesBass, deepBass, uprightBass, phaserBass, sub;
// Leads.
extern const Patches eurosynth, resonantLead, amplified, leadOn, arpeggio, detune, massive, synth,
    trance, pulseWave, analog, randomSteps, melody, pureSine;
// Pads, and what has no note first of all.
extern const Patches pads, tremoloPad, scary, noiser, stringsEnsemble;
// Struck, plucked and blown.
extern const Patches digitalPluck, digital, klang, oldPiano, trumpet, flute, violina;

} // namespace factory
