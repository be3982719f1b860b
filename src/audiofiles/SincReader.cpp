#include "audiofiles/SincReader.h"

#include "base/Clones.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace {

constexpr int crossings = 16, perCrossing = 512;
constexpr int tableSize = crossings * perCrossing;
constexpr double beta = 8.0;

/// The modified Bessel function of order 0, by its power series.
double bessel0(double x) {
    double sum = 1.0, term = 1.0;
    for (int k = 1; term > sum * 1e-12; k++) {
        term *= x * x / (4.0 * k * k);
        sum += term;
    }
    return sum;
}

/// Half of the kernel, from its middle outwards, with two zeros behind.
const std::array<float, tableSize + 2>& table() {
    static const auto values = [] {
        std::array<float, tableSize + 2> t{};
        t[0] = 1.0f;
        for (int i = 1; i < tableSize; i++) {
            const double x = double(i) / perCrossing, edge = x / crossings;
            const double angle = std::numbers::pi * x;
            t[std::size_t(i)] = float(std::sin(angle) / angle *
                                      bessel0(beta * std::sqrt(1.0 - edge * edge)) / bessel0(beta));
        }
        return t;
    }();
    return values;
}

/// Weights of `count` neighbours, the first of which lies `distance` table steps from the middle.
[[gnu::always_inline]] inline void weigh(const float* kernel, float distance, float density,
                                         int count, float* weights) {
    for (int k = 0; k < count; k++) {
        const float at = std::min(std::fabs(distance + float(k) * density), float(tableSize));
        const int i = int(at);
        weights[k] = kernel[i] + (at - float(i)) * (kernel[i + 1] - kernel[i]);
    }
}

SONDRAVA_CLONES void readPlaces(const float* kernel, const float* left, const float* right,
                                double pos, double step, int count, float* outLeft,
                                float* outRight) {
    const double wide = std::max(step, 1.0);
    const int reach = sincReach(step), taps = 2 * reach;
    const float density = float(perCrossing / wide), gain = float(1.0 / wide);
    float weights[2 * maxSincReach];
    for (int i = 0; i < count; i++) {
        const double x = pos + i * step;
        const int n = int(x), first = n - reach + 1;
        weigh(kernel, float((first - x) * double(density)), density, taps, weights);
        float l = 0.0f, r = 0.0f;
        for (int k = 0; k < taps; k++) {
            l += left[first + k] * weights[k];
            r += right[first + k] * weights[k];
        }
        outLeft[i] = l * gain;
        outRight[i] = r * gain;
    }
}

} // namespace

int sincReach(double step) {
    return int(std::ceil(crossings * std::max(step, 1.0))) + 1;
}

void prepareSinc() {
    table();
}

void readSinc(const float* left, const float* right, double pos, double step, int count,
              float* outLeft, float* outRight) {
    readPlaces(table().data(), left, right, pos, step, count, outLeft, outRight);
}
