#pragma once

#include <vector>

// The sounds of the built-in kit, worked out: one channel at 44100 Hz, within -1 to 1, from silence
// to silence. The same numbers at every call. Not on the audio thread.

std::vector<float> synthesizeKick();
std::vector<float> synthesizeSnare();
std::vector<float> synthesizeClap();
std::vector<float> synthesizeHatClosed();
std::vector<float> synthesizeHatOpen();
