#include "arrange/ArrangeState.h"

#include "base/Messages.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

ArrangeState::ArrangeState(Workspace& space, SongRange& songRange)
    : workspace(space), qv(space.host()), range(songRange) {
}

void ArrangeState::tell(const CStr& failure) const {
    if (!failure.empty()) showMsg(workspace.mainWindow(), "Error", failure);
}

CSeq* ArrangeState::seq() const {
    return playableSongOf(qv);
}
