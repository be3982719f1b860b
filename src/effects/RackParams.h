#pragma once

#include "engine/ParamRef.h"
#include "engine/Setting.h"

class CEffect;
class CFX;

// The settings of the effects in a rack's current chain as parameters of the rack, numbered from 0
// on: by the place of the effect in the chain, and within it in the order of its table. An effect
// that changes its place takes other numbers.

constexpr int paramsOfEffect = 32; ///< numbers for each place of the chain

/// The parameter that moves a setting of an effect; none for an effect that is not in the current
/// chain. Interface thread.
ParamRef rackParamOf(CEffect& rack, const CFX& fx, const Setting& setting);

struct RackSetting {
    CFX* fx = nullptr; ///< null: the number stands for nothing now
    const Setting* setting = nullptr;
};
/// What a parameter moves. Any thread that may read the chain.
RackSetting rackSettingOf(CEffect& rack, int param);
