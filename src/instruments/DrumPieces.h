#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

// What sounds of drums are worked out from, at 44100 Hz. Not on the audio thread.

namespace drumsynth {

constexpr double rate = 44100.0;
constexpr double pi = std::numbers::pi;

using Buffer = std::vector<double>;

/// White noise within -1 to 1, by a shift register.
class Noise {
public:
    explicit Noise(uint32_t seed) : state(seed) {}
    double next() {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return double(state) / 2147483648.0 - 1.0;
    }
    double between(double low, double high) { return low + (high - low) * (next() + 1.0) / 2.0; }

private:
    uint32_t state;
};

/// A state variable filter by trapezoidal integration.
class Filter {
public:
    double low = 0.0, band = 0.0,
           high = 0.0; ///< of the last value; `band` has gain 1 at its centre

    Filter(double hz, double q) : g(std::tan(pi * hz / rate)), k(1.0 / q) {}
    void next(double x) {
        high = (x - (g + k) * s1 - s2) / (1.0 + g * (g + k));
        const double v = g * high + s1;
        s1 = g * high + v;
        low = g * v + s2;
        s2 = g * v + low;
        band = k * v;
    }

private:
    double g, k, s1 = 0.0, s2 = 0.0;
};

inline double fall(double seconds, double tau) {
    return std::exp(-seconds / tau);
}

/// From 0 at time 0 to 1 after `length`, by half a cosine.
inline double rise(double seconds, double length) {
    if (seconds <= 0.0) return 0.0;
    return seconds < length ? 0.5 - 0.5 * std::cos(pi * seconds / length) : 1.0;
}

/// Fills a buffer from a function of the time in seconds.
template <class F>
Buffer render(int frames, F&& value) {
    Buffer out(static_cast<size_t>(frames));
    for (size_t i = 0; i < out.size(); i++) out[i] = value(double(i) / rate);
    return out;
}

/// A sine whose frequency falls by `drop` hertz to `hz`, with time constant `tau`.
inline double sweptSine(double t, double hz, double drop, double tau) {
    return std::sin(2.0 * pi * (hz * t + drop * tau * (1.0 - fall(t, tau))));
}

struct Partial {
    double hz, level, tau;
    double phase; ///< radians
};

/// Adds decaying sines.
void addPartials(Buffer& out, const std::vector<Partial>& partials);

/// Takes out what lies below `lowest` hertz, fades the last `fade` seconds, and scales to `peak`.
std::vector<float> finish(const Buffer& in, double lowest, double fade, double peak);

} // namespace drumsynth
