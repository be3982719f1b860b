#pragma once

#include "tools/soundtable/SoundFigures.h"

class CQV;
class CSynthProg;
class CSampler;

namespace soundtable {

/// Makes a program, owned by the caller, for a sampler.
using MakeProgram = CSynthProg* (*)(CQV* host, CSampler* sampler, int index);

/// Plays the row of notes on a program, each in a sampler of its own. `voices` becomes the number
/// that one note takes. The host has the rate of the probe; interface thread.
std::vector<Sound> playProbe(CQV* host, MakeProgram make, int index, int& voices);

} // namespace soundtable
