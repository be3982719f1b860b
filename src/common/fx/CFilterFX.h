#pragma once

#include "common/fx/CFX.h"

/// Resonant filter, low, band or high pass, with a drive behind it. Overwrites its output; `dry`
/// and `wet` stay 1 and are not heard. Per sample, with f the square of `cutoff` and
/// d = 1 - 0.99 `resonance`:
///     low += f band,  high = in - low - d band,  band += f high,
/// and with a drive above 0 the chosen one of the three goes out as its tanh after a gain of
/// 30 `drive`.
class CFilterFX : public CFX {
public:
    enum Mode { low = 0, band = 1, high = 2 };

    /// A value that moves in even steps to where it is asked to be. Audio thread.
    struct Ramp {
        static constexpr int length = 300; ///< frames
        double value, step = 0.0;
        float target;
        int left = 0; ///< frames to go

        explicit Ramp(float start) : value(double(start)), target(start) {}
        void follow(float request); ///< starts anew from here if the request has changed
        void advance(long count);   ///< after `count` steps, at most `left`, while any are left
    };

    Stored<int> filterMode{low};
    Stored<float> resonance{0.0f};     ///< 0 to 1
    Stored<float> cutoffRequest{1.0f}; ///< 0 to 1, heard through `cutoff`
    Stored<float> driveRequest{0.0f};  ///< 0 to 1, heard through `drive`
    Ramp cutoff{1.0f}, drive{0.0f};
    double lows[2] = {}, bands[2] = {}; ///< of left and right
    double lowParts[2] = {};            ///< `lows` times a cutoff that stands: the square of it,
    double partOf = -1.0;               ///< below 0 when they are to be worked out

    CFilterFX(float hz, int frames);

    /// 1 also forgets the past, before the next sample is made.
    void setEnabled(int on) override;
    void process(float* inL, float* inR, float* outL, float* outR, long frames) override;
    void clear() override;

    void setFilterMode(ToStore<int> mode) { store(filterMode, mode, low, high); }
    void setCutoff(ToStore<float> v) { store(cutoffRequest, v, 0.0f, 1.0f); }
    void setResonance(ToStore<float> v) { store(resonance, v, 0.0f, 1.0f); }
    void setDrive(ToStore<float> v) { store(driveRequest, v, 0.0f, 1.0f); }
    int getFilterMode() const { return filterMode; }
    float getCutoff() const { return cutoffRequest; }
    float getResonance() const { return resonance; }
    float getDrive() const { return driveRequest; }

private:
    struct Block;

    Shared<int> clearRequest{0};

    void runSteady(const Block& block, long from, long count);
    void runMoving(const Block& block, long from, long count);
    void settle();
};
