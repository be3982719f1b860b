#pragma once

#include "engine/ParamRef.h"
#include "engine/Setting.h"

class CSampler;
class CSound;

// The parameters of a sampler are MIDI controllers, and each sound has its own map of what they
// move. Interface thread.

/// What modulators and controllers call a setting of a sound (ModTarget); `targetNone` for others.
/// The pitch is that of the coarse tuning.
int targetOfSetting(const Setting& setting);

/// The parameter that moves a setting of a sound of that sampler: the usual controller if it leads
/// there, else the first that does. Without one `assign` leads one there, for the sound and for
/// those of `along` that have none, by a step: the usual one, or another that moves nothing yet in
/// the program. None for a setting that controllers cannot move.
ParamRef soundParamOf(CSampler& sampler, CSound& sound, const Setting& setting, bool assign,
                      const std::vector<CSound*>& along = {});

/// What a parameter of a sampler stands at in the first sound that it moves, 0 to 1; where it moves
/// none what it was set to last.
float soundParamShare(CSampler& sampler, int param);
/// Whether it moves anything in the current program.
bool soundParamMoves(CSampler& sampler, int param);
/// That as a value of the user, which moves all of them.
StoredValue soundParameter(CSampler& sampler, int param);
/// What it moves in the current program, "Cutoff" or "Pan, Cutoff"; where it moves nothing the
/// controller, "CC-71".
CStr soundParamName(CSampler& sampler, int param);
