#include "tools/plugins/SameSound.h"

#include "engine/CQV.h"
#include "plugins/CVST.h"
#include "plugins/ParamReadings.h"
#include "tools/plugins/PluginBench.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

/// What a new one plays. The first format has one of its parameters at the end, unless that is
/// none, and tells the others its values, as they need not begin alike.
bool playOne(CQV* host, const CStr& file, int moved, std::vector<ParamReading>& values,
             std::vector<float>& heard) {
    const std::unique_ptr<CVST> plugin = newPlugin(host, file);
    if (!plugin) return false;
    if (values.empty()) {
        if (moved >= 0) plugin->setParam(moved, 1.0f);
        values = readParams(*plugin);
    } else if (!setAlike(*plugin, values)) {
        return false;
    }
    heard = PluginBench(host).play(*plugin);
    return true;
}

/// With one parameter at its end: how far they are apart; below 0 where one cannot be compared.
double apartAt(CQV* host, const std::vector<CStr>& formats, int moved) {
    double apart = 0.0;
    std::vector<float> first;
    std::vector<ParamReading> values;
    for (const CStr& file : formats) {
        std::vector<float> heard;
        const bool played = playOne(host, file, moved, values, heard);
        if (first.empty()) first = heard;
        if (!played || heard.size() != first.size()) return -1.0;
        for (size_t i = 0; i < heard.size(); i++)
            apart = std::max(apart, std::fabs(double(heard[i]) - double(first[i])));
    }
    return apart;
}

} // namespace

std::vector<SoundsApart> apartIn(const std::vector<CStr>& formats) {
    const std::unique_ptr<CQV> host = PluginBench::newHost();
    std::vector<CStr> names;
    if (const std::unique_ptr<CVST> plugin = newPlugin(host.get(), formats.front()))
        for (const ParamReading& one : readParams(*plugin)) names.push_back(one.name);
    std::vector<SoundsApart> found{{apartAt(host.get(), formats, -1), ""}};
    for (size_t i = 0; i < names.size(); i++)
        found.push_back({apartAt(host.get(), formats, int(i)), names[i]});
    return found;
}
