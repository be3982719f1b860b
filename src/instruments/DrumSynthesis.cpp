#include "instruments/DrumSynthesis.h"

#include "instruments/DrumPieces.h"

#include <algorithm>

namespace {

using namespace drumsynth;

// Both hats are the same pair of cymbals: a dense field of partials without harmony, the higher
// ones dying away sooner, and the hiss of the edges.

std::vector<Partial> cymbalField(double ring) {
    constexpr int count = 96;
    constexpr double lowest = 2600.0, highest = 17000.0, centre = 8200.0, octaves = 0.85;
    Noise dice(20260u);
    std::vector<Partial> field;
    for (int i = 0; i < count; i++) {
        const double at = (i + dice.between(0.0, 1.0)) / count;
        const double hz = lowest * std::pow(highest / lowest, at);
        const double away = std::log2(hz / centre) / octaves;
        const double level = std::exp(-away * away) * dice.between(0.35, 1.0);
        const double tau = ring * std::pow(6000.0 / hz, 0.7) * dice.between(0.6, 1.4);
        field.push_back({hz, level, tau, dice.between(0.0, 2.0 * pi)});
    }
    return field;
}

/// `stroke(t)` shapes all of the sound, `hiss(t)` the noise in it.
template <class Stroke, class Hiss>
Buffer cymbals(int frames, double ring, Stroke&& stroke, Hiss&& hiss) {
    Buffer metal(static_cast<size_t>(frames));
    addPartials(metal, cymbalField(ring));
    Noise noise(4711u);
    Filter edge(6500.0, 0.8), top(14000.0, 0.7);
    return render(frames, [&, i = size_t(0)](double t) mutable {
        edge.next(noise.next());
        top.next(edge.high);
        return rise(t, 0.0008) * stroke(t) * (0.22 * metal[i++] + hiss(t) * top.low);
    });
}

} // namespace

std::vector<float> synthesizeKick() {
    constexpr int frames = 28192;
    constexpr double drive = 1.45;
    Noise noise(90125u);
    Filter beater(3600.0, 0.7);
    const auto value = [&](double t) {
        const double turns = 49.0 * t + 120.0 * 0.03 * (1.0 - fall(t, 0.03)) +
                             380.0 * 0.0045 * (1.0 - fall(t, 0.0045));
        const double length = 0.3 * fall(t, 0.035) + 0.7 * std::exp(-std::pow(t / 0.16, 1.35));
        beater.next(noise.next());
        const double click = beater.band * rise(t, 0.0004) * fall(t, 0.0045);
        return std::tanh(drive * rise(t, 0.0012) * length * std::sin(2.0 * pi * turns)) +
               0.8 * click;
    };
    return finish(render(frames, value), 22.0, 0.05, 0.92);
}

std::vector<float> synthesizeSnare() {
    constexpr int frames = 21395;
    constexpr double drive = 1.25;
    Noise noise(33550u);
    Filter wires(1000.0, 0.6), sheen(5200.0, 0.9), dull(11500.0, 0.6), stick(2300.0, 0.8);
    const auto value = [&](double t) {
        const double head = 1.00 * sweptSine(t, 184.0, 60.0, 0.009) * fall(t, 0.075) +
                            0.60 * sweptSine(t, 293.0, 70.0, 0.008) * fall(t, 0.055) +
                            0.36 * sweptSine(t, 394.0, 70.0, 0.007) * fall(t, 0.042) +
                            0.26 * sweptSine(t, 488.0, 60.0, 0.006) * fall(t, 0.032);
        const double hiss = noise.next();
        wires.next(hiss);
        sheen.next(hiss);
        stick.next(hiss);
        dull.next(wires.high + 1.1 * sheen.band);
        const double rattle = rise(t, 0.0025) * (0.72 * fall(t, 0.038) + 0.28 * fall(t, 0.105));
        const double hit = rise(t, 0.0003) * fall(t, 0.0035);
        return std::tanh(drive * (0.6 * rise(t, 0.0008) * head + 0.95 * rattle * dull.low +
                                  0.8 * hit * stick.band));
    };
    return finish(render(frames, value), 60.0, 0.12, 0.88);
}

std::vector<float> synthesizeClap() {
    constexpr int frames = 38354;
    constexpr double drive = 2.0;
    struct Hands {
        double at, level, tau;
    };
    static const Hands bursts[] = {
        {0.0, 1.0, 0.005}, {0.0105, 1.0, 0.0045}, {0.0195, 1.0, 0.005}, {0.0305, 0.9, 0.046}};
    Noise noise(60601u);
    Filter palm(1150.0, 1.5), fingers(2400.0, 1.2), air(4500.0, 0.7), room(1400.0, 0.8);
    const auto value = [&](double t) {
        const double hiss = noise.next();
        palm.next(hiss);
        fingers.next(hiss);
        air.next(hiss);
        room.next(hiss);
        double clap = 0.0;
        for (const Hands& h : bursts)
            clap += h.level * rise(t - h.at, 0.0005) * fall(std::max(0.0, t - h.at), h.tau);
        const double tail = 0.10 * rise(t - 0.03, 0.02) * fall(t, 0.17);
        return std::tanh(drive * (clap * (palm.band + 0.3 * fingers.band + 0.035 * air.high) +
                                  tail * room.band));
    };
    return finish(render(frames, value), 250.0, 0.15, 0.8);
}

std::vector<float> synthesizeHatClosed() {
    constexpr int frames = 13835;
    const auto stroke = [](double t) { return 0.55 * fall(t, 0.02) + 0.45 * fall(t, 0.06); };
    const auto hiss = [](double t) { return 0.35 + 0.25 * fall(t, 0.006); };
    return finish(cymbals(frames, 0.2, stroke, hiss), 1200.0, 0.06, 0.6);
}

std::vector<float> synthesizeHatOpen() {
    constexpr int frames = 184722;
    const auto stroke = [](double t) { return 0.45 * fall(t, 0.09) + 0.55 * fall(t, 1.3); };
    const auto hiss = [](double t) { return 0.2 + 0.3 * fall(t, 0.008) + 0.2 * fall(t, 0.3); };
    return finish(cymbals(frames, 0.9, stroke, hiss), 1200.0, 0.6, 0.6);
}
