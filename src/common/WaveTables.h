#pragma once

#include <cmath>

/// Length of the tables of one cycle, and of the slower ones of the effects.
constexpr int waveTableSize = 65536;
constexpr int lfoTableSize = 131072;
/// Fastest step of an effect's oscillator, and how far its place may run within one block.
constexpr int maxLfoStep = lfoTableSize;
constexpr double lfoFar = 1 << 30;

/// One cycle each, from -1 to 1, not band-limited. Zeros until `createSinus` has run.
extern double sinus[waveTableSize];
extern double triangle[waveTableSize];
extern double pulse[waveTableSize];
extern double saw[waveTableSize];
/// The sine in floats. Zeros until `createSinus2` has run.
extern float sinus2[waveTableSize];
/// One cycle each, from 0 to 1. Zeros until `makeWaveforms` has run.
extern float sinusWave[lfoTableSize];
extern float triangleWave[lfoTableSize];
extern float sawtoothWave[lfoTableSize];

/// Each fills its tables at the first call in a process and does nothing later. Any thread; when a
/// call returns, the tables are complete.
void createSinus();
void createSinus2();
void makeWaveforms();

/// The index of the value at `x` cycles: trunc(x * 65535) modulo the table's length. Far out, where
/// |x| * 65535 is 2^31 or more, and for what is not a number it is 0.
inline int phaseIndex(double x) {
    const double steps = x * 65535.0;
    return int(std::fabs(steps) < 2147483648.0 ? steps : 0.0) & (waveTableSize - 1);
}

/// The places in a wave of the effects over `count` frames from `phase` on, one `step` apart, and
/// the place after them. Added up one by one, since a place at a boundary must not depend on how
/// the frames are cut.
inline double lfoPlaces(double phase, double step, int count, double* places) {
    for (int i = 0; i < count; i++, phase += step) places[i] = phase;
    return phase;
}
