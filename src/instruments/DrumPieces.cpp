#include "instruments/DrumPieces.h"

#include <algorithm>

namespace drumsynth {

/// They run side by side, as each has to wait for its own past.
void addPartials(Buffer& out, const std::vector<Partial>& partials) {
    constexpr size_t lanes = 8;
    for (size_t first = 0; first < partials.size(); first += lanes) {
        double a[lanes] = {}, b[lanes] = {}, y1[lanes] = {}, y2[lanes] = {};
        for (size_t k = 0; k < lanes && first + k < partials.size(); k++) {
            const Partial& p = partials[first + k];
            const double w = 2.0 * pi * p.hz / rate, r = fall(1.0 / rate, p.tau);
            a[k] = 2.0 * r * std::cos(w);
            b[k] = -r * r;
            y1[k] = p.level * std::sin(p.phase - w) / r;
            y2[k] = p.level * std::sin(p.phase - 2.0 * w) / (r * r);
        }
        for (double& sum : out)
            for (size_t k = 0; k < lanes; k++) {
                const double y = a[k] * y1[k] + b[k] * y2[k];
                y2[k] = y1[k];
                y1[k] = y;
                sum += y;
            }
    }
}

std::vector<float> finish(const Buffer& in, double lowest, double fade, double peak) {
    constexpr double q = 0.707;
    Filter rumble(lowest, q);
    Buffer clean(in.size());
    double top = 0.0;
    for (size_t i = 0; i < in.size(); i++) {
        rumble.next(in[i]);
        clean[i] = rumble.high * rise(double(in.size() - 1 - i) / rate, fade);
        top = std::max(top, std::abs(clean[i]));
    }
    std::vector<float> out(in.size());
    for (size_t i = 0; i < out.size(); i++) out[i] = float(clean[i] * peak / top);
    return out;
}

} // namespace drumsynth
