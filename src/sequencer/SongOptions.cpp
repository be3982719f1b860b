#include "sequencer/SongOptions.h"

#include <bit>
#include <cstdint>

namespace {
constexpr float initialFloat = 64.0f;
}

SongOptions::SongOptions() {
    for (auto& byte : bytes) byte = 0;
    bytes[0] = 1;
    for (Index i : {showPartContent, audioMonitor, midiMonitor, rememberNotes}) bytes[i] = 1;
    const auto bits = std::bit_cast<std::uint32_t>(initialFloat);
    for (int i = 0; i < 4; i++) bytes[firstFloat + i] = (unsigned char)(bits >> (8 * i));
    bytes[timeSigNum] = 4;
    bytes[timeSigDen] = 4;
}
