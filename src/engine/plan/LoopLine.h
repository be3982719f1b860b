#pragma once

#include <algorithm>
#include <array>

/// What a cable that closes a loop brings: the sound of so many frames ago. Graph holder.
class LoopLine {
public:
    static constexpr int delay = 64; ///< frames, and as many are read and written at once at most

    /// The frames that come next.
    void read(float* toL, float* toR, int frames) const {
        for (int i = 0; i < frames; ++i) {
            toL[i] = left[(next + unsigned(i)) % delay];
            toR[i] = right[(next + unsigned(i)) % delay];
        }
    }
    /// Puts others in their place, and moves on.
    void write(const float* fromL, const float* fromR, int frames) {
        for (int i = 0; i < frames; ++i, ++next) {
            left[next % delay] = fromL[i];
            right[next % delay] = fromR[i];
        }
        missing = std::max(missing - frames, 0);
    }
    /// Nothing has gone round yet: what comes next is silence.
    bool fresh() const { return missing > 0; }
    void clear() { *this = {}; }

private:
    std::array<float, delay> left{}, right{};
    unsigned next = 0;
    int missing = delay; ///< frames
};
