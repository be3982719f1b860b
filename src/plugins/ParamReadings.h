#pragma once

#include "base/CStr.h"

#include <vector>

class PluginComp;

/// What a plug-in tells of a parameter.
struct ParamReading {
    CStr name, text;
    float share = 0.0f;
};

/// Of all parameters. Interface thread, as the next.
std::vector<ParamReading> readParams(PluginComp& plugin);
/// Gives the same effect in another format the values that were read: formats may differ in how a
/// share becomes a number, so what both tell of it counts. A value that it tells alike already
/// stays. Names are what they know each other by, which some formats cut short. False where one is
/// not there.
bool setAlike(PluginComp& plugin, const std::vector<ParamReading>& known);
