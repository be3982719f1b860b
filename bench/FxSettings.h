#pragma once

#include "common/fx/CBitcrusher.h"
#include "common/fx/CChorus.h"
#include "common/fx/CCompressor.h"
#include "common/fx/CDelay.h"
#include "common/fx/CFilterFX.h"
#include "common/fx/CPhaser.h"
#include "common/fx/CReverb.h"

// Settings in which an effect has all of its work to do; where there are none, its first ones.

inline void loadUp(CFX&) {
}
inline void loadUp(CDelay& fx) {
    fx.setSync(0);
    fx.setTimeLeft(300);
    fx.setTimeRight(400);
    fx.setCross(0.3f);
}
inline void loadUp(CChorus& fx) {
    fx.setFeedback(0.5f);
}
inline void loadUp(CPhaser& fx) {
    fx.setPhase(90);
}
/// The cutoff has arrived at its place.
inline void loadUp(CFilterFX& fx) {
    fx.setCutoff(0.6f);
    fx.setResonance(0.5f);
    float left[CFilterFX::Ramp::length] = {}, right[CFilterFX::Ramp::length] = {};
    fx.process(left, right, left, right, CFilterFX::Ramp::length);
}
