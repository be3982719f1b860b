#pragma once

#include "engine/ParamRef.h"

class CComp;
class CQV;

// What a control surface acts on. Interface thread.

/// Parameter `index` of a component that the user has in front, else, also for one that has none,
/// of the strip of the selected track, else of the first audio out. None beyond its parameters.
ParamRef surfaceParamOf(CQV* host, CComp* front, int index);
/// Selects the track behind the selected one, or for -1 the one before; stays at the ends.
void stepSelectedTrack(CQV* host, int by);
