#pragma once

#include "base/Atomic.h"

#include <algorithm>
#include <cmath>

/// How much of a cable, a send or an insert is heard while it comes or goes, or the user mutes it:
/// a straight line of `ms`, counted from its end so that it is the same in any pieces. Whoever runs
/// the step that hears it moves it on; whoever plans anew looks meanwhile whether it is over.
struct PlanFade {
    static constexpr int ms = 10;

    float step = 0.0f;           ///< what each frame adds
    Shared<int> left{0};         ///< frames of the line
    Shared<bool> leaving{false}; ///< nothing is heard behind it

    static PlanFade still(bool away) { return {0.0f, Shared(0), Shared(away)}; }

    /// Turns to nothing, or to all of it, from where it is.
    void turn(bool away, int frames) {
        const float gain = at(0);
        leaving = away;
        step = (away ? -1.0f : 1.0f) / float(frames);
        left = int(std::ceil((away ? gain : 1.0f - gain) * float(frames)));
    }
    /// The same, unless it is on its way there.
    void follow(bool away, int frames) {
        if (away != leaving) turn(away, frames);
    }
    bool over() const { return leaving && left == 0; }
    bool running() const { return left > 0; }
    float at(int frame) const {
        const float end = leaving ? 0.0f : 1.0f;
        return frame < left ? end - step * float(left - frame) : end;
    }
    void advance(int frames) { left = std::max(left - frames, 0); }
};
