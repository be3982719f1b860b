#include "common/fx/EqBands.h"

#include <algorithm>
#include <cmath>

namespace {

/// Left and right.
using Pair = double __attribute__((vector_size(16)));
/// The bands.
using Lanes = double __attribute__((vector_size(32)));
using Mask = long long __attribute__((vector_size(32)));

/// Steps by which a band lags behind the one before it. A band waits most of the time for its own
/// last output; two steps let that be the only thing it waits for.
constexpr long lag = 2;
constexpr long depth = lag * (maxEqBands - 1); ///< steps from the first band to the last
constexpr Lanes lags = {3 * lag, 2 * lag, lag, 0};
constexpr double quiet = 1e-10;

/// The first band is in the last lane, so that the sound comes out of the first.
int laneOf(int band) {
    return maxEqBands - 1 - band;
}

struct Filters {
    Lanes b0, b1, b2, a1, a2;
};

/// Forgets what is too quiet to be heard, and all of a band that has met what is no number.
void settle(EqBand& b) {
    for (double* y : {&b.y1L, &b.y2L, &b.y1R, &b.y2R})
        if (std::fabs(*y) < quiet) *y = 0.0;
    const double sum = b.x1L + b.x2L + b.y1L + b.y2L + b.x1R + b.x2R + b.y1R + b.y2R;
    if (!std::isfinite(sum)) b.silence();
}

/// All bands of one side, each at another frame: at step n the band of lag k works on frame n - k.
struct Side {
    Lanes x1{}, x2{}, y1{}, y2{};
    Lanes out1{}, out2{}; ///< results of the last two steps, whether a lane was at work or not

    /// A step in which every band has a frame.
    [[gnu::always_inline]] float step(const Filters& f, float in) {
        const Lanes x = __builtin_shufflevector(y2, Lanes{} + double(in), 1, 2, 3, 4);
        const Lanes y = f.b0 * x + f.b1 * x1 + f.b2 * x2 - f.a1 * y1 - f.a2 * y2;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        return float(y[0]);
    }
    /// A step at either end of a block: only the bands that are `on` have a frame.
    [[gnu::always_inline]] float step(const Filters& f, float in, const Mask& on) {
        const Lanes x = __builtin_shufflevector(out2, Lanes{} + double(in), 1, 2, 3, 4);
        const Lanes y = f.b0 * x + f.b1 * x1 + f.b2 * x2 - f.a1 * y1 - f.a2 * y2;
        x2 = on ? x1 : x2;
        x1 = on ? x : x1;
        y2 = on ? y1 : y2;
        y1 = on ? y : y1;
        out2 = out1;
        out1 = y;
        return float(y[0]);
    }
    void rejoin() {
        out1 = y1;
        out2 = y2;
    }

    void load(int lane, double fromX1, double fromX2, double fromY1, double fromY2) {
        x1[lane] = fromX1;
        x2[lane] = fromX2;
        y1[lane] = fromY1;
        y2[lane] = fromY2;
    }
    void save(int lane, double& toX1, double& toX2, double& toY1, double& toY2) const {
        toX1 = x1[lane];
        toX2 = x2[lane];
        toY1 = y1[lane];
        toY2 = y2[lane];
    }
};

/// Both sides and the filters that they share. A lane without a band hands on what it gets.
struct Pipeline {
    Filters f{Lanes{} + 1.0, {}, {}, {}, {}};
    Side left, right;

    void load(int lane, const EqBand& b) {
        f.b0[lane] = b.b0;
        f.b1[lane] = b.b1;
        f.b2[lane] = b.b2;
        f.a1[lane] = b.a1;
        f.a2[lane] = b.a2;
        left.load(lane, b.x1L, b.x2L, b.y1L, b.y2L);
        right.load(lane, b.x1R, b.x2R, b.y1R, b.y2R);
    }
    void save(int lane, EqBand& b) const {
        left.save(lane, b.x1L, b.x2L, b.y1L, b.y2L);
        right.save(lane, b.x1R, b.x2R, b.y1R, b.y2R);
    }

    [[gnu::always_inline]] void edge(long step, float* l, float* r, long frames) {
        const Lanes at = Lanes{} + double(step) - lags;
        const Mask on = (at >= 0.0) & (at < double(frames));
        const bool fed = step < frames;
        const float outL = left.step(f, fed ? l[step] : 0.0f, on);
        const float outR = right.step(f, fed ? r[step] : 0.0f, on);
        if (step < depth) return;
        l[step - depth] = outL;
        r[step - depth] = outR;
    }

    [[gnu::always_inline]] void run(float* l, float* r, long frames) {
        long n = 0;
        for (; n < std::min(depth, frames); n++) edge(n, l, r, frames);
        if (n < frames) {
            for (; n < frames; n++) {
                l[n - depth] = left.step(f, l[n]);
                r[n - depth] = right.step(f, r[n]);
            }
            left.rejoin();
            right.rejoin();
        }
        for (; n < frames + depth; n++) edge(n, l, r, frames);
    }
};

/// Whether the machine has registers for all bands.
bool fitsLanes() {
#if defined(__x86_64__)
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

#if defined(__x86_64__)
[[gnu::target("avx2")]]
#endif
void runPipeline(Pipeline& pipeline, float* left, float* right, long frames) {
    Pipeline p = pipeline;
    p.run(left, right, frames);
    pipeline = p;
}

void runInLanes(EqBand* const* bands, int count, float* left, float* right, long frames) {
    Pipeline p;
    for (int k = 0; k < count; k++) p.load(laneOf(k), *bands[k]);
    runPipeline(p, left, right, frames);
    for (int k = 0; k < count; k++) p.save(laneOf(k), *bands[k]);
}

/// One band, its two sides in step.
struct PairBand {
    Pair b0 = Pair{} + 1.0, b1{}, b2{}, a1{}, a2{};
    Pair x1{}, x2{}, y1{}, y2{};

    void load(const EqBand& b) {
        b0 = Pair{} + b.b0;
        b1 = Pair{} + b.b1;
        b2 = Pair{} + b.b2;
        a1 = Pair{} + b.a1;
        a2 = Pair{} + b.a2;
        x1 = Pair{b.x1L, b.x1R};
        x2 = Pair{b.x2L, b.x2R};
        y1 = Pair{b.y1L, b.y1R};
        y2 = Pair{b.y2L, b.y2R};
    }
    void save(EqBand& b) const {
        b.x1L = x1[0];
        b.x1R = x1[1];
        b.x2L = x2[0];
        b.x2R = x2[1];
        b.y1L = y1[0];
        b.y1R = y1[1];
        b.y2L = y2[0];
        b.y2R = y2[1];
    }
};

} // namespace

void EqBand::silence() {
    *this = EqBand{static_cast<const EqCoeffs&>(*this)};
}

void runBands(EqBand* const* bands, int count, float* left, float* right, long frames) {
    if (frames > 0 && fitsLanes())
        runInLanes(bands, count, left, right, frames);
    else
        runBandsInPairs(bands, count, left, right, frames);
}

void settleBands(EqBand* const* bands, int count) {
    for (int k = 0; k < count; k++) settle(*bands[k]);
}

bool bandsRest(const EqBand* const* bands, int count) {
    return std::all_of(bands, bands + count, [](const EqBand* b) {
        return b->x1L == 0.0 && b->x2L == 0.0 && b->y1L == 0.0 && b->y2L == 0.0 && b->x1R == 0.0 &&
               b->x2R == 0.0 && b->y1R == 0.0 && b->y2R == 0.0;
    });
}

void runBandsInPairs(EqBand* const* bands, int count, float* left, float* right, long frames) {
    PairBand row[maxEqBands];
    for (int k = 0; k < count; k++) row[k].load(*bands[k]);
    for (long i = 0; i < frames; i++) {
        Pair x = {double(left[i]), double(right[i])};
        for (PairBand& b : row) {
            const Pair y = b.b0 * x + b.b1 * b.x1 + b.b2 * b.x2 - b.a1 * b.y1 - b.a2 * b.y2;
            b.x2 = b.x1;
            b.x1 = x;
            b.y2 = b.y1;
            b.y1 = y;
            x = y;
        }
        left[i] = float(x[0]);
        right[i] = float(x[1]);
    }
    for (int k = 0; k < count; k++) row[k].save(*bands[k]);
}
