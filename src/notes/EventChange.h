#pragma once

#include "notes/EventCells.h"

class NoteState;

// Cells of the part that the editor shows are changed as one step: of all selected events if the
// one that is told is among them, else of it alone. What a place is typed over moves the others
// along. The result is the event as it has become, or null where nothing was changed.

const CBaseEvent* typeCells(NoteState& state, const CellEvent& told, EventColumn column,
                            const CStr& text);
const CBaseEvent* stepCells(NoteState& state, const CellEvent& told, EventColumn column, int by);
