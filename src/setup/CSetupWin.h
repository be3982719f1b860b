#pragma once

#include "gui/dialogs/CDialogWin.h"
#include "ui/NoticeRouter.h"

class CQV;
class CScrollPanel;
class Workspace;

/// "Setup", the one window for all settings: a column of tabs, and beside it the page of the chosen
/// one, which is made anew with each change of the tab. Every change is in force and in the
/// settings at once, but for block size and rate of the device, which are applied by a button.
///
/// It is not modal: the song can play meanwhile. The field that has the focus gets its keys first,
/// then those that act in every window of the program do. Interface thread.
class CSetupWin : public CDialogWin {
public:
    Workspace& workspace;
    CQV* const host;
    int tab; ///< index of the chosen one; kept as "page" of section "options"

    explicit CSetupWin(Workspace& workspace);
    ~CSetupWin() override;

    void open();            ///< shows it, or brings it to the front
    void setTab(int index); ///< chooses a tab; others than the known ones do nothing
    /// Makes the page anew from what is in force. The field of that name keeps the focus.
    void tabChanged();
    void projectChanged(); ///< the project has another name

    static int tabCount();
    static const char* tabName(int index);

    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void hide() override; ///< what was typed last counts

private:
    class Tabs;
    int tabHeight() const;
    CRect tabRect(int index) const; ///< in the column
    void makePage();
    CScrollPanel* newScroll(CRect place);
    void tabsPaint(CObject* sender, CGraphic* g, CRect rect);
    void tabsMouseMove(CObject* sender, int x, int y, int btn);
    void tabsMouseUp(CObject* sender, int x, int y, int btn);
    bool tabsKeyDown(CObject* sender, int& key, int mods);
    bool cancelTyping();

    CCtrl* tabs;                    ///< in the client area, as is the page
    CGroup* page = nullptr;         ///< null until the window is opened
    CScrollPanel* scroll = nullptr; ///< the page, where it has to be scrolled
    int hoverTab = -1;              ///< under the pointer, -1 none
    const NoticeLink devices;
};
