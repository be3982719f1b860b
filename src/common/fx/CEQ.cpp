#include "common/fx/CEQ.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace {

constexpr double highestShare = 0.49; ///< of the rate: a band beyond half of it would run away

struct Biquad {
    double b0, b1, b2, a0, a1, a2;
};

/// A shelf: `side` is 1 for the low one, -1 for the high one.
Biquad shelf(double side, double a, double cosine, double slope) {
    const double c = cosine * side, up = a + 1, down = a - 1;
    return {a * (up - down * c + slope), side * 2 * a * (down - up * c),
            a * (up - down * c - slope), up + down * c + slope,
            side * -2 * (down + up * c), up + down * c - slope};
}

Biquad biquad(int type, double a, double c, double al) {
    const double slope = std::sqrt(4 * a) * al;
    switch (type) {
    case eqLowShelf:
        return shelf(1, a, c, slope);
    case eqPeaking:
        return {1 + al * a, -2 * c, 1 - al * a, 1 + al / a, -2 * c, 1 - al / a};
    case eqHighShelf:
        return shelf(-1, a, c, slope);
    case eqLowPass:
        return {(1 - c) / 2, 1 - c, (1 - c) / 2, 1 + al, -2 * c, 1 - al};
    case eqHighPass:
        return {(1 + c) / 2, -(1 + c), (1 + c) / 2, 1 + al, -2 * c, 1 - al};
    case eqBandPass:
        return {al, 0, -al, 1 + al, -2 * c, 1 - al};
    case eqNotch:
        return {1, -2 * c, 1, 1 + al, -2 * c, 1 - al};
    default:
        return {0, 0, 0, 1, 0, 0};
    }
}

} // namespace

EqCoeffs eqCoeffs(int type, double hz, double gainDb, double q, double rate) {
    const double w = std::min(hz / rate, highestShare) * 2 * std::numbers::pi;
    const double al = std::sin(w) / (2 * q);
    const Biquad f = biquad(type, std::pow(10.0, gainDb * 0.025), std::cos(w), al);
    return {f.b0 / f.a0, f.b1 / f.a0, f.b2 / f.a0, f.a1 / f.a0, f.a2 / f.a0};
}

CEQ::CEQ(int form) : filterType(form) {
    id = "EQ";
    calculateFilter();
    ready();
}

void CEQ::setRate(float hz) {
    CFX::setRate(hz);
    calculateFilter();
}

void CEQ::setFilterType(ToStore<int> form) {
    filterType = form;
    calculateFilter();
}

void CEQ::setGain(ToStore<float> db) {
    store(gain, db, minGain, maxGain);
    calculateFilter();
}

void CEQ::setQ(ToStore<float> value) {
    store(q, value, minQ, maxQ);
    calculateFilter();
}

void CEQ::setFrequency(ToStore<float> hz) {
    store(frequency, hz, minFrequency, maxFrequency);
    calculateFilter();
}

void CEQ::calculateFilter() {
    if (changes.fetchAdd(1) > 0) return; // the thread that is at it begins anew
    int served = 0;
    do {
        served = changes.loadAcquire();
        filter.draft() =
            eqCoeffs(filterType, double(frequency), double(gain), double(q), double(rate));
        filter.publish();
    } while (changes.fetchAdd(-served) != served);
}

EqBand* CEQ::ready() {
    if (filter.take()) static_cast<EqCoeffs&>(*this) = filter.taken();
    return this;
}

void CEQ::process(float* inL, float* inR, float* outL, float* outR, long frames) {
    if (frames < 1) return;
    const std::size_t bytes = std::size_t(frames) * sizeof(float);
    if (outL != inL) std::memcpy(outL, inL, bytes);
    if (outR != inR) std::memcpy(outR, inR, bytes);
    EqBand* band = ready();
    runBands(&band, 1, outL, outR, frames);
    if (settles) settleBands(&band, 1);
}
