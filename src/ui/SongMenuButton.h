#pragma once

#include "gui/controls/CButton.h"

class CPopup;
class CSeq;
class Workspace;

/// A button that tells a choice of the song and offers the others in a menu below it. Without a
/// song it offers none. Interface thread.
class SongMenuButton : public CButton {
public:
    SongMenuButton(CWin* win, Workspace& workspace, const CStr& name, const CStr& hint,
                   const CRect& place);

protected:
    Workspace& workspace;

    CSeq* song() const; ///< null without one that can play
    virtual void fill(CPopup* popup, CSeq* seq) = 0;
    /// Shows `now`; a reader says `spoken`.
    void tell(const CStr& now, const CStr& spoken);

private:
    void clicked(CObject*);
};
