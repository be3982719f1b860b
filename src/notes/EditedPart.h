#pragma once

#include "ui/Song.h"
#include "ui/Workspace.h"

class CPart;
class CQV;
class CTrack;

/// The part that an editor, or one body of it, shows. Interface thread.
class EditedPart {
public:
    Workspace& workspace;
    CQV* const qv;
    CPart* part = nullptr; ///< stands on `track`; null for none. Not owned
    CTrack* track = nullptr;

    explicit EditedPart(Workspace& space) : workspace(space), qv(space.host()) {}

    CSeq* seq() const { return playableSongOf(qv); } ///< null without a song that plays

protected:
    ~EditedPart() = default;
};
