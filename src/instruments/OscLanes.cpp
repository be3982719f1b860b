#include "instruments/OscLanes.h"

#include "common/WaveTables.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

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
    using Pairs = uint64_t __attribute__((vector_size(16)));
    const Pairs at = Pairs(__builtin_convertvector(steps, Ints4) & tableMask);
    steps = Doubles{sinus[uint32_t(at[0])], sinus[at[0] >> 32], sinus[uint32_t(at[1])],
                    sinus[at[1] >> 32]};
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
    D modRing, oscRing;

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
        loadLanes(modRing, s.modRing + lane);
        loadLanes(oscRing, s.oscRing + lane);
        modBefore = modPhase;
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

    SONDRAVA_INLINE static void shape(D& x, const D& ring) {
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

/// Some lanes, of D each, in step.
template <class D, int groups, Use use>
SONDRAVA_INLINE void runOperators(OscLanes& s, float (*wave)[OscLanes::lanesInAll], int n) {
    constexpr int width = sizeof(D) / sizeof(double);
    Operators<D, use> ops[groups];
    for (int g = 0; g < groups; g++) ops[g].load(s, g * width);
    for (int i = 0; i < n; i++)
        for (int g = 0; g < groups; g++) {
            ops[g].next();
            if constexpr (width == 1)
                wave[i][g] = float(ops[g].carLast);
            else
                storeLanes(__builtin_convertvector(ops[g].carLast, Floats4), &wave[i][g * width]);
        }
    for (int g = 0; g < groups; g++) {
        ops[g].finish();
        ops[g].store(s, g * width);
    }
}

using Wave = float (*)[OscLanes::lanesInAll];
using Run = void (*)(OscLanes&, Wave, int);

template <Use use>
struct Runs {
    static SONDRAVA_CLONES void run2(OscLanes& s, Wave wave, int n) {
        runOperators<double, 2, use>(s, wave, n);
    }
    static SONDRAVA_CLONES void run4(OscLanes& s, Wave wave, int n) {
        if constexpr (use.carrierFed && !use.modulatorFed) // least to do, so one by one is sooner
            runOperators<double, 4, use>(s, wave, n);
        else
            runOperators<Doubles, 1, use>(s, wave, n);
    }
    static SONDRAVA_CLONES void run8(OscLanes& s, Wave wave, int n) {
        runOperators<Doubles, 2, use>(s, wave, n);
    }
    static SONDRAVA_CLONES void run12(OscLanes& s, Wave wave, int n) {
        runOperators<Doubles, 3, use>(s, wave, n);
    }
    static SONDRAVA_CLONES void run16(OscLanes& s, Wave wave, int n) {
        runOperators<Doubles, 4, use>(s, wave, n);
    }
};

template <Use use>
Run runOf(int lanes) {
    if (lanes <= 2) return Runs<use>::run2;
    if (lanes <= 4) return Runs<use>::run4;
    if (lanes <= 8) return Runs<use>::run8;
    return lanes <= 12 ? Runs<use>::run12 : Runs<use>::run16;
}

constexpr Use full{}, ringed{.ringed = true}, carrierFed{.modulatorFed = false},
    unfed{.carrierFed = false, .modulatorFed = false},
    alone{.modulatorFed = false, .modulates = false},
    bare{.carrierFed = false, .modulatorFed = false, .modulates = false};

bool isNothing(const double* values, int lanes) {
    return std::all_of(values, values + lanes, [](double x) { return x == 0.0; });
}

bool isNothing(const double* values, const double* steps, int lanes) {
    return isNothing(values, lanes) && isNothing(steps, lanes);
}

Run runFor(const OscLanes& s, int lanes) {
    if (!isNothing(s.modRing, s.oscRing, lanes)) return runOf<ringed>(lanes);
    if (!isNothing(s.feed2, s.feed2Step, lanes)) return runOf<full>(lanes);
    const bool fed = !isNothing(s.feed1, s.feed1Step, lanes);
    if (isNothing(s.phaseMod, s.phaseModStep, lanes))
        return fed ? runOf<alone>(lanes) : runOf<bare>(lanes);
    return fed ? runOf<carrierFed>(lanes) : runOf<unfed>(lanes);
}

using Floats = Vectors<maxLanes>::Floats;
using Ints = Vectors<maxLanes>::Ints;

/// The filters of eight lanes, and what leads to and from them.
struct FilterLanes : FilterRegisters<maxLanes> {
    Floats direct, cross;
    Ints dist;

    SONDRAVA_INLINE FilterLanes(const OscLanes& s, int block)
        : FilterRegisters<maxLanes>(s.strips[block]) {
        loadLanes(direct, s.direct + block * maxLanes);
        loadLanes(cross, s.cross + block * maxLanes);
        loadLanes(dist, s.dist + block * maxLanes);
    }

    template <bool anyDist>
    SONDRAVA_INLINE void next(float* frame) {
        Floats c;
        loadLanes(c, frame);
        Floats y = direct * c + cross * __builtin_shufflevector(c, c, 1, 0, 3, 2, 5, 4, 7, 6);
        filter(y);
        at += 1.0f;
        if constexpr (anyDist) {
            Floats soft = y;
            softClip<maxLanes>(soft);
            y = dist ? soft : y;
        }
        storeLanes(y, frame);
    }
};

template <int blocks, bool anyDist>
SONDRAVA_INLINE void runFilters(OscLanes& s, Wave wave, int n) {
    FilterLanes first(s, 0), last(s, blocks - 1);
    for (int i = 0; i < n; i++) {
        first.template next<anyDist>(wave[i]);
        if constexpr (blocks > 1) last.template next<anyDist>(wave[i] + maxLanes);
    }
    if constexpr (blocks > 1) last.store(s.strips[1]);
    first.store(s.strips[0]);
}

SONDRAVA_CLONES void filter8(OscLanes& s, Wave wave, int n) {
    runFilters<1, false>(s, wave, n);
}
SONDRAVA_CLONES void filter16(OscLanes& s, Wave wave, int n) {
    runFilters<2, false>(s, wave, n);
}
SONDRAVA_CLONES void clip8(OscLanes& s, Wave wave, int n) {
    runFilters<1, true>(s, wave, n);
}
SONDRAVA_CLONES void clip16(OscLanes& s, Wave wave, int n) {
    runFilters<2, true>(s, wave, n);
}

Run filterFor(const OscLanes& s, int lanes) {
    const bool anyDist = std::any_of(s.dist, s.dist + lanes, [](int x) { return x != 0; });
    if (lanes <= maxLanes) return anyDist ? clip8 : filter8;
    return anyDist ? clip16 : filter16;
}

/// Four frames of four lanes, by lane.
SONDRAVA_INLINE void turn4(Wave wave, int frame, int lane, OscLanes& s) {
    Floats4 a, b, c, d;
    loadLanes(a, &wave[frame][lane]);
    loadLanes(b, &wave[frame + 1][lane]);
    loadLanes(c, &wave[frame + 2][lane]);
    loadLanes(d, &wave[frame + 3][lane]);
    const Floats4 ab = __builtin_shufflevector(a, b, 0, 4, 1, 5);
    const Floats4 cd = __builtin_shufflevector(c, d, 0, 4, 1, 5);
    const Floats4 abHigh = __builtin_shufflevector(a, b, 2, 6, 3, 7);
    const Floats4 cdHigh = __builtin_shufflevector(c, d, 2, 6, 3, 7);
    storeLanes(__builtin_shufflevector(ab, cd, 0, 1, 4, 5), &s.sound[lane][frame]);
    storeLanes(__builtin_shufflevector(ab, cd, 2, 3, 6, 7), &s.sound[lane + 1][frame]);
    storeLanes(__builtin_shufflevector(abHigh, cdHigh, 0, 1, 4, 5), &s.sound[lane + 2][frame]);
    storeLanes(__builtin_shufflevector(abHigh, cdHigh, 2, 3, 6, 7), &s.sound[lane + 3][frame]);
}

SONDRAVA_CLONES void turnWave(OscLanes& s, Wave wave, int lanes, int frames) {
    for (int lane = 0; lane < lanes; lane += lanesPerGroup)
        for (int frame = 0; frame < frames; frame += 4) turn4(wave, frame, lane, s);
}

/// One side of some lanes on the way to their sum, which has the order of a tree: first those four
/// apart, then those two apart, then neighbours. Lanes that give nothing are left out.
class SideSum {
public:
    SideSum(OscLanes& lanes, bool isRight, int frames)
        : s(lanes), right(isRight), padded((frames + maxLanes - 1) / maxLanes * maxLanes) {}

    SONDRAVA_INLINE void take(int place, int lane) {
        StripLanes& strip = s.stripOf(lane);
        const int i = lane % maxLanes;
        const float gain = right ? strip.gainR[i] : strip.gainL[i];
        const float step = right ? strip.gainRStep[i] : strip.gainLStep[i];
        if (gain == 0.0f && step == 0.0f) return;
        float* row = rows[place % 4];
        Floats peak{};
        Floats at = strip.at[i] + Floats{0, 1, 2, 3, 4, 5, 6, 7};
        const bool more = used[place % 4];
        for (int f = 0; f < padded; f += maxLanes, at += float(maxLanes)) {
            Floats y;
            loadLanes(y, s.sound[lane] + f);
            y *= gain + at * step;
            const Floats magnitude = Floats(Ints(y) & 0x7FFFFFFF);
            peak = magnitude > peak ? magnitude : peak;
            if (more) {
                Floats before;
                loadLanes(before, row + f);
                y = before + y;
            }
            storeLanes(y, row + f);
        }
        used[place % 4] = true;
        const Floats apart4 = __builtin_shufflevector(peak, peak, 4, 5, 6, 7, 0, 1, 2, 3);
        peak = peak > apart4 ? peak : apart4;
        const Floats apart2 = __builtin_shufflevector(peak, peak, 2, 3, 0, 1, 6, 7, 4, 5);
        peak = peak > apart2 ? peak : apart2;
        float& highest = right ? strip.peakR[i] : strip.peakL[i];
        highest = std::max({highest, float(peak[0]), float(peak[1])});
    }

    SONDRAVA_INLINE void addTo(float* out, int frames) {
        join(0, 2);
        join(1, 3);
        join(0, 1);
        if (!used[0]) return;
        int f = 0;
        for (; f + maxLanes <= frames; f += maxLanes) {
            Floats sum, more;
            loadLanes(sum, out + f);
            loadLanes(more, rows[0] + f);
            storeLanes(sum + more, out + f);
        }
        for (; f < frames; f++) out[f] += rows[0][f];
    }

private:
    OscLanes& s;
    bool right;
    int padded;
    bool used[4] = {};
    float* rows[4] = {space[0], space[1], space[2], space[3]};
    alignas(64) float space[4][OscLanes::room];

    SONDRAVA_INLINE void join(int a, int b) {
        if (!used[b]) return;
        if (!used[a]) {
            std::swap(rows[a], rows[b]);
        } else {
            for (int f = 0; f < padded; f += maxLanes) {
                Floats sum, more;
                loadLanes(sum, rows[a] + f);
                loadLanes(more, rows[b] + f);
                storeLanes(sum + more, rows[a] + f);
            }
        }
        used[a] = true;
    }
};

SONDRAVA_CLONES void mixSide(OscLanes& s, int first, int lanes, bool right, float* out, int n) {
    SideSum sum(s, right, n);
    for (int place = 0; place < lanes; place++) sum.take(place, first + place);
    sum.addTo(out, n);
}

void setBackPhase(double& phase) {
    if (phase >= setBackFrom) phase -= std::floor((phase - setBackTo) / turn) * turn;
}

} // namespace

void OscLanes::leaveEmpty(int lane) {
    for (double* values : {carPhase, carIncr, carLast, modPhase, modIncr, modLast, feed1, feed1Step,
                           feed2, feed2Step, phaseMod, phaseModStep, modRing, oscRing})
        values[lane] = 0.0;
    direct[lane] = cross[lane] = 0.0f;
    dist[lane] = 0;
    stripOf(lane).leaveEmpty(lane % maxLanes);
}

void OscLanes::setBack(int lane) {
    setBackPhase(carPhase[lane]);
    setBackPhase(modPhase[lane]);
}

void OscLanes::run(int lanes, int n) {
    runFor(*this, lanes)(*this, wave, n);
    filterFor(*this, lanes)(*this, wave, n);
    const int padded = (n + maxLanes - 1) / maxLanes * maxLanes;
    for (int i = n; i < padded; i++) std::fill(std::begin(wave[i]), std::end(wave[i]), 0.0f);
    turnWave(*this, wave, lanes, padded);
}

void OscLanes::mix(int first, int lanes, float* left, float* right, int n) {
    mixSide(*this, first, lanes, false, left, n);
    mixSide(*this, first, lanes, true, right, n);
}

void OscLanes::pass(int lanes, int n) {
    for (int i = 0; i < lanes; i++) stripOf(i).at[i % maxLanes] += float(n);
}

void OscLanes::meter(int first, int lanes, CSound* owner) {
    float left = 0.0f, right = 0.0f;
    for (int lane = first; lane < first + lanes; lane++) {
        StripLanes& strip = stripOf(lane);
        left = std::max(left, std::exchange(strip.peakL[lane % maxLanes], 0.0f));
        right = std::max(right, std::exchange(strip.peakR[lane % maxLanes], 0.0f));
    }
    if (left > owner->peakL) owner->peakL = left;
    if (right > owner->peakR) owner->peakR = right;
}
