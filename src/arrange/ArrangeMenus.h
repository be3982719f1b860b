#pragma once

#include "base/CObject.h"

#include <initializer_list>

class ArrangeRoom;
class ArrangeView;
class CMenu;
class CPopup;
class CQV;
class Workspace;

/// The menus of the arrangement, in the bar and by themselves. Interface thread.
class ArrangeMenus : public CObject {
public:
    ArrangeMenus(Workspace& workspace, ArrangeRoom& room, ArrangeView& view);

    void merge(CMenu* bar);             ///< adds them all
    void showTrack(CObject* = nullptr); ///< the menu "Track" where a menu was asked for
    void showPart(CObject* = nullptr);  ///< the menu "Part" there

private:
    void entryClicked(CObject* popup);
    void showAt(void (ArrangeMenus::*fill)(CPopup*));
    void fillSong(CPopup* popup);
    void fillTrack(CPopup* popup);
    void fillPart(CPopup* popup);
    void fillOptions(CPopup* popup);
    void fillBounce(CPopup* popup);
    void bounceClicked(CObject* sender);
    /// Groups of actions with lines between.
    void addGroups(CPopup* popup, std::initializer_list<std::initializer_list<const char*>> groups);

    Workspace& workspace;
    CQV* qv;
    ArrangeRoom& room;
    ArrangeView& view;
};
