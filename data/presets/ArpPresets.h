#pragma once

#include "instruments/CArpProg.h"

#include <vector>

// Patterns of the arpeggiator as data.

namespace presets {

enum Steps : int { halves = 1920, quarters = 960, eighths = 480, sixteenths = 240, fast = 120 };

struct ArpPreset {
    const char* name;
    int mode;  ///< ArpMode
    int ticks; ///< of a step
    int octaves = 1;
    float gate = 0.8f, swing = 0.0f;
    bool triplets = false;
    float prob = 1.0f, rndGate = 0.0f, rndVelocity = 0.0f;
};

std::vector<ArpPreset> arpPresets();
void fillArp(CArpProg& prog, const ArpPreset& preset);

} // namespace presets
