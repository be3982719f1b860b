#pragma once

#include <vector>

class COSCSound;

/// What the operators of a sound put out, as its left side does while a note is held: the modulator
/// and the carrier, from -1 to 1, over two turns of the carrier. Modulators of the sound are left
/// out.
struct OperatorWaves {
    static constexpr int points = 256;
    std::vector<float> modulator, carrier;
};
OperatorWaves operatorWaves(const COSCSound& sound);
