#pragma once

class CEffect;
class CEffectProg;
class CFX;
class CStr;

// What a user does to a rack's programs and their chains: each is one step of the history, carried
// out on return. An index beyond the end, or below 0, means the end. Interface thread.

/// An effect (FxKind) comes to a place of a chain.
CFX* insertEffect(CEffect* rack, CEffectProg* prog, int kind, int index);
void removeEffect(CEffect* rack, CEffectProg* prog, CFX* fx);
/// To a place, counted before the move. False where it stays.
bool moveEffect(CEffect* rack, CEffectProg* prog, CFX* fx, int index);

/// All its settings but power become the usual ones, through the door: "Default".
void resetEffect(CEffect* rack, CFX* fx);
/// They become those of the first effect of its kind in a file of racks: "Open". False where there
/// is none.
bool openEffect(CEffect* rack, CFX* fx, const CStr& path);

void addRackProgram(CEffect* rack, int kind); ///< with one effect; current then
