#pragma once

#include "base/CStr.h"

class CPopup;
class WaveState;

// What commands do to the sound that the editor shows. Each edit is one step.

/// Whether an action of that name is one of the editor's: "cut", "copy", "paste", "delete",
/// "selectAll", those that zoom, and "playrange".
bool isWaveAction(const CStr& name);
/// Carries it out, as far as there is sound for it; false for others.
bool waveAction(WaveState& state, const CStr& name);

/// The audio menu: what is done to the range, or to all that is heard without one, and to marks.
/// The entries act on the state as long as the menu is open.
void fillWaveMenu(CPopup* popup, WaveState& state);
void fillWaveOptions(CPopup* popup, WaveState& state);

/// A mark comes, unless there is one.
void addMarks(WaveState& state, const std::vector<int>& frames);
