#include "arrange/ArrangeState.h"

#include "base/Messages.h"
#include "sequencer/song/CSeq.h"
#include "ui/DragSnap.h"
#include "ui/Options.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

ArrangeState::ArrangeState(Workspace& space, SongRange& songRange)
    : workspace(space), qv(space.host()), range(songRange), actions(space.commands()) {
}

bool ArrangeState::anySolo() const {
    bool any = false;
    if (CSeq* song = seq())
        for (const auto* t : song->getProg()->tracks) any = any || t->soloed();
    return any;
}

bool heardAmong(const CSongTrack* track, bool anySolo) {
    return !track->muted() && (!anySolo || track->soloed());
}

void ArrangeState::tell(const CStr& failure) const {
    if (!failure.empty()) showMsg(workspace.mainWindow(), "Error", failure);
}

int ArrangeState::snapTicks() const {
    return gridTicks(*seq()->snap, axis(), workspace.options());
}

int ArrangeState::stepTicks() const {
    return gridStep(*seq()->snap, axis(), workspace.options());
}

int ArrangeState::snappedBy(int grid, int anchor, int dragged) const {
    return snappedDelta(grid, workspace.options().relativeSnap.on() ? 0 : anchor, dragged);
}

CSeq* ArrangeState::seq() const {
    return playableSongOf(qv);
}
