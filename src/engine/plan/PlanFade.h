#pragma once

#include <algorithm>
#include <cmath>

/// How much of a cable is heard while a plan takes over from another one that had it, or had it not
/// yet, or while the user mutes it: a straight line of `ms`. Whoever runs the step that reads the
/// cable.
struct PlanFade {
    static constexpr int ms = 10;

    float gain = 1.0f, step = 0.0f; ///< at the next frame; what each frame adds
    int left = 0;                   ///< frames of the line
    bool leaving = false;           ///< nothing is heard behind it

    static PlanFade in(int frames) { return {0.0f, 1.0f / float(frames), frames, false}; }
    static PlanFade out(int frames) { return {1.0f, -1.0f / float(frames), frames, true}; }

    static PlanFade still(bool away) { return {away ? 0.0f : 1.0f, 0.0f, 0, away}; }

    /// Turns to nothing, or to all of it, from where it is.
    void turn(bool away, int frames) {
        gain = at(0);
        leaving = away;
        step = (away ? -1.0f : 1.0f) / float(frames);
        left = int(std::ceil((away ? gain : 1.0f - gain) * float(frames)));
    }
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

/// How much of what comes by a cable is heard: as far as the plan has it, and its mute lets it
/// through.
class CableShare {
public:
    CableShare(PlanFade& planned, PlanFade& muting) : plan(planned), gate(muting) {}

    bool none() const { return plan.over() || gate.over(); }
    bool all() const { return !plan.running() && !gate.running(); } ///< unless it is none
    float at(int frame) const { return plan.at(frame) * gate.at(frame); }
    void advance(int frames) {
        plan.advance(frames);
        gate.advance(frames);
    }

private:
    PlanFade &plan, &gate;
};
