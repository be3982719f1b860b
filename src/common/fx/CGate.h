#pragma once

#include "common/fx/CFX.h"
#include "common/fx/KeySound.h"

/// Gate: lets sound through while the louder side, of it or of the key, is at the threshold or over
/// it, and so long after; else lowers it by the range. Open, its gain is
///     g[n] = 1 + (g[n-1] - 1) exp(-1000 / (attack rate)),
/// and closed the same towards the range, with the release. Overwrites its output; `dry` and `wet`
/// stay 1 and are not used.
class CGate : public CFX {
public:
    Stored<float> threshold{-40.0f}; ///< dB
    Stored<float> attack{1.0f};      ///< ms
    Stored<float> hold{50.0f};       ///< ms
    Stored<float> release{100.0f};   ///< ms
    Stored<float> range{-80.0f};     ///< dB; at the lowest it lets nothing through
    Shared<float> gain{1.0f};        ///< at the end of the last block

    static constexpr float lowest = -100.0f; ///< dB, of threshold and range
    static constexpr float longestAttack = 500.0f, longestTime = 5000.0f; ///< ms
    static constexpr float shortest = 0.1f;

    KeySound key;

    CGate(float hz, int frames);

    void process(float* inL, float* inR, float* outL, float* outR, long frames) override;
    void clear() override;
    bool rests() const override; ///< if the key is silent, too

    void setThreshold(ToStore<float> dB) { store(threshold, dB, lowest, 0.0f); }
    void setAttack(ToStore<float> ms) { store(attack, ms, shortest, longestAttack); }
    void setHold(ToStore<float> ms) { store(hold, ms, 0.0f, longestTime); }
    void setRelease(ToStore<float> ms) { store(release, ms, shortest, longestTime); }
    void setRange(ToStore<float> dB) { store(range, dB, lowest, 0.0f); }
    float getThreshold() const { return threshold; }
    float getAttack() const { return attack; }
    float getHold() const { return hold; }
    float getRelease() const { return release; }
    float getRange() const { return range; }

private:
    double now = 0.0;  ///< gain above the range, as a share of what is between it and 1
    long openLeft = 0; ///< frames
};
