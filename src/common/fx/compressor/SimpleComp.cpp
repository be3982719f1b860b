#include "common/fx/compressor/SimpleComp.h"

#include "base/Clones.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace comp {
namespace {

constexpr int piece = 128; // frames at a time: all of a step before the next one
constexpr double octavesPerDb = 0.332192809488736235; // of power: log2(10) / 10
constexpr float octavesPerNeper = float(1 / std::numbers::ln2);
constexpr int mantissaBits = 23, exponentBias = 127;
constexpr std::int32_t rootHalf = 0x3f3504f3; // bits of sqrt(0.5)

/// Within 1e-7 of its size or of 1, for positive numbers that are not denormal: the exponent, and
/// ln m = 2 (t + t^3 / 3 + t^5 / 5 ...) with t = (m - 1) / (m + 1) for m of sqrt(0.5) to sqrt(2).
[[gnu::always_inline]] inline float log2Of(float x) {
    const auto bits = std::bit_cast<std::int32_t>(x);
    const std::int32_t exponent = (bits - rootHalf) >> mantissaBits;
    const float m = std::bit_cast<float>(bits - (exponent << mantissaBits));
    const float t = (m - 1.0f) / (m + 1.0f), tt = t * t;
    const float series = 1 + tt * (1 / 3.0f + tt * (1 / 5.0f + tt * (1 / 7.0f + tt * (1 / 9.0f))));
    return float(exponent) + 2.0f * octavesPerNeper * t * series;
}

/// Within 1e-7 of its size, for -120 to 120: a whole power of two, and the series of e^x for the
/// rest, which is at most half an octave.
[[gnu::always_inline]] inline float exp2Of(float y) {
    constexpr int lift = 256; // has the cast round down, below 0 too
    const int whole = int(y + (lift + 0.5f)) - lift;
    const float x = (y - float(whole)) * float(std::numbers::ln2);
    const float high = 1 / 24.0f + x * (1 / 120.0f + x * (1 / 720.0f + x * (1 / 5040.0f)));
    const float series = 1 + x * (1 + x * (1 / 2.0f + x * (1 / 6.0f + x * high)));
    return series * std::bit_cast<float>((whole + exponentBias) << mantissaBits);
}

SONDRAVA_CLONES void findPower(const float* inL, const float* inR, int count,
                               double* __restrict power) {
    for (int i = 0; i < count; i++) {
        const double left = double(inL[i]), right = double(inR[i]);
        power[i] = left * left + right * right + dcOffset;
    }
}

/// What lies over the threshold, in dB; both are octaves of power. Finite, whatever the power is.
SONDRAVA_CLONES void findExcess(const double* power, float threshold, int count,
                                double* __restrict over) {
    for (int i = 0; i < count; i++) {
        const float octaves = log2Of(float(power[i]));
        const float above = (octaves > threshold ? octaves : threshold) - threshold;
        over[i] = double(above) * (1 / octavesPerDb) + dcOffset;
    }
}

SONDRAVA_CLONES void findGain(const double* excess, float octaves, float output, int count,
                              float* __restrict gain) {
    for (int i = 0; i < count; i++) gain[i] = exp2Of(float(excess[i]) * octaves) * output;
}

SONDRAVA_CLONES void scale(const float* in, const float* gain, int count, float* __restrict out) {
    for (int i = 0; i < count; i++) out[i] = in[i] * gain[i];
}

} // namespace

double lin2dB(double lin) {
    return std::log(lin) * dbPerNeper;
}

double dB2lin(double dB) {
    return std::exp(dB * neperPerDb);
}

EnvelopeDetector::EnvelopeDetector(double time, double rate) : sampleRate(rate), ms(time) {
    setCoef();
}

void EnvelopeDetector::setTc(double time) {
    assert(time > 0.0);
    ms = time;
    setCoef();
}

void EnvelopeDetector::setSampleRate(double rate) {
    assert(rate > 0.0);
    sampleRate = rate;
    setCoef();
}

void EnvelopeDetector::setCoef() {
    coef = std::exp(-1000.0 / (ms * sampleRate));
}

AttRelEnvelope::AttRelEnvelope(double attackMs, double releaseMs, double sampleRate)
    : attack(attackMs, sampleRate), release(releaseMs, sampleRate) {
}

void AttRelEnvelope::setAttack(double ms) {
    attack.setTc(ms);
}

void AttRelEnvelope::setRelease(double ms) {
    release.setTc(ms);
}

void AttRelEnvelope::setSampleRate(double rate) {
    attack.setSampleRate(rate);
    release.setSampleRate(rate);
}

void SimpleComp::setGain(double dB) {
    outputdB = dB;
    output = dB2lin(dB);
}

void SimpleComp::initRuntime() {
    envdB = dcOffset;
}

void SimpleCompRms::setSampleRate(double rate) {
    SimpleComp::setSampleRate(rate);
    rms.setSampleRate(rate);
}

void SimpleCompRms::initRuntime() {
    SimpleComp::initRuntime();
    envSq = dcOffset;
}

void SimpleCompRms::settle() {
    constexpr double nothing = 1e-6, silence = 1e-12; // dB, and a square of a sample
    if (envdB < nothing && envSq < silence) initRuntime();
}

bool SimpleCompRms::quiet() const {
    return envdB == dcOffset && envSq == dcOffset;
}

void SimpleCompRms::setWindow(double ms) {
    rms.setTc(ms);
}

void SimpleCompRms::chooseRatio() {
    if (!limiter) {
        if (ratio == limitRatio) ratio = savedRatio;
        return;
    }
    rms.setTc(limitWindow);
    if (ratio != limitRatio) savedRatio = ratio;
    ratio = limitRatio;
}

void SimpleCompRms::process(const float* inL, const float* inR, const float* keyL,
                            const float* keyR, float* outL, float* outR, long frames) {
    chooseRatio();
    const float threshold = float(threshdB * octavesPerDb);
    const float octaves = float((ratio - 1.0) * octavesPerDb / 2); // of amplitude, for each dB
    double level[piece], excess[piece];
    float gain[piece], scaled[piece];
    for (long done = 0; done < frames; done += piece) {
        const int count = int(std::min<long>(piece, frames - done));
        findPower(keyL + done, keyR + done, count, level);
        for (int i = 0; i < count; i++) {
            rms.run(level[i], envSq);
            level[i] = envSq;
        }
        findExcess(level, threshold, count, excess);
        for (int i = 0; i < count; i++) {
            run(excess[i], envdB);
            excess[i] = envdB;
        }
        findGain(excess, octaves, float(output), count, gain);
        scale(inL + done, gain, count, scaled);
        std::copy_n(scaled, count, outL + done);
        scale(inR + done, gain, count, scaled);
        std::copy_n(scaled, count, outR + done);
    }
    if (!std::isfinite(envSq)) initRuntime();
}

} // namespace comp
