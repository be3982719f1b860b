#pragma once

#include "gui/CCtrl.h"

#include <memory>

class CPopup;
class CRibbons;

/// A tab of a ribbon with the menu of its commands, or what stands below the tab in front: a
/// command, the gap between two groups of them, or the button that opens the whole menu.
class CRibbonItem : public CCtrl {
public:
    enum Kind : int { tab, command, subMenu, separator, more };

    CStr text;
    Kind kind;
    CWin* target;                 ///< the window whose commands these are; not owned
    int index = -1;               ///< of a command in the menu of its tab
    bool checked = false;         ///< the command stands for something that is on
    std::unique_ptr<CPopup> menu; ///< of a tab: its commands; else null

    CRibbonItem(CRibbons* ribbon, Kind kind, const CStr& text, CWin* target);
    ~CRibbonItem() override;

    int neededWidth() const; ///< pixels
    bool selectable() const { return enabled && kind != separator; }
    /// Of a tab: fills its menu anew, if it has a builder. Without one what was added stays.
    void build();
    void setState(bool isEnabled, bool isChecked);
    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;

private:
    void paintTab(CGraphic* g, CRect rect) const;
    void paintCommand(CGraphic* g, CRect rect) const;

    CRibbons* ribbon;
};
