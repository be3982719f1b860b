#include "common/fx/CBitcrusher.h"

#include "base/Clones.h"
#include "base/Floats4.h"
#include "base/Numbers.h"

#include <algorithm>

namespace {

constexpr int piece = 256;             // frames at a time, a multiple of four
constexpr float allWhole = 8388608.0f; // from here on a float has no fraction

using Ints4 = int __attribute__((vector_size(16)));

/// x = floor(x / step + 0.5) * step in place, for a step that is a power of two. The sum may round
/// up to a whole number that it does not reach, so the fraction is compared instead. `count` is
/// rounded up to four. In lanes, as the compiler makes branches of the choices.
SONDRAVA_CLONES void quantise(float* x, float step, float perStep, int count) {
    const Floats4 none{}, one = none + 1.0f, half = none + 0.5f, top = none + allWhole;
    for (int i = 0; i < count; i += 4) {
        const Floats4 y = loadFloats(x + i) * perStep;
        const Floats4 above = y > -top ? y : -top;
        const Floats4 bounded = above < top ? above : top;
        const Ints4 whole = __builtin_convertvector(bounded, Ints4);
        const Floats4 cut = __builtin_convertvector(whole, Floats4);
        const Floats4 below = cut - (cut > bounded ? one : none);
        const Floats4 nearest = below + (bounded - below >= half ? one : none);
        saveFloats(x + i, ((y < top) & (y > -top) ? nearest : y) * step);
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

void CBitcrusher::start() {
    if (holdL == 0.0f && holdR == 0.0f) hold = 0;
}

void CBitcrusher::process(float* inL, float* inR, float* outL, float* outR, long frames) {
    const int depth = asMinMax(bits, 1, maxBits);
    const int period = asMinMax(degrade, 1, maxDegrade);
    const float perStep = std::ldexp(1.0f, depth), step = std::ldexp(1.0f, -depth);
    for (long done = 0; done < frames;) {
        const int count = int(std::min<long>(piece, frames - done));
        float left[piece] = {}, right[piece] = {};
        holdSamples(inL + done, inR + done, period, count, left, right);
        quantise(left, step, perStep, count);
        quantise(right, step, perStep, count);
        std::copy_n(left, count, outL + done);
        std::copy_n(right, count, outR + done);
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
