#include "notes/NoteState.h"

#include "sequencer/CSeq.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

NoteState::NoteState(Workspace& space) : workspace(space), qv(space.host()) {
}

CSeq* NoteState::seq() const {
    return playableSongOf(qv);
}

NotePlace NoteState::place() const {
    return {seq(), track, part, EventRows(track, part, noteHeight),
            viewGrid(*seq()->snap, edit.axis, workspace.options())};
}
