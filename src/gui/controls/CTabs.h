#pragma once

#include "base/CStringList.h"
#include "gui/CGroup.h"

/// A line of text, or several, cut at line feeds. Presses pass through to what is behind it.
class CLabel : public CCtrl {
public:
    CStr text;
    int textFlags = 2;            ///< TextFlag; of several lines only the horizontal ones count
    int textCol = -1;             ///< -1 is the colour of text on the window
    const CCtrl* field = nullptr; ///< that it names; while that is disabled, the label is dim

    CLabel(CWin* win, const CStr& text, int left, int top, int width, int height);
    void paint(CGraphic* g, CRect rect) override;
    void setText(const CStr& newText);
    void describe(Description& d, int part) const override;
};

/// A group on a panel's background.
class CPanel : public CGroup {
public:
    using CGroup::CGroup;
    void paint(CGraphic* g, CRect rect) override;
};

/// A strip for `CWin::addToolbar`.
class CToolbar : public CGroup {
public:
    CToolbar(CWin* win, const CStr& name);
    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;
};

/// An etched horizontal line.
class CSeparator : public CCtrl {
public:
    using CCtrl::CCtrl;
    void paint(CGraphic* g, CRect rect) override;
};

/// A row of tabs, one for each string. `onChange` tells that another one was chosen.
class CTabs : public CCtrl {
public:
    CStringList items;
    int index = 0;
    int hoverIndex = -1;               ///< tab under the pointer, -1 none
    int tabWidth = 64;                 ///< pixels; below 1 only the first is hit
    COnChange* onRightClick = nullptr; ///< owned

    CTabs(CWin* win, const CStr& name, int left, int top, int width, int height);
    ~CTabs() override;
    void paint(CGraphic* g, CRect rect) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    void mouseOver(bool enter, int x, int y) override;
    bool keyDown(int key, int mods) override; ///< Left, Right, Home, End
    bool contextMenu() override;
    void describe(Description& d, int part) const override;
    int accessParts() const override;
    int focusedPart() const override;
    bool pressPart(int part) override;
    void setIndex(int tab); ///< clamped to the tabs; reports a change

private:
    int tabAt(int x) const; ///< -1 beyond the last
};
