#pragma once

#include "arrange/ArrangeMenus.h"
#include "ui/CCompEditor.h"

class ArrangeRoom;
class ArrangeView;
class CSeq;
class Workspace;

/// The window of the song: the arrangement with its menus, and what is dropped on it. Interface
/// thread.
class CSeqWin : public CCompEditor {
public:
    CSeqWin(Workspace& workspace, ArrangeRoom& room, CSeq& seq);
    ~CSeqWin() override;

    bool keyDown(int key, int mods) override;
    bool canRun(const CAction* action) const override;
    bool isOn(const CAction* action) const override;
    bool onAction(CAction* action) override;
    void mergeMenu(CMenu* bar) override;
    bool onFrame() override; ///< follows the play position and the levels
    void idle() override;    ///< follows all that has no notice

private:
    void dropped(CObject* sender, int x, int y, int btn);

    Workspace& workspace;
    ArrangeRoom& room;
    ArrangeView* view;
    ArrangeMenus menus;
};
