#include "common/fx/CPhaser.h"

#include "base/Clones.h"
#include "base/Numbers.h"
#include "common/Silence.h"
#include "common/fx/Sweep.h"

#include <algorithm>

namespace {

constexpr int piece = 64;               // frames whose coefficients are worked out at a time
constexpr float floorLevel = 1e-10f;    // below it nothing is fed back
constexpr float restLevel = 1e-20f;     // of the sections, which else stay among the denormals
constexpr float feedbackScale = 0.998f; // keeps full feedback from running away

/// The all-pass coefficients of a swept corner: w between `low` and `high`, a = (1 - w) / (1 + w).
SONDRAVA_CLONES void findCoefficients(const float* wave, const double* places, double offset,
                                      float low, float high, int count, float* __restrict a) {
    const float range = high - low;
    for (int i = 0; i < count; i++) {
        const float w = low + range * wave[int(places[i] + offset) & (lfoTableSize - 1)];
        a[i] = (1.0f - w) / (w + 1.0f);
    }
}

/// One side of the sections of `stages`. The time of a frame is that of the way from one output to
/// the next, so the first section takes the fed back one by itself: z - a in - (a feedback) last.
template <int stages>
struct Sections {
    float z[stages] = {}, last;

    Sections(const float* state, float fedBack) : last(fedBack) { std::copy_n(state, stages, z); }

    float run(float in, float a, float feedback) {
        const float x = in + feedback * last;
        float y = (z[0] - a * in) - (a * feedback) * last;
        z[0] = y * a + x;
        for (int s = 1; s < stages; s++) {
            const float before = y;
            y = z[s] - a * before;
            z[s] = y * a + before;
        }
        return last = y;
    }

    void store(float* state, float& fedBack) const {
        std::copy_n(z, stages, state);
        fedBack = last;
    }
};

/// Both sides frame by frame, so that the processor works at one while it waits for the other.
template <int stages>
void runSections(const float* aL, const float* aR, float feedback, int count, CPhaser& fx,
                 float* left, float* right) {
    Sections<stages> sideL(fx.zL, fx.lastL), sideR(fx.zR, fx.lastR);
    for (int i = 0; i < count; i++) {
        left[i] = sideL.run(left[i], aL[i], feedback);
        right[i] = sideR.run(right[i], aR[i], feedback);
    }
    sideL.store(fx.zL, fx.lastL);
    sideR.store(fx.zR, fx.lastR);
}

using Runner = void (*)(const float*, const float*, float, int, CPhaser&, float*, float*);

/// One per number of stages, from 1.
constexpr Runner runners[CPhaser::maxStages] = {
    runSections<1>,  runSections<2>,  runSections<3>,  runSections<4>,
    runSections<5>,  runSections<6>,  runSections<7>,  runSections<8>,
    runSections<9>,  runSections<10>, runSections<11>, runSections<12>,
    runSections<13>, runSections<14>, runSections<15>, runSections<16>};

} // namespace

CPhaser::CPhaser(float hz, int frames) : CFX(hz, frames) {
    id = "Phaser";
    type = fxPhaser;
    dry = 0.5f;
    wet = 0.5f;
}

void CPhaser::clear() {
    phasePos = 0.0;
    lastL = lastR = 0.0f;
    std::fill_n(zL, maxStages, 0.0f);
    std::fill_n(zR, maxStages, 0.0f);
}

bool CPhaser::rests() const {
    return lastL == 0.0f && lastR == 0.0f && isSilent(zL, zR, maxStages);
}

void CPhaser::start() {
    if (isSilent(zL, zR, maxStages)) phasePos = 0.0;
}

/// The place in the wave goes back where what follows is the same in any blocks, too.
void CPhaser::settle() {
    phasePos = std::fmod(phasePos, double(lfoTableSize));
    for (float* z : {zL, zR})
        for (int s = 0; s < maxStages; s++)
            if (std::fabs(z[s]) < restLevel) z[s] = 0.0f;
    for (float* last : {&lastL, &lastR})
        if (std::fabs(*last) < floorLevel) *last = 0.0f;
}

void CPhaser::process(float* inL, float* inR, float* outL, float* outR, long frames) {
    const Sweep sweep = sweepOf(*this);
    const int shape = waveform;
    const float* wave = shape == 1 ? triangleWave : shape == 2 ? sawtoothWave : sinusWave;
    const float low = 2.0f * rangeMin / rate, high = 2.0f * rangeMax / rate;
    const float fed = feedback * feedbackScale, dryGain = dry, wetGain = wet;
    const Runner run = runners[asMinMax(stages, 1, maxStages) - 1];

    const bool silent = rests() && isSilent(inL, inR, frames);
    double places[piece + 1];
    float aL[piece], aR[piece], left[piece], right[piece];
    for (long done = 0; done < frames; done += piece) {
        const int count = int(std::min<long>(piece, frames - done));
        places[count] = phasePos = lfoPlaces(phasePos, sweep.step, count, places);
        if (phasePos >= lfoFar) phasePos = std::fmod(phasePos, double(lfoTableSize));
        if (silent) continue;
        findCoefficients(wave, places, 0.0, low, high, count, aL);
        findCoefficients(wave, places + 1, sweep.offset, low, high, count, aR);
        std::copy_n(inL + done, count, left);
        std::copy_n(inR + done, count, right);
        run(aL, aR, fed, count, *this, left, right);
        for (int i = 0; i < count; i++) {
            outL[done + i] = inL[done + i] * dryGain + wetGain * left[i];
            outR[done + i] = inR[done + i] * dryGain + wetGain * right[i];
        }
    }
    if (silent) {
        std::fill_n(outL, frames, 0.0f);
        std::fill_n(outR, frames, 0.0f);
    }
    if (settles) settle();
}
