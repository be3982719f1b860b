#pragma once

#include "base/Numbers.h"
#include "common/WaveTables.h"

#include <algorithm>

/// The pace of an effect's oscillator, in steps of its table.
struct Sweep {
    double step;   ///< a frame, 0 to `maxLfoStep`
    double offset; ///< by which the right side is ahead of the left
};

/// Of an effect that sweeps by its `frequency` or, with `tempoSync`, by `tickDen` cycles in
/// `tickNum` beats, its right side `phase` degrees ahead.
template <class Fx>
Sweep sweepOf(const Fx& fx) {
    const int num = std::max<int>(1, fx.tickNum), den = std::max<int>(1, fx.tickDen);
    const double hz = fx.tempoSync ? double(fx.tempo) / 60.0 * den / num : double(fx.frequency);
    return {fLimit(hz * lfoTableSize / double(fx.rate), 0.0, double(maxLfoStep)),
            double(fLimit(fx.phase, 0.0f, 360.0f)) * lfoTableSize / 360.0};
}
