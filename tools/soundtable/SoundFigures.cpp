#include "tools/soundtable/SoundFigures.h"

#include "common/Loudness.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <numeric>

namespace soundtable {

namespace {

constexpr double nothing = 1e-20;
constexpr float floorDb = -60.0f; ///< of shapes
constexpr double steadyFrom = 0.15, steadySeconds = 0.95;

double decibels(double power) {
    return 10.0 * std::log10(power + nothing);
}

size_t frameAt(double seconds) {
    return size_t(seconds * probeRate);
}

using Spectrum = std::vector<std::complex<double>>;

/// In place, the size a power of 2.
void transform(Spectrum& x) {
    const size_t n = x.size();
    for (size_t i = 1, j = 0; i < n; i++) {
        size_t bit = n >> 1;
        for (; j & bit; bit >>= 1) j ^= bit;
        j ^= bit;
        if (i < j) std::swap(x[i], x[j]);
    }
    for (size_t length = 2; length <= n; length <<= 1) {
        const std::complex<double> turn = std::polar(1.0, -2.0 * std::numbers::pi / double(length));
        for (size_t i = 0; i < n; i += length) {
            std::complex<double> w = 1.0;
            for (size_t k = 0; k < length / 2; k++, w *= turn) {
                const auto a = x[i + k], b = x[i + k + length / 2] * w;
                x[i + k] = a + b;
                x[i + k + length / 2] = a - b;
            }
        }
    }
}

/// Mean spectrum of both sides, which keeps what their sum would cancel.
void addSide(std::vector<double>& power, const std::vector<float>& side, size_t from) {
    const size_t size = power.size() * 2;
    Spectrum x(size);
    for (size_t i = 0; i < size; i++) {
        const double window =
            0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * double(i) / double(size));
        x[i] = from + i < side.size() ? double(side[from + i]) * window : 0.0;
    }
    transform(x);
    for (size_t i = 0; i < power.size(); i++) power[i] += 0.5 * std::norm(x[i]);
}

using Powers = std::array<double, bandCount * sliceCount>;

/// Powers of a sound, slice by slice, into bands.
Powers powersOf(const Sound& s, const Slicing& slices) {
    constexpr double lowest = 40.0, highest = 18000.0;
    Powers powers{};
    for (int slice = 0; slice < sliceCount; slice++) {
        const double from = slices.from + slices.seconds * slice / sliceCount;
        const auto bins = powerSpectrum(s, frameAt(from), slices.window);
        for (size_t i = 1; i < bins.size(); i++) {
            const double hz = double(i) * probeRate / double(slices.window);
            const double at = std::log(hz / lowest) / std::log(highest / lowest) * bandCount;
            if (at >= 0.0 && at < bandCount)
                powers[size_t(slice * bandCount) + size_t(at)] += bins[i];
        }
    }
    return powers;
}

double sumOf(const Powers& powers) {
    return std::accumulate(powers.begin(), powers.end(), nothing);
}

Shape asShape(const Powers& powers, double sum) {
    Shape shape;
    for (size_t i = 0; i < shape.size(); i++)
        shape[i] = std::max(floorDb, float(decibels(powers[i] * sliceCount / sum)));
    return shape;
}

} // namespace

Shape shapeOf(const Sound& s, const Slicing& slices) {
    const Powers powers = powersOf(s, slices);
    return asShape(powers, sumOf(powers));
}

std::array<Shape, 2> shapesOfWidth(const Sound& s, const Slicing& slices) {
    Sound mid = s, side = s;
    for (size_t i = 0; i < s.left.size(); i++) {
        mid.left[i] = mid.right[i] = 0.5f * (s.left[i] + s.right[i]);
        side.left[i] = side.right[i] = 0.5f * (s.left[i] - s.right[i]);
    }
    const Powers same = powersOf(mid, slices), apart = powersOf(side, slices);
    const double sum = sumOf(same) + sumOf(apart);
    return {asShape(same, sum), asShape(apart, sum)};
}

namespace {

struct Apart {
    double square = 0.0;
    int count = 0;

    void add(const Shape& a, const Shape& b, bool onlyHeard) {
        for (size_t i = 0; i < a.size(); i++) {
            if (onlyHeard && a[i] <= floorDb && b[i] <= floorDb) continue;
            square += double(a[i] - b[i]) * double(a[i] - b[i]);
            count++;
        }
    }
};

} // namespace

double widthOf(const Sound& s) {
    double side = nothing, mid = nothing;
    for (size_t i = 0; i < std::min(s.left.size(), frameAt(heldSeconds)); i++) {
        side += double(s.left[i] - s.right[i]) * double(s.left[i] - s.right[i]);
        mid += double(s.left[i] + s.right[i]) * double(s.left[i] + s.right[i]);
    }
    return decibels(side / mid);
}

double peakOf(const Sound& s) {
    float peak = 0.0f;
    for (const auto* side : {&s.left, &s.right})
        for (const float v : *side) peak = std::max(peak, std::fabs(v));
    return decibels(double(peak) * double(peak));
}

namespace {

/// The most by which the share above 1 or 3 kHz grows, in the attack or in what follows.
double colourOf(const Sound& soft, const Sound& loud) {
    double most = 0.0;
    for (const double hz : {1000.0, 3000.0})
        for (const double from : {0.0, 0.1}) {
            const double growth = shareAbove(loud, hz, from, 0.4) - shareAbove(soft, hz, from, 0.4);
            if (std::fabs(growth) > std::fabs(most)) most = growth;
        }
    return most;
}

} // namespace

std::vector<double> powerSpectrum(const Sound& s, size_t from, size_t size) {
    std::vector<double> power(size / 2);
    addSide(power, s.left, from);
    addSide(power, s.right, from);
    return power;
}

double dcOf(const Sound& s) {
    double worst = -200.0;
    const size_t from = frameAt(steadyFrom), count = frameAt(steadySeconds);
    for (const auto* side : {&s.left, &s.right}) {
        double mean = 0.0, square = nothing, weight = 0.0;
        for (size_t i = 0; i < count && from + i < side->size(); i++) {
            const double w =
                0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * double(i) / double(count));
            const double v = double((*side)[from + i]);
            mean += w * v;
            square += w * v * v;
            weight += w;
        }
        if (weight <= 0.0 || square / weight < 1e-9) continue;
        mean /= weight;
        const double rest = square / weight - mean * mean;
        worst = std::max(worst, decibels(mean * mean / (rest + nothing)));
    }
    return worst;
}

double loudnessOf(const Sound& s) {
    constexpr int step = probeRate / 10;
    Loudness meter;
    meter.setRate(probeRate);
    meter.measure(true);
    double most = Loudness::silent;
    for (size_t at = 0; at + step <= s.left.size(); at += step) {
        meter.process(&s.left[at], &s.right[at], step);
        meter.follow();
        most = std::max(most, meter.levels().momentary);
    }
    return most;
}

double shareAbove(const Sound& s, double hz, double from, double seconds) {
    size_t size = 1024;
    while (double(size) * 1.5 < seconds * probeRate) size *= 2;
    const auto bins = powerSpectrum(s, frameAt(from), size);
    double above = 0.0, all = nothing;
    for (size_t i = 2; i < bins.size(); i++) {
        all += bins[i];
        if (double(i) * probeRate / double(size) > hz) above += bins[i];
    }
    return std::max(-120.0, decibels(above / all));
}

Figures measure(const std::string& name, const std::vector<Sound>& sounds) {
    Figures f;
    f.name = name;
    f.worstDc = -200.0;
    for (size_t i = 0; i < f.octaves.size(); i++) {
        f.octaves[i] = loudnessOf(sounds[i]);
        f.worstDc = std::max(f.worstDc, dcOf(sounds[i]));
    }
    const auto [softest, loudest] = std::ranges::minmax(f.octaves);
    f.range = loudest - softest;
    const Sound& c4 = sounds[probeC4];
    f.chordLufs = loudnessOf(sounds[probeChord]);
    f.chordPeak = peakOf(sounds[probeChord]);
    f.above2k = shareAbove(c4, 2000.0, 0.0, 1.2);
    f.above5k = shareAbove(c4, 5000.0, 0.0, 1.2);
    f.velocitySpan = loudnessOf(sounds[probeLoud]) - loudnessOf(sounds[probeSoft]);
    f.velocityColour = colourOf(sounds[probeSoft], sounds[probeLoud]);
    f.width = widthOf(c4);
    f.voices = c4.voices;
    f.lanes = c4.lanes;
    f.shapes = {shapeOf(sounds[probeC3]), shapeOf(c4)};
    return f;
}

double distanceOf(const Figures& a, const Figures& b) {
    Apart apart;
    for (size_t i = 0; i < a.shapes.size(); i++) apart.add(a.shapes[i], b.shapes[i], a.onlyHeard);
    return std::sqrt(apart.square / std::max(1, apart.count));
}

void findNearest(std::vector<Figures>& bank) {
    for (Figures& f : bank) {
        f.nearest = 1e9;
        for (const Figures& other : bank) {
            if (&other == &f) continue;
            const double apart = distanceOf(f, other);
            if (apart >= f.nearest) continue;
            f.nearest = apart;
            f.neighbour = other.name;
        }
    }
}

std::vector<Pair> pairsOf(const std::vector<Figures>& bank) {
    std::vector<Pair> pairs;
    for (size_t i = 0; i < bank.size(); i++)
        for (size_t k = i + 1; k < bank.size(); k++)
            pairs.push_back({&bank[i], &bank[k], distanceOf(bank[i], bank[k])});
    std::ranges::sort(pairs, {}, &Pair::apart);
    return pairs;
}

} // namespace soundtable
