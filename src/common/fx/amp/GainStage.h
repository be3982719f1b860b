#pragma once

#include "common/fx/amp/Lanes.h"

struct StageParts {
    float gain;    ///< before the curve
    float bias;    ///< of the working point; 0 gives odd harmonics alone
    double lowHz;  ///< the capacitor behind the stage lets pass from here
    double highHz; ///< and its capacitance lets pass up to here
};

/// A one-pole low-pass y += g (x - y) over four samples at a time: the sums of the powers of
/// a = 1 - g come from two steps of a prefix sum (G. E. Blelloch, "Prefix sums and their
/// applications", 1990), so that samples wait for each other only from group to group.
struct OnePole {
    Floats8 g, a, a2, powers; ///< powers: a to the power of 1 to 4

    /// exp(-2 pi cutoff / rate) is `a`, the same time constant as the circuit's.
    void set(double cutoffHz, double rate);

    /// `last` is the output before, in all lanes of its side; it becomes the last of these.
    [[gnu::always_inline]] void run(const Floats8& x, Floats8& last, Floats8& y) const {
        const Floats8 zero = {};
        Floats8 shifted;
        Floats8 sum = g * x;
        delayByOne(zero, sum, shifted);
        sum += a * shifted;
        delayByTwo(zero, sum, shifted);
        sum += a2 * shifted;
        y = sum + powers * last;
        spreadLast(y, last);
    }
};

/// A tube stage at the higher rate: a curve that bends, then the band that the coupling lets pass.
///
/// The curve is f(x) = x / sqrt(1 + x^2) around `bias`, with the output at rest taken off. It would
/// fold what it makes above the rate back, so each sample is the mean of f over the straight line
/// from the input before to this one: (F(a) - F(b)) / (a - b) with the integral
/// F = sqrt(1 + x^2) (J. Parker, V. Zavalishin, E. Le Bivic, "Reducing the aliasing of nonlinear
/// waveshaping using continuous-time convolution", 2016). For this F the quotient is
/// (a + b) / (sqrt(1 + a^2) + sqrt(1 + b^2)), which never cancels nor divides by 0.
class GainStage {
public:
    /// `rate`: the higher one, above 0. Forgets the past.
    void set(const StageParts& parts, double rate);
    void clear();
    /// In place, groups of four samples a side.
    void process(Floats8* x, int groups);
    void settle();      ///< what has died away becomes 0
    bool quiet() const; ///< silence leaves it as it is, and comes out

    struct Run {
        OnePole high, low; ///< the corners `highHz` and `lowHz`
        float gain, bias, rest;
        Floats8 input, root; ///< of the last group: what went into the curve, sqrt(1 + input^2)
        Floats8 lastHigh, lastLow;
    };

private:
    Run run;
};
