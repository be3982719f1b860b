#pragma once

#include "base/Ring.h"
#include "common/Loudness.h"

/// What measures a strip for those who show it, as long as they want it: how loud it leaves the
/// strip, and what its equaliser lets through. Blocks fill it in on the audio thread.
class StripMeters {
public:
    static constexpr int room = 8192; ///< frames that wait; those beyond are left out

    Loudness loudness;                ///< behind fader and pan
    Shared<unsigned char> samples{0}; ///< somebody wants `equalised`
    Ring<float, room> equalised;      ///< the mean of both sides, behind the equaliser

    /// What leaves the equaliser in a block, or a piece of one. Graph holder.
    void takeEqualised(const float* left, const float* right, int frames) {
        if (!samples) return;
        for (int i = 0; i < frames && equalised.push((left[i] + right[i]) * 0.5f); i++) continue;
    }
};
