#include "common/fx/amp/Cabinet.h"

#include <algorithm>
#include <numbers>

namespace {

Cabinet::Section makeSection(const CabinetSection& part, double rate) {
    const double w = 2.0 * std::numbers::pi * std::min(part.hz / rate, 0.45);
    const double c = std::cos(w), alpha = std::sin(w) / (2.0 * part.q);
    const double lift = part.shape == cabinetBell ? std::pow(10.0, part.db / 40.0) : 1.0;
    const double norm = 1.0 / (1.0 + alpha / lift);
    Cabinet::Section s = {};
    if (part.shape == cabinetBell) {
        s.b0 = (1.0 + alpha * lift) * norm;
        s.b1 = -2.0 * c * norm;
        s.b2 = (1.0 - alpha * lift) * norm;
    } else {
        const double edge = part.shape == cabinetHighCut ? 1.0 - c : 1.0 + c;
        s.b0 = s.b2 = edge / 2.0 * norm;
        s.b1 = part.shape == cabinetHighCut ? edge * norm : -edge * norm;
    }
    s.a1 = -2.0 * c * norm;
    s.a2 = (1.0 - alpha / lift) * norm;
    return s;
}

} // namespace

void Cabinet::set(const CabinetSection* parts, double rate) {
    for (int i = 0; i < sections; i++) rows[i] = makeSection(parts[i], rate);
}

void Cabinet::clear() {
    for (Section& s : rows) s.s1 = s.s2 = Sides{};
}

/// Frame by frame through all sections, so that the processor works at one while another waits for
/// its own last output.
void Cabinet::process(Sides* x, int frames) {
    for (int i = 0; i < frames; i++) {
        Sides v = x[i];
        for (Section& s : rows) {
            const Sides in = v;
            v = s.b0 * in + s.s1;
            s.s1 = s.b1 * in - s.a1 * v + s.s2;
            s.s2 = s.b2 * in - s.a2 * v;
        }
        x[i] = v;
    }
}

bool Cabinet::quiet() const {
    return std::all_of(rows, rows + sections, [](const Section& s) { return allZero(s.s1, s.s2); });
}

void Cabinet::settle() {
    for (Section& s : rows) cutTiny(s.s1, s.s2);
}
