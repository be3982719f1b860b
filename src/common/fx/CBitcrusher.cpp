#include "common/fx/CBitcrusher.h"

#include "base/Clones.h"
#include "base/Numbers.h"

#include <algorithm>

namespace {

constexpr int piece = 256;             // frames at a time
constexpr float allWhole = 8388608.0f; // from here on a float has no fraction
constexpr int lift = 1 << 24;          // has the cast round down, below 0 too

/// out = floor(in / step + 0.5) * step, for a step that is a power of two. The sum is one of
/// doubles, as floats may round it up to a whole number that it does not reach. `whole` is
/// `allWhole`; as a constant it would have the compiler branch.
SONDRAVA_CLONES void quantise(const float* __restrict in, float step, float perStep, float whole,
                              int count, float* __restrict out) {
    for (int i = 0; i < count; i++) {
        const float x = in[i] * perStep;
        const float above = x > -whole ? x : -whole;
        const float bounded = above < whole ? above : whole;
        const int nearest = int(double(bounded) + (lift + 0.5)) - lift;
        out[i] = (std::fabs(x) < whole ? float(nearest) : x) * step;
    }
}

} // namespace

CBitcrusher::CBitcrusher(float hz, int frames) : CFX(hz, frames) {
    id = "Bit Crusher";
    type = fxBitcrusher;
}

void CBitcrusher::clear() {
    hold = 0;
    holdL = holdR = 0.0f;
}

void CBitcrusher::process(float* inL, float* inR, float* outL, float* outR, long frames) {
    const int depth = asMinMax(bits, 1, maxBits);
    const int period = asMinMax(degrade, 1, maxDegrade);
    const float perStep = std::ldexp(1.0f, depth), step = std::ldexp(1.0f, -depth);
    for (long done = 0; done < frames;) {
        const int count = int(std::min<long>(piece, frames - done));
        float left[piece], right[piece];
        holdSamples(inL + done, inR + done, period, count, left, right);
        quantise(left, step, perStep, allWhole, count, outL + done);
        quantise(right, step, perStep, allWhole, count, outR + done);
        done += count;
    }
}

void CBitcrusher::holdSamples(const float* inL, const float* inR, int period, int count,
                              float* left, float* right) {
    int since = hold;
    float l = holdL, r = holdR;
    for (int i = 0; i < count; i++) {
        const bool take = since >= period - 1;
        since = take ? 0 : since + 1;
        left[i] = l = take ? inL[i] : l;
        right[i] = r = take ? inR[i] : r;
    }
    hold = since;
    holdL = l;
    holdR = r;
}
