#pragma once

#include "tools/soundtable/SoundFigures.h"

#include <functional>

class CQV;
class CSampler;
class CSynthProg;

namespace soundtable {

/// Makes a program, owned by the caller, for a sampler.
using MakeProgram = std::function<CSynthProg*(CQV* host, CSampler* sampler)>;

// The host has the rate of the probe; interface thread.

/// Plays a note in a sampler of its own, `seconds` of it. `voices` becomes the number that it
/// takes.
Sound playNote(CQV* host, const MakeProgram& make, const ProbeNote& note, int& voices,
               double seconds = noteSeconds);

/// Plays the row of notes; `voices` is that of C4.
std::vector<Sound> playProbe(CQV* host, const MakeProgram& make, int& voices);

} // namespace soundtable
