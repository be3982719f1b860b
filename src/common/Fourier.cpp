#include "common/Fourier.h"

#include <cassert>
#include <cmath>
#include <numbers>

Fourier::Fourier(int frames)
    : window(size_t(frames)), turns(size_t(frames) / 2), work(size_t(frames)),
      places(size_t(frames)), result(size_t(frames) / 2) {
    assert(frames >= 4 && (frames & (frames - 1)) == 0);
    const double step = 2 * std::numbers::pi / frames;
    for (size_t i = 0; i < window.size(); i++)
        window[i] = float(0.5 - 0.5 * std::cos(step * double(i)));
    for (size_t i = 0; i < turns.size(); i++)
        turns[i] = {float(std::cos(step * double(i))), float(-std::sin(step * double(i)))};
    for (size_t i = 1; i < places.size(); i++)
        places[i] = places[i / 2] / 2 + (i % 2 ? unsigned(frames) / 2 : 0);
}

const std::vector<float>& Fourier::amplitudes(const float* from) {
    const size_t count = work.size();
    for (size_t i = 0; i < count; i++) work[places[i]] = from[i] * window[i];
    for (size_t half = 1; half < count; half *= 2) {
        const size_t stride = count / (2 * half);
        for (size_t block = 0; block < count; block += 2 * half)
            for (size_t k = 0; k < half; k++) {
                const std::complex<float> a = work[block + k], b = work[block + k + half],
                                          turn = turns[k * stride];
                const std::complex<float> turned(b.real() * turn.real() - b.imag() * turn.imag(),
                                                 b.real() * turn.imag() + b.imag() * turn.real());
                work[block + k] = a + turned;
                work[block + k + half] = a - turned;
            }
    }
    const float scale = 4.0f / float(count); // of the window's mean, 1/2, and of both halves
    for (size_t k = 0; k < result.size(); k++) result[k] = std::abs(work[k]) * scale;
    return result;
}
