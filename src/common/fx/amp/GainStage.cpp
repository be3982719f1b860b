#include "common/fx/amp/GainStage.h"

#include "base/Clones.h"

#include <numbers>

namespace {

/// The same number in all lanes.
void fill(Floats8& v, double x) {
    v = Floats8{} + float(x);
}

SONDRAVA_CLONES void amplify(GainStage::Run& state, Floats8* x, int groups) {
    GainStage::Run s = state;
    for (int i = 0; i < groups; i++) {
        const Floats8 input = x[i] * s.gain + s.bias;
        Floats8 root, inputBefore, rootBefore, bright, slow;
        squareRoots(input * input + 1.0f, root);
        delayByOne(s.input, input, inputBefore);
        delayByOne(s.root, root, rootBefore);
        s.input = input;
        s.root = root;
        const Floats8 bent = (input + inputBefore) / (root + rootBefore) - s.rest;
        s.high.run(bent, s.lastHigh, bright);
        s.low.run(bright, s.lastLow, slow);
        x[i] = bright - slow;
    }
    state = s;
}

} // namespace

void OnePole::set(double cutoffHz, double rate) {
    const double pole = std::exp(-2.0 * std::numbers::pi * cutoffHz / rate);
    fill(g, 1.0 - pole);
    fill(a, pole);
    fill(a2, pole * pole);
    for (int lane = 0; lane < 8; lane++) powers[lane] = float(std::pow(pole, lane % 4 + 1));
}

void GainStage::set(const StageParts& parts, double rate) {
    run.gain = parts.gain;
    run.bias = parts.bias;
    run.rest = parts.bias / std::sqrt(1.0f + parts.bias * parts.bias);
    run.high.set(parts.highHz, rate);
    run.low.set(parts.lowHz, rate);
    clear();
}

void GainStage::clear() {
    fill(run.input, double(run.bias));
    fill(run.root, double(std::sqrt(1.0f + run.bias * run.bias)));
    run.lastHigh = run.lastLow = Floats8{};
}

void GainStage::process(Floats8* x, int groups) {
    amplify(run, x, groups);
}

bool GainStage::quiet() const {
    return allZero(run.lastHigh, run.lastLow, run.input - run.bias);
}

void GainStage::settle() {
    cutTiny(run.lastHigh);
    cutTiny(run.lastLow);
}
