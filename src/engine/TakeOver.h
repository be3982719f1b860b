#pragma once

/// What the values of a controller do with a parameter. Files have these numbers.
enum MapMode : int {
    mapJump = 0,     ///< it takes each value
    mapPickup = 1,   ///< it stays until the controller has come to where it is
    mapScale = 2,    ///< it moves by the share of the way that is left in that direction
    mapRelative = 3, ///< 1 to 63 are steps up, 127 to 65 steps down
    mapOffset = 4,   ///< 65 and more are steps up, 63 and less steps down
    mapModes = 5
};

/// How a controller takes a parameter over: from a value, 0 to 127, to the share, 0 to 1, that the
/// parameter becomes. Any thread.
struct TakeOver {
    static constexpr float none = -1.0f;

    int mode = mapJump;   ///< MapMode
    float low = 0.0f;     ///< where the parameter is at 0, in steps of 1/127
    float high = 127.0f;  ///< and at 127
    float last = none;    ///< value that came before
    float left = none;    ///< share that the parameter was given last
    bool waiting = false; ///< to be picked up: values come, and it stays

    /// The share that the parameter takes, which is at `now`; `none`: it stays there. `last` and
    /// `left` follow.
    float take(float value, float now);
    bool steps() const { return mode == mapRelative || mode == mapOffset; }

private:
    float shareOf(float value) const;
    float follow(float value, float now);
    float pickedUp(float value, float now);
    float scaled(float value, float now) const;
    float stepped(float value, float now) const;
};
