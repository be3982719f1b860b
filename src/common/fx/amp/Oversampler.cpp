#include "common/fx/amp/Oversampler.h"

#include "base/Clones.h"

#include <algorithm>
#include <numbers>

namespace {

constexpr int span = Oversampler::span;
constexpr double kaiserBeta = 7.857; // 0.1102 (80 - 8.7), for 80 dB

/// The low-pass of `span * factor` taps with its corner at half the base rate. Each phase sums to
/// 1, so that a constant passes without a ripple.
void lowPass(int factor, double* taps) {
    const int length = span * factor;
    const double middle = (length - 1) / 2.0;
    for (int i = 0; i < length; i++) {
        const double x = std::numbers::pi * (i - middle) / factor,
                     u = (i - middle) / (length / 2.0);
        taps[i] = std::sin(x) / x * std::cyl_bessel_i(0.0, kaiserBeta * std::sqrt(1.0 - u * u));
    }
    for (int phase = 0; phase < factor; phase++) {
        double sum = 0.0;
        for (int i = phase; i < length; i += factor) sum += taps[i];
        for (int i = phase; i < length; i += factor) taps[i] /= sum;
    }
}

template <int groups>
[[gnu::always_inline]] inline void interpolate(const Floats8* base, const Floats8* taps, int frames,
                                               Floats8* __restrict out) {
    for (int i = 0; i < frames; i++) {
        Floats8 sums[groups] = {};
        for (int k = 0; k < span; k++)
            for (int g = 0; g < groups; g++)
                sums[g] += taps[k * Oversampler::maxGroups + g] * base[i + k];
        for (int g = 0; g < groups; g++) out[i * groups + g] = sums[g];
    }
}

SONDRAVA_CLONES void interpolate4(const Floats8* base, const Floats8* taps, int frames,
                                  Floats8* out) {
    interpolate<1>(base, taps, frames, out);
}

SONDRAVA_CLONES void interpolate8(const Floats8* base, const Floats8* taps, int frames,
                                  Floats8* out) {
    interpolate<2>(base, taps, frames, out);
}

SONDRAVA_CLONES void decimate(const Floats8* over, const Floats8* taps, int groups, int frames,
                              Sides* __restrict out) {
    const int length = span * groups;
    for (int i = 0; i < frames; i++) {
        Floats8 even = {}, odd = {};
        for (int k = 0; k < length; k += 2) {
            even += taps[k] * over[k];
            odd += taps[k + 1] * over[k + 1];
        }
        over += groups;
        const Floats8 sum = even + odd;
        out[i] = Sides{double((sum[0] + sum[2]) + (sum[1] + sum[3])),
                       double((sum[4] + sum[6]) + (sum[5] + sum[7]))};
    }
}

} // namespace

void Oversampler::setFactor(int factor) {
    double taps[span * maxGroups * 4];
    lowPass(factor, taps);
    groups = factor / 4;
    for (int k = 0; k < span; k++)
        for (int g = 0; g < groups; g++)
            for (int lane = 0; lane < 8; lane++) {
                const int phase = g * 4 + lane % 4;
                upTaps[k][g][lane] = float(taps[(span - 1 - k) * factor + phase]);
                const int newest = span * factor - 1; // the filter is symmetric
                downTaps[k * groups + g][lane] = float(taps[newest - k * factor - phase] / factor);
            }
    clear();
}

void Oversampler::clear() {
    for (Floats8& v : base) v = Floats8{};
    for (Floats8& v : over) v = Floats8{};
}

void Oversampler::up(const Sides* in, int frames, Floats8* out) {
    for (int i = 0; i < frames; i++) {
        const float l = float(in[i][0]), r = float(in[i][1]);
        base[span - 1 + i] = Floats8{l, l, l, l, r, r, r, r};
    }
    (groups == 1 ? interpolate4 : interpolate8)(base, upTaps[0], frames, out);
    std::copy_n(base + frames, span - 1, base);
}

void Oversampler::down(const Floats8* in, int frames, Sides* out) {
    const int kept = (span - 1) * groups;
    std::copy_n(in, frames * groups, over + kept);
    decimate(over, downTaps, groups, frames, out);
    std::copy_n(over + frames * groups, kept, over);
}
