#pragma once

#include "gui/CGroup.h"
#include "gui/controls/CRibbonItem.h"

#include <vector>

class CMenuItem;
class CWindowButton;

/// A ribbon, for `CWin::addToolbar`: a row of tabs, and below it the commands of the tab in front
/// as buttons. What does not fit is reached by a button at the end, which opens the tab's menu.
///
/// The commands are those of menus, which are filled anew each time that they are shown or chosen
/// from. Interface thread.
class CRibbons : public CGroup {
public:
    static constexpr int tabHeight = 20, stripHeight = 32;

    CRibbons(CWin* owner, const CStr& name);

    /// A tab with commands of the window `target`. `builder`, owned, is called with the popup to
    /// fill, whose `tag` is the tab's; null for a tab whose `menu` the caller fills himself.
    CRibbonItem* add(CWin* target, const CStr& text, int tag, COnChange* builder);
    void clearTabs();
    /// Shows the tabs of this window, unless they are empty, beside those of the ribbon's own; the
    /// button at the right end maximizes and restores it.
    void setActiveWin(CWin* active);
    CRibbonItem* getTab(int index) const; ///< -1 the one in front; null outside
    void setTabIndex(int index);          ///< brings a tab to the front; none outside
    CRibbonItem* itemAtPos(int x, int y); ///< in the ribbon's coordinates; null beside them
    /// Brings a tab to the front, or carries a command out: opens its menu, calls its `onChange`,
    /// or, if it has none, `CWin::menuAction` of its window. One that does not stand at its place
    /// any more, or is off, is only shown as it is now. `fromKeys`: menus select their first line.
    void itemClicked(CRibbonItem* item, bool fromKeys, int btn);
    /// Asks for the commands of the tab in front again, and shows what has changed.
    void refresh();
    CRibbonItem* marked() const; ///< that the keys have reached; null without the focus

    void resized() override;
    void paint(CGraphic* g, CRect rect) override;
    void setFocus(bool on) override;
    void describe(Description& d, int part) const override;
    /// Left and Right walk through the commands, Up and Down through the tabs, Return acts.
    bool keyDown(int key, int mods) override;

private:
    void placeTabs();
    void layout();
    std::vector<CRibbonItem*> wantedItems();
    bool shows(const std::vector<CRibbonItem*>& wanted) const;
    CMenuItem* entryOf(const CRibbonItem* item) const;
    void callEntry(CRibbonItem* item, CMenuItem* entry, bool fromKeys, int btn);
    CPoint below(const CRibbonItem* item) const;
    void step(int by);
    void stepTab(int by);

    CGroup *tabs, *strip; ///< of CRibbonItem
    CWindowButton* sizeButton;
    CWin* activeWin;
    int tabIndex = 0;
    int markedIndex = -1; ///< in `strip`
};
