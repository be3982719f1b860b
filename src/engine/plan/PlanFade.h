#pragma once

#include <algorithm>

/// How much of a cable is heard while a plan takes over from another one that had it, or had it not
/// yet: a straight line of `ms`. Whoever runs the step that reads the cable.
struct PlanFade {
    static constexpr int ms = 10;

    float gain = 1.0f, step = 0.0f; ///< at the next frame; what each frame adds
    int left = 0;                   ///< frames of the line
    bool leaving = false;           ///< nothing is heard behind it

    static PlanFade in(int frames) { return {0.0f, 1.0f / float(frames), frames, false}; }
    static PlanFade out(int frames) { return {1.0f, -1.0f / float(frames), frames, true}; }

    bool over() const { return leaving && left == 0; }
    bool running() const { return left > 0; }
    float at(int frame) const {
        if (frame >= left) return leaving ? 0.0f : 1.0f;
        return gain + step * float(frame);
    }
    void advance(int frames) {
        const int n = std::min(frames, left);
        gain += step * float(n);
        left -= n;
    }
};
