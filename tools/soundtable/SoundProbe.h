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

/// Plays a note in a sampler of its own, `seconds` of it.
Sound playNote(CQV* host, const MakeProgram& make, const ProbeNote& note,
               double seconds = noteSeconds);

/// Plays the row of notes.
std::vector<Sound> playProbe(CQV* host, const MakeProgram& make);

} // namespace soundtable
