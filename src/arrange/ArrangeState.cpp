#include "arrange/ArrangeState.h"

#include "ui/Song.h"
#include "ui/Workspace.h"

ArrangeState::ArrangeState(Workspace& space, SongRange& songRange)
    : workspace(space), qv(space.host()), range(songRange) {
}

CSeq* ArrangeState::seq() const {
    return playableSongOf(qv);
}
