#pragma once

/// What fingers on a touchpad, or a wheel with fine steps, ask for at once.
struct TouchStep {
    double dx = 0, dy = 0; ///< as notches of a wheel, positive to the left and up; parts of one too
    double zoom = 1;       ///< how many times larger
};
