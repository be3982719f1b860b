#pragma once

#include "base/CObject.h"

class CPopup;
class CQV;
class CSeq;
class SongRange;
class Workspace;

/// What menus offer about takes: how many bars run before one begins, and which pass of a loop a
/// part plays. Interface thread.
class TakeMenu : public CObject {
public:
    TakeMenu(Workspace& workspace, const SongRange& range);

    void fillPreRoll(CPopup* popup);
    /// Of the only selected part: which pass it plays, all of it or the range. Nothing
    /// without a part that has takes.
    void fill(CPopup* popup);

private:
    CSeq* seq() const;
    void preRollClicked(CObject* sender);
    void takeClicked(CObject* sender);

    const SongRange& range;
    CQV* qv;
};
