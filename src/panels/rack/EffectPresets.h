#pragma once

#include <functional>

class CEffect;
class CFX;
class CPopup;
class Workspace;

/// Adds what gives one effect of a rack other settings: the usual ones, or those of the first of
/// its kind in a preset; and what saves them as one. Nothing happens once it is not `alive`.
/// Interface thread.
void fillEffectPresets(CPopup* popup, Workspace& workspace, CEffect& rack, CFX* fx,
                       const std::function<bool()>& alive);
