#pragma once

#include "base/CStringList.h"
#include "gui/CGroup.h"

/// Two halves that step down and up.
class CIncDec : public CCtrl {
public:
    int direction = 0; ///< of the last press: -1 left half, 1 right half

    CIncDec(CWin* win, const CStr& name, int left, int top, int width, int height);
    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
};

/// A value shown by names, with halves to step through them. `onChange` tells of a change.
class CTextValue : public CGroup {
public:
    CStringList items;
    int index = 0;

    CTextValue(CWin* win, const CStr& name, int left, int top, int width, int height);
    void setIndex(int row); ///< clamped; does not report
    void paint(CGraphic* g, CRect rect) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override; ///< Up, Down, Home, End
    void describe(Description& d, int part) const override;
    bool enterNumber(int part, double to) override;

private:
    void stepped(CObject* sender);
    void step(int by);

    CIncDec* halves; ///< one of `controls`
};
