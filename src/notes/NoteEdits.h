#pragma once

#include "ui/NoteActions.h"

class NoteState;

// What commands do to the notes or hits of the parts that the editor shows and edits.

/// Carries out an action for notes (`noteAction`), or "insertnote". False for others, and without a
/// part.
bool editAction(NoteState& state, const CStr& name);
bool isEditAction(const CStr& name); ///< whether it is one of these

/// While the part is recorded in steps: a key or sound went down, or with velocity 0 up. Nothing
/// otherwise, and for a row below 0.
void recordStep(NoteState& state, int row, int velocity);

/// Brings it into view and tells it.
void showEvent(NoteState& state, const NoteEvent& shown);
