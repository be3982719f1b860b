#pragma once

#include "common/fx/CFX.h"
#include "common/fx/KeySound.h"
#include "common/fx/compressor/SimpleComp.h"

/// Compressor: one gain for both sides, from the average power of them, or of the key. Overwrites
/// its output; `dry` and `wet` stay 1 and are not used.
class CCompressor : public CFX {
public:
    Stored<float> threshold{-20.0f}; ///< dB
    Stored<float> ratio{0.3f};       ///< inverse: dB out for each dB over the threshold
    Stored<float> attack{10.0f}, release{100.0f}; ///< ms
    Stored<float> gain{6.0f};                     ///< dB
    Stored<int> limiter{0};                       ///< 1: a hard limit takes the place of `ratio`
    Shared<float> reduction{
        0.0f}; ///< dB by which it lowers at the end of the last block, `gain` aside

    KeySound key;

    CCompressor(float hz, int frames);

    void setRate(float hz) override;
    void process(float* inL, float* inR, float* outL, float* outR, long frames) override;
    void clear() override;
    bool rests() const override { return unit.quiet(); } ///< if the key is silent, too

    void setThreshold(ToStore<float> dB) { store(threshold, dB, -100.0f, 0.0f); }
    void setRatio(ToStore<float> inverse) { store(ratio, inverse, 0.05f, 1.0f); }
    void setAttack(ToStore<float> ms) { store(attack, ms, 1.0f, 500.0f); }
    void setRelease(ToStore<float> ms) { store(release, ms, 1.0f, 5000.0f); }
    void setGain(ToStore<float> dB) { store(gain, dB, -24.0f, 24.0f); }
    void setLimiter(ToStore<int> on) { store(limiter, on, 0, 1); }
    float getThreshold() const { return threshold; }
    float getRatio() const { return ratio; }
    float getAttack() const { return attack; }
    float getRelease() const { return release; }
    float getGain() const { return gain; }
    int getLimiter() const { return limiter; }

private:
    comp::SimpleCompRms unit;

    void takeSettings();
};
