#pragma once

class WaveState;

/// Keys over a wave. Left and Right go on by a pixel, with Control to the next mark, cue or end of
/// what is heard; Home and End to its ends, Page Up and Page Down by what is in view. With Shift
/// all of them move one end of the range in place of the place. Up and Down choose the clip of a
/// part of several. False for a key that has no meaning here.
bool waveKey(WaveState& state, int key, int mods);
