#pragma once

#include "tools/soundtable/SoundFigures.h"

namespace soundtable {

/// Draws of each program how the spectrum of C4 changes in time, from low bands at the bottom to
/// high ones and from its start at the left, the louder the darker, as an SVG. False if it cannot
/// be written.
bool writePicture(const char* path, const std::vector<Figures>& bank);

} // namespace soundtable
