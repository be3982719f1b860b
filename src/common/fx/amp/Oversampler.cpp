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

/// So many frames at a time share each tap that they read; every sum runs in the same order.
constexpr int together = 4;

template <int groups, int count>
[[gnu::always_inline]] inline void interpolate(const Floats8* base, const Floats8* taps,
                                               Floats8* __restrict out) {
    Floats8 sums[count * groups] = {};
    for (int k = 0; k < span; k++)
        for (int g = 0; g < groups; g++)
            for (int i = 0; i < count; i++)
                sums[i * groups + g] += taps[k * Oversampler::maxGroups + g] * base[i + k];
    for (int i = 0; i < count * groups; i++) out[i] = sums[i];
}

template <int groups, int count>
[[gnu::always_inline]] inline void decimate(const Floats8* over, const Floats8* taps,
                                            Sides* __restrict out) {
    Floats8 sums[count] = {};
    for (int k = 0; k < span * groups; k++)
        for (int i = 0; i < count; i++) sums[i] += taps[k] * over[i * groups + k];
    for (int i = 0; i < count; i++) {
        const Floats8 s = sums[i];
        out[i] =
            Sides{double((s[0] + s[2]) + (s[1] + s[3])), double((s[4] + s[6]) + (s[5] + s[7]))};
    }
}

template <int groups>
[[gnu::always_inline]] inline void interpolateAll(const Floats8* base, const Floats8* taps,
                                                  int frames, Floats8* out) {
    int i = 0;
    for (; i + together <= frames; i += together)
        interpolate<groups, together>(base + i, taps, out + i * groups);
    for (; i < frames; i++) interpolate<groups, 1>(base + i, taps, out + i * groups);
}

template <int groups>
[[gnu::always_inline]] inline void decimateAll(const Floats8* over, const Floats8* taps, int frames,
                                               Sides* out) {
    int i = 0;
    for (; i + together <= frames; i += together)
        decimate<groups, together>(over + i * groups, taps, out + i);
    for (; i < frames; i++) decimate<groups, 1>(over + i * groups, taps, out + i);
}

SONDRAVA_CLONES void interpolate4(const Floats8* base, const Floats8* taps, int frames,
                                  Floats8* out) {
    interpolateAll<1>(base, taps, frames, out);
}
SONDRAVA_CLONES void interpolate8(const Floats8* base, const Floats8* taps, int frames,
                                  Floats8* out) {
    interpolateAll<2>(base, taps, frames, out);
}
SONDRAVA_CLONES void decimate4(const Floats8* over, const Floats8* taps, int frames, Sides* out) {
    decimateAll<1>(over, taps, frames, out);
}
SONDRAVA_CLONES void decimate8(const Floats8* over, const Floats8* taps, int frames, Sides* out) {
    decimateAll<2>(over, taps, frames, out);
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

bool Oversampler::quiet() const {
    const auto zero = [](const Floats8& v) { return allZero(v); };
    return std::all_of(base, base + span - 1, zero) &&
           std::all_of(over, over + (span - 1) * groups, zero);
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
    (groups == 1 ? decimate4 : decimate8)(over, downTaps, frames, out);
    std::copy_n(over + frames * groups, kept, over);
}
