#pragma once

#include "gui/CCtrl.h"
#include "gui/CDrag.h"

/// A bar that drags the size of a neighbour. Below `minSize` the neighbour closes. Escape gives a
/// drag back. With the focus the arrows move it, Home closes the neighbour, and Return closes it
/// and opens it again. `onChange` tells of each change.
class CSplit : public CCtrl, private DragHandler {
public:
    bool horizontal = true;  ///< it drags a width; else a height
    bool fromTop = false;    ///< dragging on, right or down, makes the neighbour larger
    int startSize = 0;       ///< of the neighbour when the drag began
    int minSize = 40;        ///< pixels
    int maxSize = -1;        ///< the least size of an open neighbour, for large panels; -1 none
    CCtrl* target = nullptr; ///< the neighbour; not owned

    CSplit(CWin* win, const CStr& name, int left, int top, int width, int height);
    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;

private:
    int& size() const { return horizontal ? target->width : target->height; }
    void resize(int wanted);
    void dragBegin(const DragPoint& point) override;
    void dragMove(const DragPoint& point) override;
    void dragCancel() override;

    int openSize = 0; ///< to open again at
};

/// A grip in the lower right corner that drags the size of the window.
class CSizer : public CCtrl {
public:
    CSizer(CWin* win, const CStr& name, int left, int top, int width, int height);
    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;

private:
    CWin* topWindow() const;
};
