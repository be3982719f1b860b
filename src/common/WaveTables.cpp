#include "common/WaveTables.h"

#include <numbers>

double sinus[waveTableSize];
double triangle[waveTableSize];
double pulse[waveTableSize];
double saw[waveTableSize];
float sinus2[waveTableSize];
float sinusWave[lfoTableSize];
float triangleWave[lfoTableSize];
float sawtoothWave[lfoTableSize];

namespace {

constexpr int half = waveTableSize / 2, quarter = waveTableSize / 4;

double triangleAt(int i) {
    if (i < quarter) return double(i) / quarter;
    if (i >= half + quarter) return double(i - half - quarter) / quarter - 1.0;
    return 1.0 - (i - quarter) * 2.0 / half;
}

bool fillOscillators() {
    for (int i = 0; i < waveTableSize; i++) {
        sinus[i] = std::sin(2.0 * std::numbers::pi * i / waveTableSize);
        triangle[i] = triangleAt(i);
        pulse[i] = i < half ? 1.0 : -1.0;
        saw[i] = i < half ? double(i) / half : double(i - half) / half - 1.0;
    }
    return true;
}

bool fillSinus2() {
    for (int i = 0; i < waveTableSize; i++)
        sinus2[i] = float(std::sin(2.0 * std::numbers::pi * i / waveTableSize));
    return true;
}

bool fillLfoWaves() {
    constexpr int middle = lfoTableSize / 2;
    constexpr double cycle = 2.0 * double(std::numbers::pi_v<float>);
    for (int i = 0; i < lfoTableSize; i++) {
        sinusWave[i] = float(std::sin(cycle * i / lfoTableSize) * 0.5 + 0.5);
        triangleWave[i] = float(i < middle ? i : lfoTableSize - i) / middle;
        sawtoothWave[i] = float(i) / lfoTableSize;
    }
    return true;
}

} // namespace

// A local static is initialised once, and a thread that meets the work in progress waits for it.
void createSinus() {
    [[maybe_unused]] static const bool done = fillOscillators();
}
void createSinus2() {
    [[maybe_unused]] static const bool done = fillSinus2();
}
void makeWaveforms() {
    [[maybe_unused]] static const bool done = fillLfoWaves();
}
