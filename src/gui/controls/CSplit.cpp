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
constexpr int gripLines = 3, gripStep = 4, keyStep = 16;
} // namespace

CSplit::CSplit(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CCtrl(owner, name, l, t, w, h) {
    hooverable = tabStop = true;
    cursor = cursorWidth;
}

void CSplit::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const bool marked = isHovered() || isPushed() || hasKeyFocus();
    g->fillRect(marked ? colours.accent : colours.frame, rect);
    cursor = horizontal ? cursorWidth : cursorHeight;
}

/// By screen coordinates: the bar moves under the pointer.
void CSplit::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (target && (btn & modLeft)) win->app->drag.start(this, this, asPoint(x, y), btn, 1);
}

void CSplit::dragBegin(const DragPoint&) {
    startSize = size();
}

void CSplit::dragMove(const DragPoint&) {
    const CPoint at = mousePos(), from = win->app->lastMousePos;
    const int delta = horizontal ? at.x - from.x : at.y - from.y;
    resize(startSize + (horizontal || fromTop ? delta : -delta));
}

void CSplit::dragCancel() {
    resize(startSize);
}

void CSplit::resize(int wanted) {
    if (wanted < minSize)
        wanted = 0;
    else if (maxSize != -1 && wanted < maxSize)
        wanted = maxSize;
    if (wanted == size()) return;
    if (size() > 0) openSize = size();
    size() = wanted;
    win->resized();
    win->redraw();
    if (onChange) (*onChange)(this);
}

bool CSplit::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (mods || !target) return false;
    const int on = horizontal ? keyRight : ::keyDown, back = horizontal ? keyLeft : ::keyUp;
    const int least = asMax(minSize, maxSize);
    if (key == on || key == back) {
        const int by = (key == on) == (horizontal || fromTop) ? keyStep : -keyStep;
        resize(size() == 0 && by > 0 ? least : size() + by);
    } else if (key == keyHome || (key == keyReturn && size() > 0)) {
        resize(0);
    } else if (key == keyReturn) {
        resize(asMax(openSize, least));
    } else {
        return false;
    }
    return true;
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
        outer = outer->outer();
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

void CSplit::describe(Description& d, int) const {
    d.role = Role::splitter;
    if (d.name.empty()) d.name = "Divider";
    d.set(stateVertical, horizontal);
}
