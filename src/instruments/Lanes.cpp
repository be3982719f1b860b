#include "instruments/Lanes.h"

#include <algorithm>

void StripLanes::load(int lane, const CVoice& v, int side) {
    const float* svf = v.svf + side * CVoice::rightSvf;
    const auto tap = (side == 0 ? v.outL : v.outR) - svf;
    low[lane] = svf[CVoice::low];
    band[lane] = svf[CVoice::band];
    high[lane] = svf[CVoice::high];
    tapLow[lane] = tap == CVoice::low ? -1 : 0;
    tapBand[lane] = tap == CVoice::band ? -1 : 0;
    tapHigh[lane] = tap == CVoice::high ? -1 : 0;
}

void StripLanes::store(int lane, CVoice& v, int side, float sign) const {
    float* svf = v.svf + side * CVoice::rightSvf;
    svf[CVoice::low] = sign * low[lane];
    svf[CVoice::band] = sign * band[lane];
    svf[CVoice::high] = sign * high[lane];
}

void StripLanes::setSlice(int lane, const StripRamps& r, bool toLeft, bool toRight) {
    at[lane] = 0.0f;
    cut[lane] = r.cut.value;
    cutStep[lane] = r.cut.step;
    damp[lane] = r.damp;
    gainL[lane] = toLeft ? r.gainL.value : 0.0f;
    gainLStep[lane] = toLeft ? r.gainL.step : 0.0f;
    gainR[lane] = toRight ? r.gainR.value : 0.0f;
    gainRStep[lane] = toRight ? r.gainR.step : 0.0f;
}

StripRamps StripLanes::slice(int lane, int right) const {
    return {{gainL[lane], gainLStep[lane]},
            {gainR[right], gainRStep[right]},
            {cut[lane], cutStep[lane]},
            damp[lane]};
}

void StripLanes::mute(int lane) {
    setSlice(lane, StripRamps{}, false, false);
}

void StripLanes::leaveEmpty(int lane) {
    mute(lane);
    tapLow[lane] = tapBand[lane] = tapHigh[lane] = 0;
}

void StripLanes::meter(CSound* s) {
    const float l = *std::max_element(std::begin(peakL), std::end(peakL));
    const float r = *std::max_element(std::begin(peakR), std::end(peakR));
    if (l > s->peakL) s->peakL = l;
    if (r > s->peakR) s->peakR = r;
    std::fill(std::begin(peakL), std::end(peakL), 0.0f);
    std::fill(std::begin(peakR), std::end(peakR), 0.0f);
}
