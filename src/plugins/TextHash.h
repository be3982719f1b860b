#pragma once

#include <cstdint>

/// A number for the name of a plug-in that has none; never 0.
constexpr int32_t hashOf(const char* text) {
    uint32_t hash = 2166136261u; // FNV-1a
    for (; *text; text++) hash = (hash ^ uint8_t(*text)) * 16777619u;
    return hash == 0 ? 1 : int32_t(hash);
}
