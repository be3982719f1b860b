#pragma once

/// A filter of second order, divided by a0:
///     y[n] = b0 x[n] + b1 x[n-1] + b2 x[n-2] - a1 y[n-1] - a2 y[n-2].
struct EqCoeffs {
    double b0 = 1.0, b1 = 0.0, b2 = 0.0, a1 = 0.0, a2 = 0.0;
};

/// A band of a stereo equaliser: its filter and the last two frames of both sides. In double, since
/// floats are too coarse for low bands: at 20 Hz they bend the response by up to 0.9 dB and err by
/// -45 dB of the signal.
struct EqBand : EqCoeffs {
    double x1L = 0.0, x2L = 0.0, y1L = 0.0, y2L = 0.0;
    double x1R = 0.0, x2R = 0.0, y1R = 0.0, y2R = 0.0;

    /// Forgets the past.
    void silence();
};

constexpr int maxEqBands = 4;

/// Runs a signal in place through `count` bands in a row, 1 to `maxEqBands` of them. However it is
/// cut into blocks it gives the same. Audio thread.
void runBands(EqBand* const* bands, int count, float* left, float* right, long frames);
/// Forgets outputs below 1e-10, and what is no number: from time to time.
void settleBands(EqBand* const* bands, int count);
/// Whether nothing is left of the past in any of them, so that silence stays silence.
bool bandsRest(const EqBand* const* bands, int count);

/// The form of it for machines without registers of four doubles, the same bits; for tests.
void runBandsInPairs(EqBand* const* bands, int count, float* left, float* right, long frames);
