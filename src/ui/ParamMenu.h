#pragma once

#include "engine/ParamRef.h"

#include <functional>

class CComp;
class CPopup;
class Workspace;

/// The parameter behind a control; with `assign` one is made where there can be one. None for what
/// automation and controllers cannot move.
using ParamOf = std::function<ParamRef(bool assign)>;

/// Adds what can be done with a parameter to a control's menu: a MIDI controller learns it or is
/// forgotten, its lane of automation is shown in the song, a macro of its component turns it. What
/// cannot be done now is grey. `comp` has the parameter, or may get one for the control; null, and
/// nothing is added, where there can be none. What `param` stands for outlives the menu. Interface
/// thread.
void addParamItems(CPopup* popup, Workspace& workspace, const ParamOf& param, CComp* comp);

/// The parameter that a macro of a component turns from now on, -1 none; one step.
void setMacro(CComp& comp, int macro, int param);

/// Shows the lane of a parameter, a new one where there is none, in the song's window. False
/// without a track that it is heard on.
bool showAutomation(Workspace& workspace, const ParamRef& of);
