#pragma once

#include "gui/controls/CMDI.h"

#include <vector>

class CDocker;

/// One page of a docker: a name and the windows that are put there, in order. Its windows are known
/// to the docker, so that it may leave `CDocker::docks` and come back as a step is undone.
class CDock : public CObject {
public:
    CDocker* owner;
    CStr name;

    explicit CDock(CDocker* docker, const CStr& title = "Untitled") : owner(docker), name(title) {}
};

/// An area with several pages of windows, one of which is in front. The first stands for what the
/// owner shows where there is no docker: while it is in front, the docker is hidden. Interface
/// thread; a graph task may move `docks` while the interface waits for it.
class CDocker : public CMDI {
public:
    static constexpr int mostTabWidth = 180;

    ListOf<CDock> docks; ///< owned; never without the first
    /// The tab of the first page is there even when it is the only one.
    bool tabAlwaysShow = false;
    /// The first page has something to show. Else it stands only where no other page is open.
    bool firstStands = true;

    CDocker(CApp* app, CWin* owner, const CStr& name, int left, int top, int width, int height);
    ~CDocker() override;

    /// Puts a window on the page `where`, from 1 on, on a new one for -1, or makes it a window of
    /// its own for -2. What the entries of the menu "Dock" call; anything else does nothing.
    virtual void dockWin(CWin* page, int where);

    CDock* getDock(int index) const;       ///< -1 is the one in front; null outside the list
    CDock* dockOf(const CWin* page) const; ///< null for a window that is on no page
    CWin* winOn(const CDock* dock, int index) const; ///< in the order of the page; null outside
    int orderOf(const CWin* page) const;             ///< place of a window on its page, -1 on none
    /// Puts a window on a page, in front of the window at `order`, -1 behind the last. A window
    /// that is open stays open.
    void attach(CWin* page, CDock* dock, int order = -1);
    /// Moves a page back into the docker, as far as it fits.
    void keepInside(CWin* page);
    /// Takes it off its page; its X window becomes one of the screen, at this place.
    void detach(CWin* page, CRect place);
    void clearDocks(); ///< hides the windows on pages, and deletes all pages but the first

    /// Whether a page can be brought to the front: the first, and each with an open window.
    bool hasTab(const CDock* dock) const;
    int tabCount() const; ///< 0 when no tabs are shown
    /// Brings a page to the front; one without a tab gives way to the first behind the first page
    /// that has one.
    void setActive(int index);
    void nextDock(int by); ///< to a tab next to it, around the end
    /// Shows what the list of docks asks for, after it has been changed from outside.
    void updateDocks();

    /// The tab of a page as left and right edge in a row of tabs; empty without one.
    CRect tabRect(const CDock* dock, int height) const;
    CDock* dockAtPos(int x) const; ///< null beside the tabs

    void pageShown(CWin* page) override;
    void pageHidden(CWin* page) override;
    void pageGone(CWin* page) override;
    void addDockMenu(CPopup* popup, CWin* page) override;

protected:
    bool inFront(const CWin* page) const override;

private:
    struct Place {
        CWin* win;
        CDock* dock;
    };
    bool isOpen(const CDock* dock) const;
    CDock* firstTab() const;
    void removePlace(const CWin* page);
    void hidePlaced();
    void dockClicked(CCtrl* item);

    std::vector<Place> places; ///< of windows on pages, open or not, in the order of each page
    CDock* active;             ///< that `activeIndex` means, though it may have left the list
};
