#pragma once

#include "common/WaveTables.h"
#include "common/fx/CBitcrusher.h"
#include "common/fx/CChorus.h"
#include "common/fx/CCompressor.h"
#include "common/fx/CDelay.h"
#include "common/fx/CFilterFX.h"
#include "common/fx/CPhaser.h"
#include "common/fx/CReverb.h"

#include <algorithm>
#include <cmath>
#include <vector>

// The formulas of the effects written down as they are told, frame by frame: what the effects are
// measured against. Each takes its settings from the effect beside it.

struct PlainDelay {
    float feedback, cross, dry, wet, panL, panR;
    int lenL, lenR, posL = 0, posR = 0;
    std::vector<float> bufL = std::vector<float>(CDelay::bufferFrames), bufR = bufL;

    /// With its times in milliseconds and no spread.
    explicit PlainDelay(const CDelay& fx)
        : feedback(fx.feedback), cross(fx.cross), dry(fx.dry), wet(fx.wet),
          panL((fx.panLeft + 1) / 2), panR((fx.panRight + 1) / 2),
          lenL(int(fx.rate * fx.timeLeft * 0.001f)), lenR(int(fx.rate * fx.timeRight * 0.001f)) {}

    static float audible(float v) { return std::fabs(v) < 1e-10f ? 0.0f : v; }

    void process(const float* inL, const float* inR, float* outL, float* outR, long frames) {
        for (long i = 0; i < frames; i++) {
            const float tapL = bufL[size_t(posL)], tapR = bufR[size_t(posR)];
            const float wetL = tapL * wet, wetR = tapR * wet;
            bufL[size_t(posL)] = audible(feedback * ((1 - cross) * tapL + inL[i] + cross * tapR));
            if (++posL >= lenL) posL = 0;
            bufR[size_t(posR)] =
                audible(feedback * ((1 - cross) * tapR + (1 - cross) * inR[i] + cross * tapL));
            if (++posR >= lenR) posR = 0;
            outL[i] += (1 - panL) * wetL + (1 - panR) * wetR + inL[i] * dry;
            outR[i] += panR * wetR + panL * wetL + inR[i] * dry;
        }
    }
};

struct PlainChorus {
    static constexpr int mask = CChorus::bufferFrames - 1;
    double place = 0.0, step, offset, nominal, range;
    float feedback, dry, wet;
    int write = 0;
    std::vector<float> bufL = std::vector<float>(CChorus::bufferFrames), bufR = bufL;

    explicit PlainChorus(const CChorus& fx)
        : step(double(fx.frequency) * lfoTableSize / double(fx.rate)),
          offset(double(fx.phase) * lfoTableSize / 360),
          nominal(double(fx.delay) * double(fx.rate) * 0.001), range(nominal * double(fx.depth)),
          feedback(fx.feedback), dry(fx.dry), wet(fx.wet) {}

    float side(std::vector<float>& line, double at, float in) const {
        const double wave = double(sinusWave[int(at) & (lfoTableSize - 1)]);
        const double pos = write - nominal - 1 + range * wave;
        const int n = int(std::floor(pos));
        const float a = line[size_t(n & mask)], b = line[size_t((n + 1) & mask)];
        const float y = a + (b - a) * float(pos - n), v = in + feedback * y;
        line[size_t(write)] = std::fabs(v) < 1e-10f ? 0.0f : v;
        return in * dry + wet * y;
    }

    void process(const float* inL, const float* inR, float* outL, float* outR, long frames) {
        for (long i = 0; i < frames; i++) {
            outL[i] = side(bufL, place, inL[i]);
            outR[i] = side(bufR, place + offset, inR[i]);
            write = (write + 1) & mask;
            place += step;
        }
        if (place >= lfoTableSize) place -= lfoTableSize;
    }
};

struct PlainPhaser {
    double place = 0.0, step, offset;
    float feedback, low, high, dry, wet;
    int stages;
    float lastL = 0, lastR = 0, zL[CPhaser::maxStages] = {}, zR[CPhaser::maxStages] = {};

    explicit PlainPhaser(const CPhaser& fx)
        : step(double(fx.frequency) * lfoTableSize / double(fx.rate)),
          offset(double(fx.phase) * lfoTableSize / 360), feedback(fx.feedback * 0.998f),
          low(2 * fx.rangeMin / fx.rate), high(2 * fx.rangeMax / fx.rate), dry(fx.dry), wet(fx.wet),
          stages(fx.stages) {}

    float side(double at, float in, float& last, float* z) const {
        float x = in + last * feedback, y = x;
        const float w = low + (high - low) * sinusWave[int(at) & (lfoTableSize - 1)];
        const float a = (1 - w) / (w + 1);
        for (int s = 0; s < stages; s++) {
            y = -a * x + z[s];
            z[s] = y * a + x;
            x = y;
        }
        last = std::fabs(y) < 1e-10f ? 0.0f : y;
        return in * dry + wet * y;
    }

    void process(const float* inL, const float* inR, float* outL, float* outR, long frames) {
        for (long i = 0; i < frames; i++) {
            outL[i] = side(place, inL[i], lastL, zL);
            place += step;
            outR[i] = side(place + offset, inR[i], lastR, zR);
        }
        if (place >= lfoTableSize) place -= lfoTableSize;
    }
};

struct PlainReverb {
    static constexpr int lines = CReverb::lineCount, modLines = CReverb::modLineCount;
    static constexpr int preSize = CReverb::preDelayFrames + MDelayLine::spare;

    struct Line {
        std::vector<float> ring;
        int length, write = 0, read;
        float signL, signR, a, b, y = 0, pos = 0, last = 0;
        double phase, incr;

        void move(int& at) const {
            if (++at == length) at = 0;
        }
        float swept() {
            const float p = pos + 6 * sinus2[int(phase * waveTableSize) & (waveTableSize - 1)];
            phase += incr;
            if (++pos >= float(length)) pos -= float(length);
            int i = int(p >= 0 ? p : p - 1);
            const float f = p - float(i);
            i = i < 0 ? i + length : i >= length ? i - length : i;
            const int next = i + 1 == length ? 0 : i + 1;
            last = (ring[size_t(next)] - last) * f + ring[size_t(i)];
            return last;
        }
        float plain() {
            const float v = ring[size_t(read)];
            move(read);
            return v;
        }
        float filter(float x) {
            y = a * x - b * y;
            if (std::fabs(y) < 1e-10f) y = 0;
            return y;
        }
    };
    Line line[lines];
    std::vector<float> pre = std::vector<float>(preSize);
    int preWrite = 0, preDelay;
    float dry, wet;
    double power = 0.0;

    explicit PlainReverb(const CReverb& fx)
        : preDelay(int(fx.rate * float(fx.preDelay) * 0.001f)), dry(fx.dry), wet(fx.wet) {
        for (int i = 0; i < lines; i++) {
            Line& l = line[i];
            const int delay = fx.lengths[i], swing = i < modLines ? 6 : 0;
            l.length = delay + swing + MDelayLine::spare;
            l.ring.resize(size_t(l.length));
            l.read = l.length - delay;
            l.pos = float(l.read);
            l.signL = fx.signL[i];
            l.signR = fx.signR[i];
            l.a = fx.filters[i].a;
            l.b = fx.filters[i].b;
            l.phase = i / 8.0;
            l.incr = 2.0 / double(fx.rate);
        }
    }

    void process(const float* inL, const float* inR, float* outL, float* outR, long frames) {
        power = 0.0;
        for (long i = 0; i < frames; i++) {
            const float mono = (inL[i] + inR[i]) * 0.5f;
            float accL = mono, accR = mono, sum = 0, y[lines];
            pre[size_t(preWrite)] = mono;
            if (++preWrite == preSize) preWrite = 0;
            int at = preWrite - preDelay - 1;
            if (at < 0) at += preSize;
            const float delayed = pre[size_t(at)];
            for (int k = 0; k < lines; k++) {
                Line& l = line[k];
                y[k] = l.filter(k < modLines ? l.swept() : l.plain());
                accL += l.signL * y[k];
                accR += l.signR * y[k];
                sum += y[k];
            }
            for (int k = 0; k < lines; k++) {
                line[k].ring[size_t(line[k].write)] =
                    y[(k + 1) % lines] + sum * -0.16666667f + delayed;
                line[k].move(line[k].write);
            }
            outL[i] += wet * accL * 0.167f + inL[i] * dry;
            outR[i] += wet * accR * 0.167f + inR[i] * dry;
            power += double(accL) * double(accL) + double(accR) * double(accR);
        }
    }
};

struct PlainCompressor {
    double rms, attack, release, threshold, ratio, output, square = 1e-25, over = 1e-25;

    explicit PlainCompressor(const CCompressor& fx)
        : rms(std::exp(-1000 / (5.0 * double(fx.rate)))),
          attack(std::exp(-1000 / double(fx.attack * fx.rate))),
          release(std::exp(-1000 / double(fx.release * fx.rate))), threshold(double(fx.threshold)),
          ratio(double(fx.ratio)), output(comp::dB2lin(double(fx.gain))) {}

    static void follow(double coef, double in, double& state) { state = coef * (state - in) + in; }

    void process(const float* inL, const float* inR, float* outL, float* outR, long frames) {
        for (long i = 0; i < frames; i++) {
            const double left = double(inL[i]), right = double(inR[i]);
            follow(rms, left * left + right * right + 1e-25, square);
            const double dB = comp::lin2dB(std::sqrt(square) + 1e-25) - threshold;
            const double excess = (dB > 0 ? dB : 0) + 1e-25;
            follow(excess > over ? attack : release, excess, over);
            const double gain = comp::dB2lin((ratio - 1) * (over - 1e-25)) * output;
            outL[i] = float(left * gain);
            outR[i] = float(right * gain);
        }
    }
};

struct PlainBitcrusher {
    int degrade, hold = 0;
    float step, holdL = 0, holdR = 0;

    explicit PlainBitcrusher(const CBitcrusher& fx)
        : degrade(fx.degrade), step(std::ldexp(1.0f, -fx.bits)) {}

    void process(const float* inL, const float* inR, float* outL, float* outR, long frames) {
        for (long i = 0; i < frames; i++) {
            if (hold >= degrade - 1) {
                holdL = inL[i];
                holdR = inR[i];
                hold = 0;
            } else {
                hold++;
            }
            outL[i] = std::floor(holdL / step + 0.5f) * step;
            outR[i] = std::floor(holdR / step + 0.5f) * step;
        }
    }
};

/// Without drive, and with a cutoff that stands.
struct PlainFilter {
    struct Side {
        float low = 0, band = 0, high = 0;
        float run(float in, float f, float d, int mode) {
            low += f * band;
            high = in - low - d * band;
            band += f * high;
            return mode == CFilterFX::low ? low : mode == CFilterFX::band ? band : high;
        }
    };
    Side left, right;
    float f, d;
    int mode;

    explicit PlainFilter(const CFilterFX& fx)
        : f(fx.cutoffRequest * fx.cutoffRequest), d(1 - fx.resonance * 0.99f), mode(fx.filterMode) {
    }

    void process(const float* inL, const float* inR, float* outL, float* outR, long frames) {
        for (long i = 0; i < frames; i++) {
            outL[i] = left.run(inL[i], f, d, mode);
            outR[i] = right.run(inR[i], f, d, mode);
        }
    }
};
