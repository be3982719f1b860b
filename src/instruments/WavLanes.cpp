#include "instruments/WavLanes.h"

namespace {

static_assert(WavLanes::ringFrames >= SlicePlan::longest);
constexpr int ringMask = WavLanes::ringFrames - 1;

template <int N>
SONDRAVA_INLINE void runLanes(WavLanes& s, int at, float* left, float* right, int n) {
    StripRegisters<N> strip(s.strip);
    for (int i = at; i < at + n; i++) {
        typename Vectors<N>::Floats y;
        loadLanes(y, s.input + (i & ringMask) * maxLanes);
        strip.filter(y);
        strip.mix(y, left + i, right + i);
    }
    strip.store(s.strip);
}

SONDRAVA_CLONES void run4(WavLanes& s, int at, float* left, float* right, int n) {
    runLanes<4>(s, at, left, right, n);
}
SONDRAVA_CLONES void run8(WavLanes& s, int at, float* left, float* right, int n) {
    runLanes<8>(s, at, left, right, n);
}

} // namespace

void WavLanes::put(int lane, int at, const float* frames, int n) {
    for (int i = 0; i < n; i++) input[((at + i) & ringMask) * maxLanes + lane] = frames[i];
}

void WavLanes::run(int lanes, int at, float* left, float* right, int n) {
    if (lanes <= 4)
        run4(*this, at, left, right, n);
    else
        run8(*this, at, left, right, n);
}
