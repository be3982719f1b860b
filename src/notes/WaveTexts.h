#pragma once

#include "base/CStr.h"

class CSample;
class WaveState;

// What the editor of sound tells in words and numbers. There is a sample and a song.

/// "Beat.wav, stereo, 44100 Hz, 16 bits, 0:03.500".
CStr sampleText(const CSample& sample);
/// Where the range is and how long, in frames, time and bars; or where the place is.
CStr rangeText(const WaveState& state);
/// Its peak and root mean square in dB below full scale.
CStr levelText(const WaveState& state);
