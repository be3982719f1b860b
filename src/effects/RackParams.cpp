#include "effects/RackParams.h"

#include "effects/CEffect.h"
#include "engine/EffectSettings.h"

namespace {

/// Power makes room for buffers when it is switched, which a parameter must not.
Settings paramsOf(const CFX& fx) {
    const Settings all = settingsOf(fx);
    return all.empty() ? all : all.subspan(1);
}

} // namespace

ParamRef rackParamOf(CEffect& rack, const CFX& fx, const Setting& setting) {
    const CEffectProg* prog = rack.getProg();
    const int place = prog ? prog->effects.indexed(&fx) : -1;
    const Settings all = paramsOf(fx);
    for (int row = 0; place >= 0 && row < int(all.size()); row++)
        if (&all[size_t(row)] == &setting) return {&rack, place * paramsOfEffect + row};
    return {};
}

RackSetting rackSettingOf(CEffect& rack, int param) {
    const CEffectProg* prog = rack.getProg();
    if (!prog || param < 0) return {};
    auto* fx = prog->effects.items(param / paramsOfEffect);
    if (!fx) return {};
    const Settings all = paramsOf(*fx);
    const size_t row = size_t(param % paramsOfEffect);
    return row < all.size() ? RackSetting{fx, &all[row]} : RackSetting{};
}
