#include "common/fx/CFilterFX.h"

#include "base/Numbers.h"

#include <algorithm>

namespace {

constexpr double driveGain = 30.0;
constexpr double floorLevel = 1e-10;

/// Left and right, side by side.
using Pair = double __attribute__((vector_size(16)));

Pair pairOf(const double* sides) {
    return Pair{sides[0], sides[1]};
}

Pair frameOf(const float* left, const float* right, long i) {
    return Pair{double(left[i]), double(right[i])};
}

void savePair(double* sides, const Pair& p) {
    sides[0] = p[0];
    sides[1] = p[1];
}

Pair driven(const Pair& tap, double drive) {
    const double gain = driveGain * drive;
    return Pair{std::tanh(tap[0] * gain), std::tanh(tap[1] * gain)};
}

void dropRest(double& state) {
    if (!(std::fabs(state) >= floorLevel && std::isfinite(state))) state = 0.0;
}

} // namespace

struct CFilterFX::Block {
    const float* inL;
    const float* inR;
    float* outL;
    float* outR;
    int mode;
    double damping;

    void put(long i, const Pair& tap) const {
        outL[i] = float(tap[0]);
        outR[i] = float(tap[1]);
    }
};

void CFilterFX::Ramp::follow(float request) {
    if (request == target) return;
    target = request;
    left = length;
    step = (double(request) - value) / length;
}

void CFilterFX::Ramp::advance(long count) {
    if (left == 0) return;
    left -= int(count);
    if (left > 0) return;
    value = double(target);
    step = 0.0;
}

CFilterFX::CFilterFX(float hz, int frames) : CFX(hz, frames) {
    id = "Filter";
    type = fxFilter;
}

void CFilterFX::setEnabled(int on) {
    if (on) clearRequest = 1;
    CFX::setEnabled(on);
}

void CFilterFX::clear() {
    std::fill_n(lows, 2, 0.0);
    std::fill_n(bands, 2, 0.0);
    partOf = -1.0;
}

void CFilterFX::process(float* inL, float* inR, float* outL, float* outR, long frames) {
    if (clearRequest && clearRequest.exchange(0)) clear();
    cutoff.follow(fLimit(cutoffRequest, 0.0f, 1.0f));
    drive.follow(fLimit(driveRequest, 0.0f, 1.0f));
    const double damping = 1.0 - double(fLimit(resonance, 0.0f, 1.0f)) * 0.99;
    const Block block{inL, inR, outL, outR, filterMode, damping};
    for (long done = 0; done < frames;) {
        long count = frames - done;
        for (const Ramp* ramp : {&cutoff, &drive})
            if (ramp->left > 0) count = std::min<long>(count, ramp->left);
        if (cutoff.left == 0 && drive.left == 0 && drive.value == 0.0)
            runSteady(block, done, count);
        else
            runMoving(block, done, count);
        cutoff.advance(count);
        drive.advance(count);
        done += count;
    }
    if (settles) settle();
}

namespace {

/// With a cutoff that stands, f low is kept as a sum of its own, and what band adds to itself is
/// gathered, so that one frame waits for two operations of the one before instead of six:
///     band += f (in - low - d band)  =  band (1 - f f - f d) + f in - f low.
template <int mode, class Frame, class Put>
[[gnu::always_inline]] inline void filter(Pair& low, Pair& band, Pair& part, double f, double d,
                                          long count, const Frame& frame, const Put& put) {
    const double square = f * f, kept = 1.0 - square - f * d;
    Pair lows = low, bands = band, lowPart = part;
    for (long i = 0; i < count; i++) {
        const Pair in = frame(i);
        lows += f * bands;
        const Pair next = kept * bands + (f * in - lowPart);
        lowPart += square * bands;
        const Pair highs = in - lows - d * bands;
        bands = next;
        put(i, mode == CFilterFX::low ? lows : mode == CFilterFX::band ? bands : highs);
    }
    low = lows;
    band = bands;
    part = lowPart;
}

} // namespace

void CFilterFX::runSteady(const Block& b, long from, long count) {
    Pair l = pairOf(lows), m = pairOf(bands);
    const double f = cutoff.value * cutoff.value;
    Pair part = partOf == f ? pairOf(lowParts) : f * l;
    const auto frame = [&b, from](long i) { return frameOf(b.inL, b.inR, from + i); };
    const auto put = [&b, from](long i, const Pair& tap) { b.put(from + i, tap); };
    if (b.mode == high)
        filter<high>(l, m, part, f, b.damping, count, frame, put);
    else if (b.mode == band)
        filter<band>(l, m, part, f, b.damping, count, frame, put);
    else
        filter<low>(l, m, part, f, b.damping, count, frame, put);
    savePair(lows, l);
    savePair(bands, m);
    savePair(lowParts, part);
    partOf = f;
}

void CFilterFX::runMoving(const Block& b, long from, long count) {
    Pair l = pairOf(lows), m = pairOf(bands);
    for (long i = from; i < from + count; i++) {
        const double f = cutoff.value * cutoff.value;
        l += f * m;
        const Pair h = frameOf(b.inL, b.inR, i) - l - b.damping * m;
        m += f * h;
        const Pair tap = b.mode == high ? h : b.mode == band ? m : l;
        b.put(i, drive.value > 0.0 ? driven(tap, drive.value) : tap);
        cutoff.value += cutoff.step;
        drive.value += drive.step;
    }
    savePair(lows, l);
    savePair(bands, m);
    partOf = -1.0;
}

/// What has died away is cut off, and so is what is no number.
void CFilterFX::settle() {
    for (int side : {0, 1}) {
        dropRest(lows[side]);
        dropRest(bands[side]);
    }
    partOf = -1.0;
}
