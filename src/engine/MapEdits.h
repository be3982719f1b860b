#pragma once

#include "engine/ParamRef.h"

class CQV;

// Controllers of MIDI that lead to parameters, by the list of maps that is in force. Interface
// thread.

/// What leads to a parameter.
struct LeadingController {
    static constexpr int none = -1, awaited = -2; ///< the next that moves will be it
    int number = none;                            ///< 0 to 127, or one of these
};
LeadingController controllerOf(CQV* host, const ParamRef& to);
/// The next controller that moves leads to it from then on: in place of the one that does, or by a
/// step "Add".
void learnController(CQV* host, const ParamRef& to);
void forgetController(CQV* host, const ParamRef& to); ///< "Forget controller", a step
