#include "arrange/ArrangeState.h"

#include "ui/Song.h"
#include "ui/Workspace.h"

ArrangeState::ArrangeState(Workspace& space) : workspace(space), qv(space.host()) {
}

CSeq* ArrangeState::seq() const {
    return playableSongOf(qv);
}
