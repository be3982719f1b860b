#include "gui/CCtrl.h"

#include "gui/CApp.h"
#include "gui/CGroup.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/Scale.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>

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
    Display* display = liveDisplay();
    const CRect own = intersect(part, asRect(0, 0, width, height));
    // A width or height of 0 would mean the rest of the window to the server.
    if (!display || !visible || own.empty()) return;
    const CRect area = toDevice(sizeRect(own, absX, absY, absX, absY));
    XClearArea(display, win->handle, area.left, area.top, unsigned(area.width()),
               unsigned(area.height()), True);
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

void CCtrl::mouseOver(bool, int, int) {
}

void CCtrl::_changed(CObject* sender, void* arg) {
    if (parent) parent->_changed(sender, arg);
}

void CCtrl::notify(const CStr& what, CObject* sender) {
    if (parent) parent->notify(what, sender);
}

void CCtrl::setBounds(int l, int t, int w, int h) {
    if (l != left || t != top) moved();
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

CRect CCtrl::visibleRect() const {
    const auto place = [](const CCtrl* c) {
        return asRect(c->absX, c->absY, c->absX + c->width, c->absY + c->height);
    };
    CRect rect = intersect(place(this), win->clientRect());
    for (const CCtrl* c = parent; c && c->category != catWin; c = c->parent)
        rect = intersect(rect, place(c));
    return rect;
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
