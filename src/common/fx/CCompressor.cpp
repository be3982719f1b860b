#include "common/fx/CCompressor.h"

#include "base/Numbers.h"
#include "common/Silence.h"

#include <algorithm>

CCompressor::CCompressor(float hz, int frames) : CFX(hz, frames) {
    id = "Compressor";
    type = fxCompressor;
    unit.initRuntime();
    CCompressor::setRate(hz);
    unit.setWindow(5.0);
    takeSettings();
}

void CCompressor::setRate(float hz) {
    CFX::setRate(hz);
    unit.setSampleRate(double(hz));
}

void CCompressor::clear() {
    unit.initRuntime();
    reduction = 0.0f;
}

void CCompressor::takeSettings() {
    const double attackMs = double(fLimit(attack, 1.0f, 500.0f));
    const double releaseMs = double(fLimit(release, 1.0f, 5000.0f));
    const double gainDb = double(fLimit(gain, -24.0f, 24.0f));
    if (attackMs != unit.getAttack()) unit.setAttack(attackMs);
    if (releaseMs != unit.getRelease()) unit.setRelease(releaseMs);
    if (gainDb != unit.getGain()) unit.setGain(gainDb);
    unit.setRatio(double(fLimit(ratio, 0.05f, 1.0f)));
    unit.setThresh(double(fLimit(threshold, -100.0f, 0.0f)));
    unit.limiter = limiter;
}

void CCompressor::process(float* inL, float* inR, float* outL, float* outR, long frames) {
    takeSettings();
    const float *keyL = key.leftOr(inL), *keyR = key.rightOr(inR);
    if (rests() && isSilent(inL, inR, frames) && isSilent(keyL, keyR, frames)) {
        std::fill_n(outL, frames, 0.0f);
        std::fill_n(outR, frames, 0.0f);
    } else {
        unit.process(inL, inR, keyL, keyR, outL, outR, frames);
        if (settles) unit.settle();
    }
    reduction = float(std::max(unit.envdB * (1.0 - unit.getRatio()), 0.0));
}
