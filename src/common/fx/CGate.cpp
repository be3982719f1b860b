#include "common/fx/CGate.h"

#include "base/Numbers.h"
#include "common/Silence.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double silent = 1e-9; ///< of a share: nothing of it is heard any more

double poleOf(float ms, float rate) {
    return std::exp(-1000.0 / (double(ms) * double(rate)));
}

float gainOf(float dB) {
    return dB <= CGate::lowest ? 0.0f : std::pow(10.0f, dB / 20.0f);
}

} // namespace

CGate::CGate(float hz, int frames) : CFX(hz, frames) {
    id = "Gate";
    type = fxGate;
}

void CGate::clear() {
    now = 0.0;
    openLeft = 0;
    gain = 1.0f;
}

bool CGate::rests() const {
    return now == 0.0 && openLeft == 0 && threshold > lowest;
}

void CGate::process(float* inL, float* inR, float* outL, float* outR, long frames) {
    const float level = gainOf(fLimit(threshold, lowest, 0.0f));
    const float floor = gainOf(fLimit(range, lowest, 0.0f));
    const double rise = poleOf(fLimit(attack, shortest, longestAttack), rate);
    const double fall = poleOf(fLimit(release, shortest, longestTime), rate);
    const long held = lround(double(fLimit(hold, 0.0f, longestTime)) * 0.001 * double(rate));
    const float *left = key.leftOr(inL), *right = key.rightOr(inR);
    if (rests() && isSilent(inL, inR, frames) && isSilent(left, right, frames)) {
        std::fill_n(outL, frames, 0.0f);
        std::fill_n(outR, frames, 0.0f);
        frames = 0;
    }
    for (long i = 0; i < frames; ++i) {
        const bool over = std::max(std::fabs(left[i]), std::fabs(right[i])) >= level;
        if (over) openLeft = held + 1;
        if (openLeft > 0) {
            --openLeft;
            now = 1.0 + (now - 1.0) * rise;
        } else {
            now = now * fall > silent ? now * fall : 0.0;
        }
        const float g = floor + (1.0f - floor) * float(now);
        outL[i] = inL[i] * g;
        outR[i] = inR[i] * g;
    }
    gain = floor + (1.0f - floor) * float(now);
}
