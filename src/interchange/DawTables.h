#pragma once

#include "interchange/DawSong.h"
#include "plugins/PluginFile.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>

// Words of exchange files for what a song has, shared by reader and writer.

struct DawExpression {
    DawTarget target;
    const char* word;
    const char* unit; ///< of its points
};
constexpr DawExpression dawExpressions[] = {
    {DawTarget::controller, "channelController", "normalized"},
    {DawTarget::pitchBend, "pitchBend", "normalized"},
    {DawTarget::pressure, "channelPressure", "normalized"},
    {DawTarget::polyPressure, "polyPressure", "normalized"},
    {DawTarget::program, "programChange", "linear"},
    {DawTarget::gain, "gain", "linear"},
    {DawTarget::pan, "pan", "normalized"},
    {DawTarget::transpose, "transpose", "semitones"}};

inline const DawExpression* expressionOf(DawTarget target) {
    const auto* found = std::ranges::find(dawExpressions, target, &DawExpression::target);
    return found == std::end(dawExpressions) ? nullptr : found;
}
inline const DawExpression* expressionOf(const std::string& word) {
    const auto* found = std::ranges::find(dawExpressions, word, &DawExpression::word);
    return found == std::end(dawExpressions) ? nullptr : found;
}

/// Forms of bands by their `EqType`.
constexpr const char* dawBandTypes[] = {"lowShelf", "bell",     "highShelf", "lowPass",
                                        "highPass", "bandPass", "notch"};
inline int bandTypeOf(const std::string& word) { ///< -1 for another word
    const auto* found = std::ranges::find(dawBandTypes, word);
    return found == std::end(dawBandTypes) ? -1 : int(found - dawBandTypes);
}

// Elements of plug-ins; there is none for LV2.
constexpr struct {
    PluginFormat format;
    const char* element;
} dawPlugins[] = {{PluginFormat::vst2, "Vst2Plugin"},
                  {PluginFormat::vst3, "Vst3Plugin"},
                  {PluginFormat::clap, "ClapPlugin"}};
inline std::optional<PluginFormat> pluginFormatOf(const std::string& element) {
    for (const auto& p : dawPlugins)
        if (element == p.element) return p.format;
    return {};
}
inline const char* pluginElementOf(PluginFormat format) { ///< null without one
    for (const auto& p : dawPlugins)
        if (format == p.format) return p.element;
    return nullptr;
}
