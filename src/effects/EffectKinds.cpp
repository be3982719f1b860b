#include "effects/EffectKinds.h"

#include "common/fx/CBitcrusher.h"
#include "common/fx/CChorus.h"
#include "common/fx/CCompressor.h"
#include "common/fx/CDelay.h"
#include "common/fx/CFilterFX.h"
#include "common/fx/CGate.h"
#include "common/fx/CGuitarAmp.h"
#include "common/fx/CPhaser.h"
#include "common/fx/CReverb.h"

#include <array>
#include <memory>

namespace {

template <class Fx>
CFX* make(float hz, int frames) {
    return new Fx(hz, frames);
}

struct Kind {
    CFX* (*make)(float hz, int frames);
    float dry; ///< of a new one in a chain; `wet` is that of its class where these add nothing
    bool fullWet;
};

constexpr Kind kinds[effectKindCount] = {
    {make<CDelay>, 0.0f, true},       {make<CReverb>, 0.0f, true},
    {make<CChorus>, 0.5f, false},     {make<CPhaser>, 0.5f, false},
    {make<CBitcrusher>, 1.0f, false}, {make<CFilterFX>, 1.0f, false},
    {make<CCompressor>, 1.0f, false}, {make<CGuitarAmp>, 1.0f, false},
    {make<CGate>, 1.0f, false},
};

/// An effect names itself, so one of each kind is made once.
std::array<CStr, effectKindCount> namesOfKinds() {
    constexpr float anyRate = 44100.0f;
    std::array<CStr, effectKindCount> names;
    for (int kind = 0; kind < effectKindCount; kind++)
        names[kind] = std::unique_ptr<CFX>(makeEffect(kind, anyRate, 0))->id;
    return names;
}

} // namespace

CFX* makeEffect(int kind, float hz, int frames) {
    CFX* fx = isEffectKind(kind) ? kinds[kind].make(hz, frames) : new CFX(hz, frames);
    fx->category = categoryEffect;
    fx->type = kind;
    return fx;
}

CStr effectName(int kind) {
    static const std::array<CStr, effectKindCount> names = namesOfKinds();
    return isEffectKind(kind) ? names[kind] : CStr();
}

CFX* makeNewEffect(int kind, float hz, int frames) {
    CFX* fx = makeEffect(kind, hz, frames);
    if (isEffectKind(kind)) {
        fx->setDry(kinds[kind].dry);
        if (kinds[kind].fullWet) fx->setWet(1.0f);
    }
    fx->setEnabled(1);
    return fx;
}
