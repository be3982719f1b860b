#include "instruments/OperatorWave.h"

#include "instruments/COSCSound.h"

#include <cmath>
#include <numbers>

namespace {

constexpr double feedbackDepth = 0.2; ///< turns of full feedback
constexpr int turns = 2, silentTurns = 4;
constexpr int steps = 8; ///< to a point, so that feedback is hardly late

double sine(double turn) {
    return std::sin(2.0 * std::numbers::pi * turn);
}

double shaped(double v, double ring) {
    return (ring - 1.0) * v + ring * v * v;
}

double squared(double v) {
    return v * v;
}

} // namespace

/// Some turns ahead of those that are kept let the feedback settle.
OperatorWaves operatorWaves(const COSCSound& sound) {
    const double ratio = std::exp2(double(sound.coarse2) / 12.0);
    const double feed1 = squared(double(sound.feed1)) * feedbackDepth;
    const double feed2 = squared(double(sound.feed2)) * feedbackDepth;
    const double depth = squared(double(sound.phaseMod)) * sound.pmMul;
    OperatorWaves made;
    double lastMod = 0.0, lastCar = 0.0;
    const int all = steps * OperatorWaves::points, ahead = silentTurns * all / turns;
    for (int i = -ahead; i < all; i++) {
        const double turn = double(i) * turns / all;
        lastMod = sine(feed2 * lastMod + turn * ratio);
        const double bend = depth * shaped(lastMod, double(sound.modRing));
        lastCar = shaped(sine(bend + feed1 * lastCar + turn), double(sound.oscRing));
        if (i < 0 || i % steps) continue;
        made.modulator.push_back(float(lastMod));
        made.carrier.push_back(float(lastCar));
    }
    return made;
}
