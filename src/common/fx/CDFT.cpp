#include "common/fx/CDFT.h"

#include "base/Clones.h"
#include "base/Numbers.h"
#include "common/Silence.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>

namespace {

constexpr double fullTurn = 6.283; // not quite a circle; the bands are defined by it

/// Goertzel's recursion for all bands at once: s[n] = x[n] + 2 cos(w) s[n-1] - s[n-2].
SONDRAVA_CLONES void sumBands(const float* left, const float* right, int frames,
                              const double* __restrict turn, double* __restrict last,
                              double* __restrict before, int size) {
    for (int n = 0; n < frames; n++) {
        const double x = (double(left[n]) + double(right[n])) * 0.5;
        for (int k = 0; k < size; k++) {
            const double s = x + turn[k] * last[k] - before[k];
            before[k] = last[k];
            last[k] = s;
        }
    }
}

} // namespace

void CDFT::setSize(int size) {
    const auto n = std::size_t(asMinMax(size, 1, maxSize));
    for (std::vector<double>* v : {&bands, &re, &im, &turn, &last, &before}) v->assign(n, 0.0);
}

void CDFT::transform(const float* left, const float* right, int frames) {
    if (frames < 1) return;
    if (isSilent(left, right, frames)) {
        std::ranges::fill(re, 0.0);
        std::ranges::fill(im, 0.0);
        return;
    }
    const double step = fullTurn / frames;
    for (std::size_t k = 0; k < bands.size(); k++) {
        turn[k] = 2 * std::cos(double(k + 1) * step);
        last[k] = before[k] = 0.0;
    }
    sumBands(left, right, frames, turn.data(), last.data(), before.data(), getSize());
    for (std::size_t k = 0; k < bands.size(); k++) {
        // s[n-1] - exp(-iw) s[n-2] is the sum that counts the phases back from the last sample.
        const double w = double(k + 1) * step;
        const std::complex<double> back = last[k] - std::polar(before[k], -w);
        const std::complex<double> sum = std::conj(back) * std::polar(1.0, w * (frames * 0.5 - 1));
        re[k] = sum.real();
        im[k] = sum.imag();
        const double magnitude = std::abs(sum) * 2 / frames;
        if (magnitude > bands[k]) bands[k] = fLimit(magnitude, 0.0, 1.0);
    }
}
