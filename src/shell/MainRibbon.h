#pragma once

#include "base/CObject.h"

class CMainWin;
class CMenu;
class CPopup;
class CRibbons;

/// The ribbon of the main window, with a tab for each menu of the bar. The option "ribbon" tells
/// whether it is shown; it is made when that is wanted first. Interface thread.
class MainRibbon : public CObject {
public:
    /// `bar` outlives it.
    MainRibbon(CMainWin* window, CMenu* bar);
    ~MainRibbon() override;
    MainRibbon(const MainRibbon&) = delete;
    MainRibbon& operator=(const MainRibbon&) = delete;

    /// The bar has other entries, or another page is in front.
    void rebuild();
    /// Brings the commands up to date now and then. Interface tick.
    void refresh();

private:
    bool shown() const;
    void show(bool on);
    void make();
    void fill(CPopup* popup);

    CMainWin* window;
    CMenu* bar;
    CRibbons* ribbon = nullptr; ///< owned by the window
    int ticks = 0;
};
