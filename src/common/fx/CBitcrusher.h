#pragma once

#include "common/fx/CFX.h"

/// Bit and rate reduction: holds each sample for `degrade` frames and rounds it to a multiple of
/// 0.5 to the power of `bits`. Overwrites its output; `dry` and `wet` stay 1 and are not heard.
class CBitcrusher : public CFX {
public:
    static constexpr int maxBits = 32, maxDegrade = 64;

    Stored<int> bits{4};              ///< 1 to `maxBits`
    Stored<int> degrade{4};           ///< frames that a sample is held, 1 to `maxDegrade`
    int hold = 0;                     ///< frames since a sample was taken
    float holdL = 0.0f, holdR = 0.0f; ///< that sample, not yet rounded

    CBitcrusher(float hz, int frames);

    void process(float* inL, float* inR, float* outL, float* outR, long frames) override;
    void clear() override;
    void start() override;

    void setBits(ToStore<int> n) { store(bits, n, 1, maxBits); }
    void setDegrade(ToStore<int> n) { store(degrade, n, 1, maxDegrade); }
    int getBits() const { return bits; }
    int getDegrade() const { return degrade; }

private:
    void holdSamples(const float* inL, const float* inR, int period, int count, float* left,
                     float* right);
};
