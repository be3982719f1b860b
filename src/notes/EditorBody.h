#pragma once

#include "gui/CGroup.h"

class CPart;
class CPopup;
class CTrack;

/// What an editor holds below its bar: all that shows and edits parts of some kinds. Of the bodies
/// of an editor one is visible. Interface thread.
class EditorBody : public CGroup {
public:
    EditorBody(CWin* owner, const CStr& name) : CGroup(owner, name, 0, 0, 1, 1) {}

    virtual bool shows(const CPart* part) const = 0; ///< whether it is made for parts like this
    /// Turns to a part that it shows, from side to side; null for none. Ends what the mouse drags.
    virtual void setPart(CPart* part, CTrack* track) = 0;
    virtual void songChanged() = 0; ///< the song, the track or the part has
    virtual void idle() {}          ///< follows what has no notice
    virtual CCtrl* keyCtrl() = 0;   ///< where keys go first
    /// Whether the bar has the switch of an action while this body shows.
    virtual bool showsSwitch(const CStr& action) const { return action == "snap"; }
    virtual bool knowsAction(const CStr& name) const = 0;
    virtual bool runAction(const CStr& name) = 0; ///< false where it has nothing to do
    // Entries of its own in the menus.
    virtual void fillPart(CPopup*) {}
    virtual void fillOptions(CPopup*) {}
};
