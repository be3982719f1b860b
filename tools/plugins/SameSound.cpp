#include "tools/plugins/SameSound.h"

#include "engine/CQV.h"
#include "plugins/CVST.h"
#include "tools/plugins/PluginBench.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

/// VST 2 cuts names short.
bool isNamed(const CStr& name, const CStr& longer) {
    constexpr int shortest = 8;
    const int length = name.length();
    return sameText(name, longer) || (length >= shortest && sameText(longer.sub(0, length), name));
}

int paramNamed(CVST& plugin, const CStr& name) {
    for (const bool whole : {true, false})
        for (int i = 0; i < plugin.numParams(); i++) {
            const CStr own = plugin.paramName(i);
            if (whole ? sameText(own, name) : isNamed(own, name)) return i;
        }
    return -1;
}

/// What a new one plays with a parameter at its end; with none where `name` is empty.
bool playOne(CQV* host, const CStr& file, const CStr& name, std::vector<float>& heard) {
    const std::unique_ptr<CVST> plugin = newPlugin(host, file);
    if (!plugin) return false;
    const int moved = name.empty() ? -1 : paramNamed(*plugin, name);
    if (!name.empty() && moved < 0) return false;
    if (moved >= 0) plugin->setParam(moved, 1.0f);
    heard = PluginBench(host).play(*plugin);
    return true;
}

std::vector<CStr> namesOf(CQV* host, const CStr& file) {
    std::vector<CStr> names{""};
    const std::unique_ptr<CVST> plugin = newPlugin(host, file);
    for (int i = 0; plugin && i < plugin->numParams(); i++) names.push_back(plugin->paramName(i));
    return names;
}

} // namespace

double apartIn(const std::vector<CStr>& formats) {
    const std::unique_ptr<CQV> host = PluginBench::newHost();
    double apart = 0.0;
    for (const CStr& name : namesOf(host.get(), formats.front())) {
        std::vector<float> first;
        for (const CStr& file : formats) {
            std::vector<float> heard;
            if (!playOne(host.get(), file, name, heard)) return -1.0;
            if (first.empty()) first = heard;
            if (heard.size() != first.size()) return -1.0;
            for (size_t i = 0; i < heard.size(); i++)
                apart = std::max(apart, std::fabs(double(heard[i]) - double(first[i])));
        }
    }
    return apart;
}
