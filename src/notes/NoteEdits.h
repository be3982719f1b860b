#pragma once

#include "base/CStr.h"
#include "ui/NotePlace.h"

class NoteState;

// What commands do to the notes or hits of the part that the editor shows. Each edit is one step.

/// Carries out the action of that name if it is one of the editor's: "delete", "cut", "copy",
/// "paste", "duplicate", "selectAll", "quantize", "insertnote". False for others, and without a
/// part.
bool noteAction(NoteState& state, const CStr& name);

bool isNoteAction(const CStr& name); ///< whether it is one of these

/// While the part is recorded in steps: a key or sound went down, or with velocity 0 up. Nothing
/// otherwise, and for a row below 0.
void recordStep(NoteState& state, int row, int velocity);

struct NoteEvent {
    CBaseEvent* event = nullptr;
    NoteFacts facts;
};
/// The first selected event, or with `last` the last one; null without any.
NoteEvent selectedEvent(const NoteState& state, bool last);
/// Brings it into view and tells it.
void showEvent(NoteState& state, const NoteEvent& shown);
