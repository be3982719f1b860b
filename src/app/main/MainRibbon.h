#pragma once

#include "base/CObject.h"

class CMainWin;
class CMenu;
class CQV;
class CRibbons;

/// The ribbon of the main window, with a tab for each menu of the bar. The option "ribbon" tells
/// whether it is shown; it is made when that is wanted first. Interface thread.
class MainRibbon : public CObject {
public:
    /// `bar` outlives it.
    MainRibbon(CMainWin* window, CQV* host, CMenu* bar);

    bool shown() const;
    void toggle();
    /// The bar has other entries, or another page is in front.
    void rebuild();
    /// Brings the commands up to date now and then. Interface tick.
    void refresh();

private:
    void make();
    void fill(CObject* sender);

    CMainWin* window;
    CQV* qv;
    CMenu* bar;
    CRibbons* ribbon = nullptr; ///< owned by the window
    int ticks = 0;
};
