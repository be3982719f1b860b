#pragma once

#include <complex>
#include <vector>

/// How much of each frequency is in a stretch of a signal, seen through a Hann window. One thread.
class Fourier {
public:
    /// Of stretches of `frames`, a power of two from 4 on.
    explicit Fourier(int frames);

    int size() const { return int(window.size()); }
    /// Amplitudes of the frequencies k * rate / size, for k from 0 to size / 2 - 1: a sine of that
    /// frequency and amplitude 1 gives 1 there. `from` has `size` frames.
    const std::vector<float>& amplitudes(const float* from);

private:
    std::vector<float> window;
    std::vector<std::complex<float>> turns, work; ///< of the unit circle; one turn of half the size
    std::vector<unsigned> places;                 ///< with their bits the other way round
    std::vector<float> result;
};
