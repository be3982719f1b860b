#include "common/fx/DelayLines.h"

#include "base/Clones.h"
#include "common/WaveTables.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

SONDRAVA_CLONES void tableIndices(const double* phases, int count, int* __restrict index) {
    for (int i = 0; i < count; i++) index[i] = int(phases[i] * waveTableSize) & (waveTableSize - 1);
}

/// Apart from its neighbours, since single loads beat the vector gather that clones would use.
[[gnu::noinline]] void lookUp(const int* index, int count, float* __restrict out) {
    for (int i = 0; i < count; i++) out[i] = sinus2[index[i]];
}

/// Places of the modulated tap: whole samples into `frame`, the rest replaces `swing`.
SONDRAVA_CLONES void splitPlaces(float start, float depth, int count, int* __restrict frame,
                                 float* __restrict swing) {
    for (int i = 0; i < count; i++) {
        const float pos = start + float(i) + depth * swing[i];
        frame[i] = int(pos) - int(pos < 0.0f);
        swing[i] = pos - float(frame[i]);
    }
}

} // namespace

void MDelayLine::SetMaxDelay(int d) {
    maxDelay = std::max(0, d);
    size = maxDelay + spare;
    ring = makeZeroPages<float>(std::size_t(size));
    write = reach = 0;
    read = size - maxDelay;
}

void MDelayLine::Suspend() {
    std::fill_n(ring.get(), reach, 0.0f);
    reach = 0;
}

int MDelayLine::GetMem() {
    return size * int(sizeof(float));
}

void MDelayLine::append(const float* in, int count) {
    const int first = std::min(count, size - write);
    std::copy_n(in, first, ring.get() + write);
    std::copy_n(in + first, count - first, ring.get());
    reach = std::min(size, std::max(reach, write + count));
    write = (write + count) % size;
}

void MDelayLine::copyFrom(int from, int count, float* out) const {
    const int start = from < 0 ? from + size : from >= size ? from - size : from;
    const int first = std::min(count, size - start);
    std::copy_n(ring.get() + start, first, out);
    std::copy_n(ring.get(), count - first, out + first);
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

void MSVRAP1ModDelayLine::getTaps(const double* phases, int count, float* taps, float* next,
                                  float* fractions) {
    int frame[maxTaps];
    float window[2 * maxTaps];
    while (count > 0) {
        const int n = std::min({count, maxTaps, size - int(curPos)});
        tableIndices(phases, n, frame);
        lookUp(frame, n, fractions);
        splitPlaces(curPos, float(modDepth), n, frame, fractions);
        const int first = int(curPos) - modDepth - 1, span = n + 2 * modDepth + 3;
        const bool whole = first >= 0 && first + span <= size;
        if (!whole) copyFrom(first, span, window);
        const float* from = whole ? ring.get() + first : window;
        for (int i = 0; i < n; i++) {
            const float* at = from + (frame[i] - first);
            taps[i] = at[0];
            next[i] = at[1];
        }
        curPos += float(n);
        if (int(curPos) >= size) curPos -= float(size);
        phases += n;
        taps += n;
        next += n;
        fractions += n;
        count -= n;
    }
}

float MSVRAP1ModDelayLine::GetCurValue() {
    float tap, next, fraction;
    getTaps(&phase, 1, &tap, &next, &fraction);
    movePhase(phase + incr);
    last = (next - last) * fraction + tap;
    return last;
}

void MSVRAP1ModDelayLine::movePhase(double cycles) {
    phase = cycles >= farPhase ? cycles - farPhase : cycles;
}

void MSVRAP1ModDelayLine::Suspend() {
    MDelayLine::Suspend();
    last = 0.0f;
}

void MLPF1a::SetCoeffs(float newA, float newB) {
    a = newA;
    b = newB;
}

float MLPF1a::process(float x) {
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
