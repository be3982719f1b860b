#pragma once

#include "base/CStr.h"

#include <optional>
#include <string>
#include <vector>

/// What a preset file (.vstpreset) of a VST 3 plug-in holds.
struct Vst3PresetState {
    std::vector<char> played, known; ///< of its component, and of its controller; empty: none
};

/// The preset files of a plug-in by name, from its maker's folder at home and in those of the
/// system: each name once, that of the user before others. Interface thread, as the next.
std::vector<CStr> vst3Presets(const CStr& maker, const CStr& name);
/// Nothing for a file that is none, or is of another plug-in than that of the key.
std::optional<Vst3PresetState> readVst3Preset(const CStr& path, const CStr& key);
/// The content of such a file.
std::string writeVst3Preset(const CStr& key, const Vst3PresetState& state);
