#pragma once

#include "common/fx/amp/AmpKnobs.h"
#include "common/fx/amp/Oversampler.h"

#include <cmath>
#include <numbers>
#include <vector>

/// One side of an amplifier with its knobs at rest, sample after sample as the formulas stand. In
/// float the loop that the model is timed against, in double the one that its tests compare with.
template <class Real>
class PlainAmp {
public:
    PlainAmp(const AmpVoicing& parts, double rate) : v(parts), factor(rate < 7e4 ? 8 : 4) {
        const float* knobs = v.rest;
        const auto knob = [knobs](AmpKnob k) { return double(knobs[k]); };
        drive = Real(v.driveLow * std::pow(v.driveHigh / v.driveLow, knob(knobDrive)));
        lift = Real(std::pow(10, v.shelfDb * knob(knobShelf) / 20) - 1);
        volume = Real(knob(knobVolume) * knob(knobVolume) * v.level);
        input.set(v.inputHz, rate);
        shelf.set(v.shelfHz, rate);
        tone.set(makeToneStack(v.tone, rate, knob(knobBass), knob(knobMid), knob(knobTreble)));
        for (int i = 0; i < v.stages; i++) stages[i].set(v.stage[i], rate * factor);
        for (int i = 0; i < Cabinet::sections; i++) cabinet[i].set(v.cabinet[i], rate);
        makeTaps();
    }

    float next(float in) {
        Real x = Real(in);
        x -= input.next(x);
        if (v.toneFirst) x = tone.next(x);
        base.push(x * drive);
        for (int phase = 0; phase < factor; phase++) {
            Real y = base.sum(&upTaps[std::size_t(phase * Oversampler::span)]);
            for (int i = 0; i < v.stages; i++) y = stages[i].next(y);
            over.push(y);
        }
        x = over.sum(downTaps.data());
        if (!v.toneFirst) x = tone.next(x);
        x += lift * (x - shelf.next(x));
        x *= volume;
        for (Section& s : cabinet) x = s.next(x);
        return float(x);
    }

private:
    struct Pole {
        Real g = 0, y = 0;

        void set(double hz, double rate) {
            g = Real(1 - std::exp(-2 * std::numbers::pi * hz / rate));
        }
        Real next(Real x) { return y += g * (x - y); }
    };

    struct Stage {
        Real gain = 0, bias = 0, before = 0, root = 0;
        Pole high, low;

        void set(const StageParts& p, double rate) {
            gain = Real(p.gain);
            before = bias = Real(p.bias);
            root = std::sqrt(1 + bias * bias);
            high.set(p.highHz, rate);
            low.set(p.lowHz, rate);
        }
        Real next(Real x) {
            const Real a = x * gain + bias, rootA = std::sqrt(1 + a * a);
            const Real bent = (a + before) / (rootA + root) - bias / std::sqrt(1 + bias * bias);
            before = a;
            root = rootA;
            const Real bright = high.next(bent);
            return bright - low.next(bright);
        }
    };

    /// A filter of up to the third order.
    struct Direct {
        Real b[4] = {}, a[4] = {}, s[4] = {};

        void set(const ToneStackCoeffs& c) {
            for (int k = 0; k < 4; k++) {
                b[k] = Real(c.b[k]);
                a[k] = Real(c.a[k]);
            }
        }
        Real next(Real x) {
            const Real y = b[0] * x + s[0];
            for (int k = 0; k < 3; k++) s[k] = b[k + 1] * x - a[k + 1] * y + s[k + 1];
            return y;
        }
    };

    struct Section : Direct {
        void set(const CabinetSection& part, double rate) {
            const double w = 2 * std::numbers::pi * part.hz / rate, c = std::cos(w);
            const double alpha = std::sin(w) / (2 * part.q);
            const double lift = std::pow(10, part.db / 40);
            const bool high = part.shape == cabinetHighCut;
            ToneStackCoeffs k = {{high ? (1 - c) / 2 : (1 + c) / 2, high ? 1 - c : -(1 + c)},
                                 {1 + alpha / lift, -2 * c, 1 - alpha / lift}};
            k.b[2] = k.b[0];
            if (part.shape == cabinetBell) {
                k.b[0] = 1 + alpha * lift;
                k.b[1] = -2 * c;
                k.b[2] = 1 - alpha * lift;
            }
            const double norm = k.a[0];
            for (int i = 0; i < 3; i++) {
                k.b[i] /= norm;
                k.a[i] /= norm;
            }
            Direct::set(k);
        }
    };

    /// The last samples, written twice so that they can be read in one run.
    struct Past {
        std::size_t length, at = 0;
        std::vector<Real> x;

        explicit Past(std::size_t n) : length(n), x(2 * n) {}
        void push(Real v) {
            x[at] = x[at + length] = v;
            at = (at + 1) % length;
        }
        /// Of the oldest first.
        Real sum(const Real* taps) const {
            Real s = 0;
            for (std::size_t i = 0; i < length; i++) s += taps[i] * x[at + i];
            return s;
        }
    };

    void makeTaps() {
        const int span = Oversampler::span, length = span * factor;
        const auto window = [](double u) {
            return std::cyl_bessel_i(0.0, 7.857 * std::sqrt(1 - u * u));
        };
        for (int phase = 0; phase < factor; phase++) {
            std::vector<double> taps;
            double total = 0;
            for (int k = span - 1; k >= 0; k--) {
                const double t = k * factor + phase - (length - 1) / 2.0;
                const double x = std::numbers::pi * t / factor;
                taps.push_back(std::sin(x) / x * window(2 * t / length));
                total += taps.back();
            }
            for (double tap : taps) upTaps.push_back(Real(tap / total));
        }
        for (int i = 0; i < length; i++) { // the same response, phases in their order of time
            const int back = length - 1 - i;
            const Real tap = upTaps[std::size_t(back % factor * span + span - 1 - back / factor)];
            downTaps.push_back(tap / Real(factor));
        }
    }

    const AmpVoicing& v;
    int factor;
    Real drive, lift, volume;
    Pole input, shelf;
    Direct tone;
    Stage stages[AmpVoicing::maxStages];
    Section cabinet[Cabinet::sections];
    std::vector<Real> upTaps, downTaps; ///< of the oldest first; `upTaps` phase by phase
    Past base{Oversampler::span}, over{std::size_t(Oversampler::span * factor)};
};
