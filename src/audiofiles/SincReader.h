#pragma once

/// Reads a signal between its samples without aliasing: a sinc of 16 zero crossings on each side
/// under a Kaiser window (beta 8, side lobes 80 dB down), as wide as the step asks.

/// Largest step that keeps aliases away.
constexpr int maxSincStep = 16;

/// Frames on each side of a place that are read for it, at this step.
int sincReach(double step);
constexpr int maxSincReach = 16 * maxSincStep + 1;

/// Builds the table; before the first `readSinc`, not on the audio thread.
void prepareSinc();

/// `count` frames of two signals at `pos`, `pos` + `step` and so on, all of whose neighbours can be
/// read. Steps above 0 and up to `maxSincStep`.
void readSinc(const float* left, const float* right, double pos, double step, int count,
              float* outLeft, float* outRight);
