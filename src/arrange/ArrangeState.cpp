#include "arrange/ArrangeState.h"

#include "base/Messages.h"
#include "sequencer/CSeq.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

ArrangeState::ArrangeState(Workspace& space, SongRange& songRange)
    : workspace(space), qv(space.host()), range(songRange) {
}

bool ArrangeState::anySolo() const {
    bool any = false;
    if (CSeq* song = seq())
        for (const auto* t : each<CSongTrack>(song->getProg()->tracks)) any = any || t->soloed();
    return any;
}

bool heardAmong(const CSongTrack* track, bool anySolo) {
    return !track->muted() && (!anySolo || track->soloed());
}

void ArrangeState::tell(const CStr& failure) const {
    if (!failure.empty()) showMsg(workspace.mainWindow(), "Error", failure);
}

CSeq* ArrangeState::seq() const {
    return playableSongOf(qv);
}
