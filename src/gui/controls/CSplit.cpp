#include "gui/controls/CSplit.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/XConnection.h"

namespace {
constexpr int cursorWidth = 3, cursorHeight = 4, cursorCorner = 10; // numbers of `CCtrl::cursor`
constexpr int gripLines = 3, gripStep = 4;
} // namespace

CSplit::CSplit(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CCtrl(owner, name, l, t, w, h) {
    hooverable = true;
    cursor = cursorWidth;
}

void CSplit::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(isHovered() || isPushed() ? colours.accent : colours.frame, rect);
    cursor = horizontal ? cursorWidth : cursorHeight;
}

void CSplit::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!target) return;
    const CPoint at = mousePos();
    dragStartX = at.x;
    dragStartY = at.y;
    startSize = horizontal ? target->width : target->height;
}

void CSplit::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    if (!target || !isPushed() || !(btn & modLeft)) return;
    const CPoint at = mousePos();
    const int delta = horizontal ? at.x - dragStartX : at.y - dragStartY;
    int size = startSize + (horizontal || fromTop ? delta : -delta);
    if (size < minSize)
        size = 0;
    else if (maxSize != -1 && size < maxSize)
        size = maxSize;
    int& field = horizontal ? target->width : target->height;
    if (size == field) return;
    field = size;
    win->resized();
    win->redraw();
}

CSizer::CSizer(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CCtrl(owner, name, l, t, w, h) {
    cursor = cursorCorner;
}

/// The window that stands on the screen, but a page that does not fill its area sizes itself.
CWin* CSizer::topWindow() const {
    CWin* outer = win;
    while (outer->hasStyle(winChild) && outer->parent) {
        if (outer->isPage() && !outer->hasStyle(winMaximized)) break;
        outer = static_cast<CWin*>(outer->parent);
    }
    return outer;
}

void CSizer::paint(CGraphic* g, CRect rect) {
    g->setLineCol(win->app->gui->palette.dimText);
    for (int i = 1; i <= gripLines; i++) {
        const int reach = i * gripStep;
        g->drawLine(rect.right - reach, rect.bottom - 1, rect.right, rect.bottom - 1 - reach);
    }
}

void CSizer::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    CWin* outer = topWindow();
    if (outer->hasStyle(winMaximized)) return; // its rectangle is the one to go back to
    const CPoint at = outer->getPos(false), size = outer->getSize();
    outer->restoreRect = asRect(at.x, at.y, size.x, size.y);
}

void CSizer::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    CWin* outer = topWindow();
    if (!isPushed() || !(btn & modLeft) || outer->hasStyle(winMaximized)) return;
    const CPoint now = mousePos(), from = win->app->lastMousePos;
    const CRect& r = outer->restoreRect;
    outer->move(r.left, r.top, r.right + now.x - from.x, r.bottom + now.y - from.y);
}
