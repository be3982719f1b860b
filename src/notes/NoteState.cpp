#include "notes/NoteState.h"

#include "sequencer/CSeq.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

NoteState::NoteState(Workspace& space) : workspace(space), qv(space.host()) {
}

CSeq* NoteState::seq() const {
    return playableSongOf(qv);
}

EventRows NoteState::rows() const {
    return EventRows(track, part, noteHeight);
}

NotePlace NoteState::place() const {
    return {seq(), track, part, rows(), viewGrid(*seq()->snap, edit.axis, workspace.options())};
}
