#pragma once

#include "common/fx/amp/Lanes.h"

/// Takes a stereo signal to four or eight times its rate and back.
///
/// Both ways run through the same linear-phase low-pass, a sinc under a Kaiser window (J. F.
/// Kaiser, "Nonrecursive digital filter design using the I0-sinh window function", 1974), in
/// polyphase form: up, each output sample is a sum over `span` inputs; down, only the samples that
/// stay are worked out. Up to 0.39 of the base rate passes, images and aliases from 0.61 on are
/// 80 dB down. There and back takes `span` - 1 frames.
class Oversampler {
public:
    static constexpr int span = 24;      ///< frames under the window
    static constexpr int maxFrames = 32; ///< of one call
    static constexpr int maxGroups = 2;  ///< groups of four samples in a frame

    /// `factor` 4 or 8. Forgets the past.
    void setFactor(int factor);
    void clear();
    int getGroups() const { return groups; }
    bool quiet() const; ///< all that it remembers is silence

    /// `groups` outputs per frame, in order of time.
    void up(const Sides* in, int frames, Floats8* out);
    void down(const Floats8* in, int frames, Sides* out);

private:
    int groups = maxGroups;
    Floats8 upTaps[span][maxGroups];    ///< of the oldest input first
    Floats8 downTaps[span * maxGroups]; ///< of the oldest sample first
    Floats8 base[span - 1 + maxFrames]; ///< inputs, each side's in all of its lanes
    Floats8 over[(span + maxFrames) * maxGroups];
};
