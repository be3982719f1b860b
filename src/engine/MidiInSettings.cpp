#include "engine/MidiInSettings.h"

#include "engine/DeviceComps.h"

namespace {

using Numbers = StoredValue::Numbers;

constexpr const char* grids[] = {"Off", "1/16", "1/8", "1/4"};
constexpr int choices[std::size(grids)] = {-1, 16, 8, 4};

/// The place of a stored choice among the words.
constexpr StoredValue::Kind grid = {
    "Auto-quantize",
    [](const CObject* o, int) {
        const auto at = std::ranges::find(choices, static_cast<const CMIDIIn*>(o)->autoq.load());
        return Numbers{at == std::end(choices) ? 0.0 : double(at - std::begin(choices))};
    },
    [](CObject* o, int, const Numbers& to) {
        if (!std::isfinite(to[0])) return;
        const int at = std::clamp(asRound(to[0]), 0, int(std::size(choices)) - 1);
        static_cast<CMIDIIn*>(o)->setAutoq(choices[at]);
    }};

const SettingUnit percentUnit{[](const CObject*, double v) { return asStr(asRound(v)) + " %"; },
                              [](const CObject*, double entered) { return entered; }};

const Setting table[] = {
    fieldSetting<&CMIDIIn::sens, 0.0, double(CMIDIIn::fullSens)>(
        "Keys", "Velocity", CMIDIIn::fullSens, percentUnit, Setting::whole),
    {"Keys", grid, 0.0, double(std::size(grids) - 1), 0.0, &plainUnit, Setting::choice, grids},
};

} // namespace

Settings midiInSettings() {
    return table;
}
