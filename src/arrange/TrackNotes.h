#pragma once

#include "arrange/Press.h"
#include "ui/NotePlace.h"

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
/// The part whose notes were selected in place last: it is the only selected one, and has such a
/// row and selected events. Null without one.
CPart* notesInHand(const ArrangeState& state);
