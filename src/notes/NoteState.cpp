#include "notes/NoteState.h"

#include "sequencer/CSeq.h"

EventRows NoteState::rows() const {
    return EventRows(track, part, noteHeight);
}

NotePlace NoteState::place() const {
    return {seq(), track, part, rows(), viewGrid(*seq()->snap, edit.axis, workspace.options())};
}
