#include "sequencer/song/SongOptions.h"

#include <bit>
#include <cstdint>

namespace {
constexpr float initialZoom = 64.0f;
}

SongOptions::SongOptions() {
    for (auto& byte : bytes) byte = 0;
    bytes[0] = 1;
    for (Index i : {showPartContent, audioMonitor, midiMonitor, rememberNotes}) bytes[i] = 1;
    setZoom(initialZoom);
    bytes[timeSigNum] = 4;
    bytes[timeSigDen] = 4;
}

float SongOptions::zoom() const {
    std::uint32_t bits = 0;
    for (int i = 0; i < 4; i++) bits |= std::uint32_t(bytes[zoomFloat + i]) << (8 * i);
    return std::bit_cast<float>(bits);
}

void SongOptions::setZoom(float pixels) {
    const auto bits = std::bit_cast<std::uint32_t>(pixels);
    for (int i = 0; i < 4; i++) bytes[zoomFloat + i] = (unsigned char)(bits >> (8 * i));
}
