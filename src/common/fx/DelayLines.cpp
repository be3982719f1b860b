#include "common/fx/DelayLines.h"

#include "base/Clones.h"
#include "common/WaveTables.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double farPhase = 1 << 14; // cycles, before the table index leaves 32 bits

/// Places of the modulated tap: whole samples into `frame`, the rest into `fraction`.
SONDRAVA_CLONES void sweepTap(float start, float depth, const double* phases, int count,
                              int* __restrict frame, float* __restrict fraction) {
    for (int i = 0; i < count; i++) {
        const int at = int(phases[i] * waveTableSize) & (waveTableSize - 1);
        const float pos = start + float(i) + depth * sinus2[at];
        frame[i] = int(pos >= 0.0f ? pos : pos - 1.0f);
        fraction[i] = pos - float(frame[i]);
    }
}

} // namespace

void MDelayLine::SetMaxDelay(int d) {
    maxDelay = std::max(0, d);
    size = maxDelay + spare;
    ring.assign(std::size_t(size), 0.0f);
    write = 0;
    read = size - maxDelay;
}

void MDelayLine::Suspend() {
    std::fill(ring.begin(), ring.end(), 0.0f);
}

int MDelayLine::GetMem() {
    return size * int(sizeof(float));
}

void MDelayLine::Append(const float* in, int count) {
    const int first = std::min(count, size - write);
    std::copy_n(in, first, ring.data() + write);
    std::copy_n(in + first, count - first, ring.data());
    write = (write + count) % size;
}

void MDelayLine::CopyFrom(int from, int count, float* out) const {
    const int start = from < 0 ? from + size : from >= size ? from - size : from;
    const int first = std::min(count, size - start);
    std::copy_n(ring.data() + start, first, out);
    std::copy_n(ring.data(), count - first, out + first);
}

void MModDelayLine::SetNomDelay(int samples) {
    nomDelay = samples;
    resize();
}

void MModDelayLine::SetModDepth(int samples) {
    modDepth = std::clamp(samples, 0, maxModDepth);
    resize();
}

void MModDelayLine::resize() {
    SetMaxDelay(nomDelay + modDepth);
    const int pos = write - nomDelay;
    curPos = float(pos < 0 ? pos + size : pos);
}

void MSVRAP1ModDelayLine::GetTaps(int count, float* taps, float* next, float* fractions,
                                  int stride) {
    int frame[maxTaps];
    float fraction[maxTaps], window[2 * maxTaps];
    double phases[maxTaps];
    while (count > 0) {
        const int n = std::min({count, maxTaps, size - int(curPos)});
        phase = lfoPlaces(phase, incr, n, phases);
        if (phase >= farPhase) phase -= farPhase;
        sweepTap(curPos, float(modDepth), phases, n, frame, fraction);
        const int first = int(curPos) - modDepth - 1, span = n + 2 * modDepth + 3;
        CopyFrom(first, span, window);
        for (int i = 0; i < n; i++) {
            const float* at = window + (frame[i] - first);
            taps[i * stride] = at[0];
            next[i * stride] = at[1];
            fractions[i * stride] = fraction[i];
        }
        curPos += float(n);
        if (int(curPos) >= size) curPos -= float(size);
        taps += n * stride;
        next += n * stride;
        fractions += n * stride;
        count -= n;
    }
}

float MSVRAP1ModDelayLine::GetCurValue() {
    float tap, next, fraction;
    GetTaps(1, &tap, &next, &fraction, 1);
    last = (next - last) * fraction + tap;
    return last;
}

void MSVRAP1ModDelayLine::Suspend() {
    MDelayLine::Suspend();
    last = 0.0f;
}

void MLPF1a::SetCoeffs(float newA, float newB) {
    a = newA;
    b = newB;
}

float MLPF1a::Process(float x) {
    y = a * x - b * y;
    if (std::fabs(y) < quiet) y = 0.0f;
    return y;
}

void MSinOsc::SetFreq(double freq, double rate, double phaseDegrees) {
    const double w = 2.0 * std::numbers::pi * freq / rate;
    const double p = phaseDegrees * std::numbers::pi / 180.0;
    k = 2.0 * std::cos(w);
    y1 = std::sin(p);
    y2 = std::sin(p - w);
    limit = std::sin(std::numbers::pi / 2.0 - w);
}

float MSinOsc::GetCurValue() {
    double v = k * y1 - y2;
    y2 = y1;
    if (v >= 1.0) {
        v = 1.0;
        y2 = limit;
    } else if (v <= -1.0) {
        v = -1.0;
        y2 = -limit;
    }
    y1 = v;
    return float(v);
}
