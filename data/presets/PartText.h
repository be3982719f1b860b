#pragma once

#include "data/presets/Clips.h"
#include "data/presets/Line.h"
#include "sequencer/song/CPart.h"

#include <memory>
#include <span>

class CQV;
class CSample;

// Parts of songs out of text. Interface thread.

namespace presets {

constexpr int stepTicks = barTicks / 16;

/// The notes of a line, and the part as long as the line.
std::unique_ptr<CPart> notePart(const char* line);
/// Hits of rows, and the part as long as they are.
std::unique_ptr<CPart> drumPart(std::span<const DrumRow> rows);
/// All of a sample, stretched to that many bars of 4/4.
std::unique_ptr<CPart> soundPart(CSample* sample, int bars);

/// What a loop sounds like, as a new sample of the host's pool.
CSample* poolSample(CQV* host, const SoundLoop& loop);

} // namespace presets
