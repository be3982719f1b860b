#pragma once

#include "arrange/Press.h"
#include "ui/NoteActions.h"

class CGraphic;
class CSongTrack;

// The row under a track in which the notes or hits of its parts are edited in place.

/// Whether a track can have such a row.
bool hasNotes(const CSongTrack* songTrack);
/// The rows of keys or sounds of such a row, in pixels of the content as `ArrangeRow` counts.
EventRows notesRows(const ArrangeRow& row, const CPart* part);
NotePlace notesOf(const ArrangeState& state, const ArrangeRow& row, CPart* part);
/// What a part has of the row, in pixels of the grid.
CRect notesBox(const ArrangeState& state, const ArrangeRow& row, CPart* part);
/// `gesture`: the drag of the grid, null without one; what it edits is shown in place of its part.
void paintNotes(const ArrangeState& state, const ArrangeRow& row, const ArrangeGesture* gesture,
                CGraphic* g, CRect asked);
/// As `pressed`, on such a row; without a gesture where the press is the grid's own.
Press pressedNotes(ArrangeGrid& grid, ArrangeState& state, const ArrangeRow& row, CPoint at,
                   int btn);
/// Whether a point of such a row lies on the start or the end of a note or hit.
bool onNoteEdge(const ArrangeState& state, const ArrangeRow& row, CPoint at);
/// The row of that kind of a track; null without.
const ArrangeRow* notesRowOf(const ArrangeState& state, const CSongTrack* songTrack);
/// The notes of the part that was pressed last in such a row, while it is the only selected one and
/// the row shows: what commands and keys are about. Its `place.part` is null without one.
HeldNotes notesInHand(const ArrangeState& state);
/// Whether an action is about these notes at present.
bool isForNotes(const ArrangeState& state, const CStr& action);
/// Carries out such an action. "transform" goes on in the editor.
bool runOnNotes(ArrangeState& state, const CStr& action);
/// As `noteArrow`; and the note that keys lead to comes into view.
bool notesKey(ArrangeState& state, int key, int mods);
/// Selects a note alone, and its part with it.
void chooseNote(ArrangeState& state, const ArrangeRow& row, CPart* part, CBaseEvent* event);
