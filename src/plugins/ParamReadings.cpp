#include "plugins/ParamReadings.h"

#include "engine/ParamUnit.h"
#include "plugins/PluginComp.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <string>

namespace {

/// Whether one is the other, cut short.
bool isCut(const CStr& one, const CStr& other) {
    constexpr int shortest = 8;
    const int length = std::min(one.length(), other.length());
    return length >= shortest && sameText(one.sub(0, length), other.sub(0, length));
}

/// For each of the known ones the index of the parameter of that name; -1 none. Several names that
/// were cut to the same stand in the same order.
std::vector<int> matches(PluginComp& plugin, const std::vector<ParamReading>& known) {
    std::vector<CStr> free;
    std::map<std::string, int> whole;
    for (int i = 0; i < plugin.numParams(); i++) {
        free.push_back(plugin.paramName(i));
        whole.emplace(free.back().upperCase().asChar(), i);
    }
    std::vector<int> found(known.size(), -1);
    for (size_t i = 0; i < known.size(); i++) {
        const auto at = whole.find(known[i].name.upperCase().asChar());
        if (at == whole.end() || free[size_t(at->second)].empty()) continue;
        found[i] = at->second;
        free[size_t(at->second)] = "";
    }
    for (size_t i = 0; i < known.size(); i++) {
        if (found[i] >= 0) continue;
        const auto at = std::ranges::find_if(
            free, [&](const CStr& name) { return isCut(name, known[i].name); });
        if (at == free.end()) continue;
        found[i] = int(at - free.begin());
        *at = "";
    }
    return found;
}

/// How far apart numbers may be that are told alike.
double nearEnough(double wanted) {
    return 1e-3 * std::max(std::abs(wanted), 1.0);
}

/// Looks for the share at which a parameter tells a number.
class ShareOf {
public:
    ShareOf(PluginComp& of, int at, double number) : plugin(of), index(at), wanted(number) {}

    /// Leaves the parameter at the best one, `usual` where that is as good as any.
    void find(float usual) {
        tryOne(usual);
        const auto low = tryOne(0.0f), high = tryOne(1.0f);
        const bool rises = low && high && *low < *high;
        float from = 0.0f, to = 1.0f;
        for (int step = 0; low && high && apart > 0.0 && step < 24; step++) {
            const float middle = (from + to) / 2;
            const auto number = tryOne(middle);
            if (!number) break;
            ((*number < wanted) == rises ? from : to) = middle;
        }
        plugin.setParam(index, apart <= nearEnough(wanted) ? best : usual);
    }

private:
    std::optional<double> tryOne(float share) {
        plugin.setParam(index, share);
        const auto number = typedNumber(plugin.paramText(index));
        if (number && std::abs(*number - wanted) < apart) {
            apart = std::abs(*number - wanted);
            best = share;
        }
        return number;
    }

    PluginComp& plugin;
    const int index;
    const double wanted;
    double apart = std::numeric_limits<double>::infinity();
    float best = 0.0f;
};

void setAlike(PluginComp& plugin, int index, const ParamReading& known) {
    const auto wanted = typedNumber(known.text), now = typedNumber(plugin.paramText(index));
    if (!wanted || !now)
        plugin.setParam(index, known.share);
    else if (std::abs(*now - *wanted) > nearEnough(*wanted))
        ShareOf(plugin, index, *wanted).find(known.share);
}

} // namespace

std::vector<ParamReading> readParams(PluginComp& plugin) {
    std::vector<ParamReading> found;
    for (const CStr& text : plugin.paramTexts()) {
        const int i = int(found.size());
        found.push_back({plugin.paramName(i), text, plugin.param(i)});
    }
    return found;
}

bool setAlike(PluginComp& plugin, const std::vector<ParamReading>& known) {
    const std::vector<int> found = matches(plugin, known);
    for (size_t i = 0; i < known.size(); i++)
        if (found[i] >= 0) setAlike(plugin, found[i], known[i]);
    return std::ranges::find(found, -1) == found.end();
}
