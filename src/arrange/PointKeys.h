#pragma once

class ArrangeState;

// Arrow keys while points of automation are selected; each is false for other keys, and without
// such points.

/// With Control they move the points by a step of the grid or by a hundredth of the value; with
/// Alt they bend the line before them, or move the value by eight of them.
bool pointEditKey(ArrangeState& state, int key, int mods);
/// Left and Right alone select the next point that way on the lane, with Shift beside those that
/// are selected.
bool pointWalkKey(ArrangeState& state, int key, int mods);
