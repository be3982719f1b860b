#pragma once

#include "base/CStr.h"
#include "sequencer/edit/EventActions.h"
#include "ui/NotePlace.h"

#include <functional>

class Workspace;

// What commands and keys do to notes or hits, in every view that shows some. Each edit is one step
// of all parts. Interface thread.

/// The notes of a part, and of others that are edited along.
struct HeldNotes {
    Workspace& workspace;
    NotePlace place; ///< of the part
    PartList parts;  ///< with it
};

/// Whether an action of that name is one of those for notes: "delete", "cut", "copy", "paste",
/// "duplicate", "selectAll", "quantize", "glue", "mutenotes", "splitatcursor", "outofscale".
bool isNoteAction(const CStr& name);
/// Carries it out; false for others.
bool noteAction(const HeldNotes& hand, const CStr& name);

struct NoteEvent {
    CBaseEvent* event = nullptr;
    NoteFacts facts;
};
/// The first selected event of the part, or with `last` the last one; null without any.
NoteEvent selectedEvent(const NotePlace& place, bool last);
/// Which chord the selected notes form, "Am7"; empty for none.
CStr selectedChord(const PartList& parts);

/// Left and Right lead from note to note, with Shift beside what is selected, with Control arrows
/// move what is selected, with Alt they change lengths and velocities. `show` brings an event of
/// the part into view. False for other keys, and where nothing is selected that they need.
bool noteArrow(const HeldNotes& hand, int key, int mods,
               const std::function<void(const NoteEvent&)>& show);
