#pragma once

#include "interchange/DawSong.h"

#include <algorithm>
#include <iterator>
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
