#include "gui/CCtrl.h"

#include "gui/CApp.h"
#include "gui/CGroup.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/Scale.h"
#include "gui/XConnection.h"
#include "gui/access/LiveTree.h"

#include <cstdint>
#include <cstdlib>

namespace {
constexpr int dragDistance = 9;
}

CCtrl::CCtrl(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : win(owner), left(l), top(t), width(w), height(h) {
    id = name;
    category = catCtrl;
}

CCtrl::~CCtrl() {
    leaveApp();
    delete onChange;
    delete onPaint;
    delete onMouseDown;
    delete onMouseMove;
    delete onMouseUp;
    delete onKeyDown;
    delete onKeyUp;
    delete onDrag;
    delete onDrop;
    delete onDragOver;
    delete onWheel;
}

void CCtrl::leaveApp() {
    if (!win || static_cast<CCtrl*>(win) == this) return; // a window has left by itself
    if (win->mouseCtrl == this) win->mouseCtrl = nullptr;
    if (win->keyCtrl == this) win->keyCtrl = nullptr;
    win->app->forget(this);
}

void CCtrl::redraw() {
    redraw(clientRect());
}

void CCtrl::redraw(CRect part) {
    if (win->app->access) win->app->access->touched(this);
    if (shown()) win->pending.add(visiblePart(part));
}

void CCtrl::scrollArea(CRect part, int dx, int dy) {
    const auto whole = [](int by) { return int64_t(by) * scalePercent % lowestScale == 0; };
    const CRect area = shown() ? visiblePart(part) : CRect();
    if (whole(dx) && whole(dy) && !isCovered(area))
        win->pending.move(area, dx, dy);
    else
        win->pending.add(area);
}

/// Whether anything is painted on top of a part of the window in which it shows.
bool CCtrl::isCovered(const CRect& part) const {
    for (const CCtrl* c = this; c && c->category != catWin; c = c->parent) {
        const CGroup* around = c->parent ? c->parent : win;
        bool above = false;
        for (const CCtrl* other : around->controls) {
            if (above && other->visible && !intersect(other->visibleRect(), part).empty())
                return true;
            above = above || other == c;
        }
    }
    return false;
}

void CCtrl::paint(CGraphic* g, CRect rect) {
    if (onPaint) (*onPaint)(this, g, rect);
}

void CCtrl::mouseDown(int x, int y, int btn) {
    if (onMouseDown) (*onMouseDown)(this, x, y, btn);
}

void CCtrl::mouseMove(int x, int y, int btn) {
    if (onMouseMove) (*onMouseMove)(this, x, y, btn);
    if (!onDrag || !(btn & modLeft) || win->app->dragCtrl) return;
    const CPoint now = mousePos(), start = win->app->lastMousePos;
    if (std::abs(now.x - start.x) >= dragDistance || std::abs(now.y - start.y) >= dragDistance)
        (*onDrag)(this);
}

void CCtrl::mouseUp(int x, int y, int btn) {
    if (onMouseUp) (*onMouseUp)(this, x, y, btn);
}

bool CCtrl::keyDown(int key, int mods) {
    return onKeyDown && (*onKeyDown)(this, key, mods);
}

bool CCtrl::keyUp(int key, int mods) {
    return onKeyUp && (*onKeyUp)(this, key, mods);
}

bool CCtrl::mouseWheel(int x, int y, int btn, int dy, int dx) {
    return onWheel && (*onWheel)(this, x, y, btn, dy, dx);
}

bool CCtrl::touch(int, int, int, const TouchStep&) {
    return false;
}

void CCtrl::mouseOver(bool, int, int) {
}

void CCtrl::_changed(CObject* sender, void* arg) {
    if (parent) parent->_changed(sender, arg);
}

void CCtrl::notify(const CStr& what, CObject* sender) {
    if (parent) parent->notify(what, sender);
}

void CCtrl::setBounds(int l, int t, int w, int h) {
    left = l;
    top = t;
    width = w;
    height = h;
}

void CCtrl::setAlign(int how, int x, int y) {
    align = how;
    alignX = x;
    alignY = y;
}

bool CCtrl::shown() const {
    const CCtrl* at = this;
    for (; at && at->category != catWin; at = at->parent)
        if (!at->visible) return false;
    return win->visible;
}

CRect CCtrl::visiblePart(CRect part) const {
    const auto moved = [](const CRect& r, int dx, int dy) { return sizeRect(r, dx, dy, dx, dy); };
    CRect seen = intersect(part, clientRect());
    for (const CCtrl* c = this; c && c->category != catWin; c = c->parent) {
        seen = moved(seen, c->left, c->top);
        const CCtrl* around = c->parent;
        if (!around) break;
        seen = intersect(moved(seen, -around->scrollX, -around->scrollY), around->clientRect());
    }
    return intersect(seen, win->clientRect());
}

bool CCtrl::isPushed() const {
    return win->mouseCtrl == this;
}

bool CCtrl::isHovered() const {
    return win->app->mouseOverCtrl == this;
}

bool CCtrl::hasKeyFocus() const {
    return win->keyCtrl == this;
}

CRect ctrlBounds(const CCtrl* ctrl) {
    return asRect(ctrl->left, ctrl->top, ctrl->left + ctrl->width, ctrl->top + ctrl->height);
}
