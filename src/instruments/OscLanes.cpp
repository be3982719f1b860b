#include "instruments/OscLanes.h"

#include "common/WaveTables.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace {

using Doubles = double __attribute__((vector_size(32)));
using Floats4 = Vectors<4>::Floats;
using Ints4 = Vectors<4>::Ints;

constexpr int lanesPerGroup = 4; ///< lanes of a vector of doubles
constexpr double tableSteps = OscLanes::cycle;
constexpr int tableMask = waveTableSize - 1;
/// Once around the table, in cycles: places that lie turns apart are the same.
constexpr double turn = waveTableSize / tableSteps;
/// Cycles from which on a phase is set back by whole turns, and those that are left to it then. It
/// stays above what feedback and phase modulation can take away, 1100, and their sum, with the
/// 15,000 cycles that the highest pitch makes in a slice, below what is still a place in 32 bits,
/// 32768.
constexpr double setBackFrom = 8192.0, setBackTo = 2048.0;

/// The sine at a place in steps of the table, 65535 a cycle, within 32 bits.
SONDRAVA_INLINE void sine(double& steps) {
    steps = sinus[int(steps) & tableMask];
}

SONDRAVA_INLINE void sine(Doubles& steps) {
    const Ints4 at = __builtin_convertvector(steps, Ints4) & tableMask;
    steps = Doubles{sinus[at[0]], sinus[at[1]], sinus[at[2]], sinus[at[3]]};
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

/// What operators do: what stays at 0 for a slice is left out, and the sound is the same.
struct Use {
    bool ringed = false; ///< else both shapers only invert
    bool carrierFed = true, modulatorFed = true;
    bool modulates = true; ///< else the modulator is not heard
};

/// The operators of one lane (D is double) or four (Doubles) in registers.
///
/// What feeds back is the longest way through a frame: it is kept short by adding the phases, which
/// are known long before, first.
template <class D, Use use>
struct Operators {
    D carPhase, carIncr, carLast, modPhase, modIncr, modLast;
    D feed1, feed1Step, feed2, feed2Step, phaseMod, phaseModStep;
    D modBefore; ///< phase of the latest frame
    double modRing, oscRing;

    SONDRAVA_INLINE void load(const OscLanes& s, int lane) {
        loadLanes(carPhase, s.carPhase + lane);
        loadLanes(carIncr, s.carIncr + lane);
        loadLanes(carLast, s.carLast + lane);
        loadLanes(modPhase, s.modPhase + lane);
        loadLanes(modIncr, s.modIncr + lane);
        loadLanes(modLast, s.modLast + lane);
        loadLanes(feed1, s.feed1 + lane);
        loadLanes(feed1Step, s.feed1Step + lane);
        loadLanes(feed2, s.feed2 + lane);
        loadLanes(feed2Step, s.feed2Step + lane);
        loadLanes(phaseMod, s.phaseMod + lane);
        loadLanes(phaseModStep, s.phaseModStep + lane);
        modRing = s.modRing;
        oscRing = s.oscRing;
    }

    SONDRAVA_INLINE void store(OscLanes& s, int lane) const {
        storeLanes(carPhase, s.carPhase + lane);
        storeLanes(carLast, s.carLast + lane);
        storeLanes(modPhase, s.modPhase + lane);
        storeLanes(modLast, s.modLast + lane);
        storeLanes(feed1, s.feed1 + lane);
        storeLanes(feed2, s.feed2 + lane);
        storeLanes(phaseMod, s.phaseMod + lane);
    }

    SONDRAVA_INLINE static void shape(D& x, double ring) {
        if constexpr (use.ringed)
            x *= (ring - 1.0) + ring * x;
        else
            x = -x;
    }

    /// Leaves the carrier of the next frame in `carLast`.
    SONDRAVA_INLINE void next() {
        D c = carPhase * tableSteps;
        if constexpr (use.modulates) {
            D m = modPhase * tableSteps;
            if constexpr (use.modulatorFed) m += feed2 * modLast;
            sine(m);
            modLast = m;
            shape(m, modRing);
            c += phaseMod * m;
        } else {
            modBefore = modPhase;
        }
        modPhase += modIncr;
        if constexpr (use.carrierFed) c += feed1 * carLast;
        sine(c);
        carPhase += carIncr;
        shape(c, oscRing);
        carLast = c;
        feed1 += feed1Step;
        feed2 += feed2Step;
        phaseMod += phaseModStep;
    }

    /// Behind the last frame.
    SONDRAVA_INLINE void finish() {
        if constexpr (!use.modulates) {
            modLast = modBefore * tableSteps;
            sine(modLast);
        }
    }
};

/// All operators of up to N lanes; the strip that follows is four or eight wide.
template <int N, Use use>
struct Bank {
    static constexpr int stripLanes = std::max(N, 4);
    static constexpr int perGroup = N < 4 ? 1 : 4;
    static constexpr int groups = N / perGroup;
    using D = std::conditional_t < N<4, double, Doubles>;
    using Floats = typename Vectors<stripLanes>::Floats;

    Operators<D, use> ops[groups];

    SONDRAVA_INLINE explicit Bank(const OscLanes& s) {
        for (int g = 0; g < groups; g++) ops[g].load(s, g * perGroup);
    }
    SONDRAVA_INLINE void store(OscLanes& s) {
        for (int g = 0; g < groups; g++) {
            ops[g].finish();
            ops[g].store(s, g * perGroup);
        }
    }
    SONDRAVA_INLINE void next(Floats& out) {
        for (int g = 0; g < groups; g++) ops[g].next();
        if constexpr (N == 8)
            out = __builtin_shufflevector(__builtin_convertvector(ops[0].carLast, Floats4),
                                          __builtin_convertvector(ops[1].carLast, Floats4), 0, 1, 2,
                                          3, 4, 5, 6, 7);
        else if constexpr (N == 4)
            out = __builtin_convertvector(ops[0].carLast, Floats4);
        else
            out = Floats4{float(ops[0].carLast), float(ops[1].carLast), 0.0f, 0.0f};
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

template <int N, Use use>
SONDRAVA_INLINE void runLanes(OscLanes& s, float* left, float* right, int n) {
    using Bank = Bank<N, use>;
    constexpr int width = Bank::stripLanes;
    Bank bank(s);
    StripRegisters<width> strip(s.strip);
    typename Bank::Floats direct, cross;
    loadLanes(direct, s.direct);
    loadLanes(cross, s.cross);
    const bool dist = s.dist;
    for (int i = 0; i < n; i++) {
        typename Bank::Floats c, neighbour;
        bank.next(c);
        swapNeighbours<width>(c, neighbour);
        typename Bank::Floats y = direct * c + cross * neighbour;
        strip.filter(y);
        if (dist) softClip<width>(y);
        strip.mix(y, left + i, right + i);
    }
    bank.store(s);
    strip.store(s.strip);
}

constexpr Use full{}, ringed{.ringed = true}, carrierFed{.modulatorFed = false},
    unfed{.carrierFed = false, .modulatorFed = false},
    alone{.modulatorFed = false, .modulates = false},
    bare{.carrierFed = false, .modulatorFed = false, .modulates = false};

template <Use use>
struct Runs {
    static SONDRAVA_CLONES void run2(OscLanes& s, float* left, float* right, int n) {
        runLanes<2, use>(s, left, right, n);
    }
    static SONDRAVA_CLONES void run4(OscLanes& s, float* left, float* right, int n) {
        runLanes<4, use>(s, left, right, n);
    }
    static SONDRAVA_CLONES void run8(OscLanes& s, float* left, float* right, int n) {
        runLanes<8, use>(s, left, right, n);
    }
};

using Run = void (*)(OscLanes&, float*, float*, int);

template <Use use>
Run runOf(int lanes) {
    if (lanes <= 2) return Runs<use>::run2;
    return lanes <= 4 ? Runs<use>::run4 : Runs<use>::run8;
}

bool isNothing(const double* values, const double* steps, int lanes) {
    const auto zero = [](double x) { return x == 0.0; };
    return std::all_of(values, values + lanes, zero) && std::all_of(steps, steps + lanes, zero);
}

Run runFor(const OscLanes& s, int lanes) {
    if (s.modRing != 0.0 || s.oscRing != 0.0) return runOf<ringed>(lanes);
    if (!isNothing(s.feed2, s.feed2Step, lanes)) return runOf<full>(lanes);
    const bool fed = !isNothing(s.feed1, s.feed1Step, lanes);
    if (isNothing(s.phaseMod, s.phaseModStep, lanes))
        return fed ? runOf<alone>(lanes) : runOf<bare>(lanes);
    return fed ? runOf<carrierFed>(lanes) : runOf<unfed>(lanes);
}

void setBackPhase(double& phase) {
    if (phase >= setBackFrom) phase -= std::floor((phase - setBackTo) / turn) * turn;
}

} // namespace

void OscLanes::setBack(int lane) {
    setBackPhase(carPhase[lane]);
    setBackPhase(modPhase[lane]);
}

void OscLanes::run(int lanes, float* left, float* right, int n) {
    const int wide = lanes <= 2 ? 2 : lanes <= 4 ? 4 : 8;
    if (n > 0) runFor(*this, wide)(*this, left, right, n);
}
