#include "instruments/OscLanes.h"

#include "common/WaveTables.h"

#include <cmath>

namespace {

using Doubles = double __attribute__((vector_size(32)));
using Longs = long long __attribute__((vector_size(32)));
using Floats4 = Vectors<4>::Floats;
using Ints4 = Vectors<4>::Ints;

constexpr int lanesPerGroup = 4; ///< lanes of a vector of doubles
constexpr double tableSteps = 65535.0;
constexpr int tableMask = waveTableSize - 1;
constexpr double intLimit = 2147483648.0;
/// Cycles that feedback and phase modulation can add to a phase.
constexpr double modulationReach = 1100.0;

/// The table at `x` cycles. With `checked`, places beyond 32 bits are those of index 0.
template <bool checked>
SONDRAVA_INLINE void sine(Doubles& x) {
    Doubles steps = x * tableSteps;
    if constexpr (checked) {
        const Doubles magnitude = Doubles(Longs(steps) & 0x7FFFFFFFFFFFFFFFLL);
        steps = Doubles(Longs(steps) & Longs(magnitude < intLimit));
    }
    const Ints4 at = __builtin_convertvector(steps, Ints4) & tableMask;
    x = Doubles{sinus[at[0]], sinus[at[1]], sinus[at[2]], sinus[at[3]]};
}

/// 2 to the power of `x`, for -32 to 32, to 1e-7 of the result: the whole part goes into the
/// exponent, the rest through the series of exp(x ln 2).
template <int N>
SONDRAVA_INLINE void powerOfTwo(typename Vectors<N>::Floats& x) {
    using Floats = typename Vectors<N>::Floats;
    using Ints = typename Vectors<N>::Ints;
    constexpr float rounder = 12582912.0f; // 1.5 * 2^23: what is added to it loses its fraction
    const Floats whole = (x + rounder) - rounder;
    const Floats t = x - whole;
    const Floats series =
        1.0f + t * (0.69314718f +
                    t * (0.24022651f +
                         t * (0.055504109f +
                              t * (0.0096181291f + t * (0.0013333558f + t * 0.00015403530f)))));
    x = Floats(Ints(series) + (__builtin_convertvector(whole, Ints) << 23));
}

/// tanh(x) = 1 - 2 / (exp(2x) + 1); beyond +-9 a float is 1.
template <int N>
SONDRAVA_INLINE void softClip(typename Vectors<N>::Floats& x) {
    using Floats = typename Vectors<N>::Floats;
    constexpr float twoOverLn2 = 2.8853901f;
    const Floats end = Floats{} + 9.0f;
    x = x < end ? x : end;
    x = x > -end ? x : -end;
    x *= twoOverLn2;
    powerOfTwo<N>(x);
    x = 1.0f - 2.0f / (x + 1.0f);
}

/// The operators in registers, N lanes in groups of four.
template <int N, bool checked>
struct OscRegisters {
    using Floats = typename Vectors<N>::Floats;
    static constexpr int groups = N / lanesPerGroup;

    Doubles carPhase[groups], carIncr[groups], carLast[groups];
    Doubles modPhase[groups], modIncr[groups], modLast[groups];
    Doubles feed1[groups], feed1Step[groups], feed2[groups], feed2Step[groups];
    Doubles phaseMod[groups], phaseModStep[groups];
    double modRing, oscRing;

    SONDRAVA_INLINE explicit OscRegisters(const OscLanes& s)
        : modRing(s.modRing), oscRing(s.oscRing) {
        for (int g = 0; g < groups; g++) {
            const int lane = g * lanesPerGroup;
            loadLanes(carPhase[g], s.carPhase + lane);
            loadLanes(carIncr[g], s.carIncr + lane);
            loadLanes(carLast[g], s.carLast + lane);
            loadLanes(modPhase[g], s.modPhase + lane);
            loadLanes(modIncr[g], s.modIncr + lane);
            loadLanes(modLast[g], s.modLast + lane);
            loadLanes(feed1[g], s.feed1 + lane);
            loadLanes(feed1Step[g], s.feed1Step + lane);
            loadLanes(feed2[g], s.feed2 + lane);
            loadLanes(feed2Step[g], s.feed2Step + lane);
            loadLanes(phaseMod[g], s.phaseMod + lane);
            loadLanes(phaseModStep[g], s.phaseModStep + lane);
        }
    }

    SONDRAVA_INLINE void store(OscLanes& s) const {
        for (int g = 0; g < groups; g++) {
            const int lane = g * lanesPerGroup;
            storeLanes(carPhase[g], s.carPhase + lane);
            storeLanes(carLast[g], s.carLast + lane);
            storeLanes(modPhase[g], s.modPhase + lane);
            storeLanes(modLast[g], s.modLast + lane);
            storeLanes(feed1[g], s.feed1 + lane);
            storeLanes(feed2[g], s.feed2 + lane);
            storeLanes(phaseMod[g], s.phaseMod + lane);
        }
    }

    SONDRAVA_INLINE void frame(int g, Floats4& out) {
        Doubles m = feed2[g] * modLast[g] + modPhase[g];
        sine<checked>(m);
        modLast[g] = m;
        modPhase[g] += modIncr[g];
        const Doubles shaped = m * ((modRing - 1.0) + modRing * m);
        Doubles c = phaseMod[g] * shaped + feed1[g] * carLast[g] + carPhase[g];
        sine<checked>(c);
        c *= (oscRing - 1.0) + oscRing * c;
        carLast[g] = c;
        carPhase[g] += carIncr[g];
        feed1[g] += feed1Step[g];
        feed2[g] += feed2Step[g];
        phaseMod[g] += phaseModStep[g];
        out = __builtin_convertvector(c, Floats4);
    }

    SONDRAVA_INLINE void frame(Floats& out) {
        if constexpr (N == 8) {
            Floats4 a, b;
            frame(0, a);
            frame(1, b);
            out = __builtin_shufflevector(a, b, 0, 1, 2, 3, 4, 5, 6, 7);
        } else {
            frame(0, out);
        }
    }
};

template <int N>
SONDRAVA_INLINE void swapNeighbours(const typename Vectors<N>::Floats& v,
                                    typename Vectors<N>::Floats& out) {
    if constexpr (N == 8)
        out = __builtin_shufflevector(v, v, 1, 0, 3, 2, 5, 4, 7, 6);
    else
        out = __builtin_shufflevector(v, v, 1, 0, 3, 2);
}

template <int N, bool checked>
SONDRAVA_INLINE void runLanes(OscLanes& s, float* left, float* right, int n) {
    using Floats = typename Vectors<N>::Floats;
    OscRegisters<N, checked> osc(s);
    StripRegisters<N> strip(s.strip);
    Floats direct, cross;
    loadLanes(direct, s.direct);
    loadLanes(cross, s.cross);
    const bool dist = s.dist;
    for (int i = 0; i < n; i++) {
        Floats c, neighbour;
        osc.frame(c);
        swapNeighbours<N>(c, neighbour);
        Floats y = direct * c + cross * neighbour;
        strip.filter(y);
        if (dist) softClip<N>(y);
        strip.mix(y, left + i, right + i);
    }
    osc.store(s);
    strip.store(s.strip);
}

SONDRAVA_CLONES void run4(OscLanes& s, float* left, float* right, int n) {
    runLanes<4, false>(s, left, right, n);
}
SONDRAVA_CLONES void run8(OscLanes& s, float* left, float* right, int n) {
    runLanes<8, false>(s, left, right, n);
}
SONDRAVA_CLONES void run8Checked(OscLanes& s, float* left, float* right, int n) {
    runLanes<8, true>(s, left, right, n);
}

} // namespace

bool OscLanes::farOut(int lanes, int n) const {
    constexpr double far = intLimit / tableSteps - modulationReach;
    for (int i = 0; i < lanes; i++)
        if (!(carPhase[i] + carIncr[i] * n < far && modPhase[i] + modIncr[i] * n < far))
            return true;
    return false;
}

void OscLanes::run(int lanes, float* left, float* right, int n) {
    if (farOut(lanes, n))
        run8Checked(*this, left, right, n);
    else if (lanes <= lanesPerGroup)
        run4(*this, left, right, n);
    else
        run8(*this, left, right, n);
}
