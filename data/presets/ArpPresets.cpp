#include "data/presets/ArpPresets.h"

namespace presets {

std::vector<ArpPreset> arpPresets() {
    return {
        {"Plain rise", arpUp, sixteenths},
        {"Two octaves up", arpUp, sixteenths, 2, 0.6f},
        {"Waterfall", arpDown, sixteenths, 3, 0.9f},
        {"There and back", arpUpDown, eighths, 2, 0.7f},
        {"There and back, short", arpUpDown, sixteenths, 1, 0.55f, 0.0f, false, 1.0f, 0.0f, 0.35f},
        {"Doubled ends", arpUpAndDown, sixteenths, 1, 0.45f},
        {"Valley", arpDownUp, sixteenths, 2, 0.75f},
        {"Swung eighths", arpUp, eighths, 1, 0.65f, 0.6f},
        {"Shuffle down", arpDown, sixteenths, 1, 0.55f, 0.5f},
        {"Triplet run", arpUpDown, eighths, 2, 0.7f, 0.0f, true},
        {"Fast triplets", arpUp, sixteenths, 3, 0.5f, 0.0f, true},
        {"Slow harp", arpUp, quarters, 3, 1.0f},
        {"Half notes", arpAsPlayed, halves, 1, 0.95f},
        {"As played", arpAsPlayed, sixteenths, 1, 0.6f},
        {"As played, wide", arpAsPlayed, eighths, 3, 0.8f},
        {"Chord stabs", arpChord, eighths, 1, 0.25f},
        {"Chord gate", arpChord, sixteenths, 1, 0.4f},
        {"Off-beat chords", arpChord, quarters, 1, 0.35f, 1.0f},
        {"Dice", arpRandom, sixteenths, 2, 0.6f},
        {"Scattered", arpRandom, sixteenths, 3, 0.7f, 0.0f, false, 0.6f, 0.6f, 0.6f},
        {"Rain", arpRandom, fast, 4, 0.3f, 0.0f, false, 0.35f, 0.4f, 0.9f},
        {"Machine", arpUp, fast, 2, 0.2f},
        {"Now and then", arpUpDown, sixteenths, 1, 0.5f, 0.3f, false, 0.5f, 0.3f, 0.5f},
        {"Breathing", arpDownAndUp, eighths, 2, 1.0f, 0.2f, false, 1.0f, 0.8f, 0.7f},
        {"Ghost chords", arpChord, sixteenths, 1, 0.5f, 0.4f, false, 0.55f, 0.5f, 0.8f},
    };
}

void fillArp(CArpProg& prog, const ArpPreset& preset) {
    prog.id = preset.name;
    prog.setMode(preset.mode);
    prog.setStepTicks(float(preset.ticks));
    prog.setOctaves(preset.octaves);
    prog.setGate(preset.gate);
    prog.setSwing(preset.swing);
    prog.setTriplets(preset.triplets);
    prog.setProb(preset.prob);
    prog.setRndGate(preset.rndGate);
    prog.setRndVelocity(preset.rndVelocity);
}

} // namespace presets
