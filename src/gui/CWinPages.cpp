// Windows that are pages of another, and how they become that and windows of the screen again.
#include "gui/CWin.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/Scale.h"
#include "gui/XConnection.h"
#include "gui/Xdnd.h"
#include "gui/controls/CMDI.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

constexpr int managerMs = 250, askAgainMs = 5; // what a window manager may take to let go

/// Whether the X window lies directly on the screen.
bool onRoot(Display* display, Window window) {
    Window rootFound, around = None, *inside = nullptr;
    unsigned count;
    if (!XQueryTree(display, window, &rootFound, &around, &inside, &count)) return true;
    if (inside) XFree(inside);
    return around == rootFound;
}

/// Takes a window from its manager, which would put it back on the screen if that came late.
void withdraw(Display* display, Window window) {
    XWithdrawWindow(display, window, xConnection().screen);
    XSync(display, False);
    for (int ms = 0; !onRoot(display, window) && ms < managerMs; ms += askAgainMs)
        asSleep(askAgainMs);
}

} // namespace

CWin* CWin::outer() const {
    return static_cast<CWin*>(parent);
}

bool CWin::isPage() const {
    return hasStyle(winChild) && parent && outer()->hasStyle(winPages);
}

CMDI* CWin::pageArea() const {
    return isPage() ? static_cast<CMDI*>(outer()) : nullptr;
}

CWin* getMDIOwner(const CWin* win) {
    const CMDI* area = win->pageArea();
    return area ? area->outer() : nullptr;
}

bool CWin::takesKeys() {
    if (hasStyle(winPopup)) return true;
    const CMDI* area = pageArea();
    if (!area) return hasFocus();
    CWin* owner = getMDIOwner(this);
    return area->current == this && owner && owner->hasFocus();
}

CCtrl* CWin::keyTarget() const {
    if (keyCtrl || !mdi || !mdi->current) return keyCtrl;
    return mdi->current->keyCtrl;
}

void CWin::setMapped(bool on) {
    Display* display = liveDisplay();
    if (!display) return;
    if (on) {
        XMapWindow(display, handle);
        return;
    }
    if (app->drag.of(mouseCtrl)) app->drag.cancel();
    mouseCtrl = nullptr;
    setKeyCtrl(nullptr);
    if (app->hooverCtrl && app->hooverCtrl->win == this) app->setHooverCtrl(nullptr, 0, 0);
    XUnmapWindow(display, handle);
}

void CWin::fillOwner() {
    move(0, 0, parent->width, parent->height);
    updateClient();
    resized();
}

void CWin::moveInto(CMDI* area) {
    Display* display = liveDisplay();
    if (!display) return;
    const bool hadFocus = hasFocus();
    const CPoint at = getPos(true);
    if (visible) withdraw(display, handle);
    app->windows.remove(this);
    style |= winChild;
    parent = area;
    area->children.addUnique(this);
    XDeleteProperty(display, handle, XA_WM_TRANSIENT_FOR);
    XReparentWindow(display, handle, area->handle, toDevice(at.x), toDevice(at.y));
    left = at.x;
    top = at.y;
    if (visible) area->pageShown(this);
    CWin* owner = getMDIOwner(this);
    if (hadFocus && owner) owner->setFocus(true);
}

void CWin::moveOut(CWin* owner, CRect place) {
    Display* display = liveDisplay();
    CMDI* area = pageArea();
    if (!display || !area) return;
    const bool shownNow = visible;
    XUnmapWindow(display, handle);
    area->pageHidden(this);
    area->children.remove(this);
    style &= ~(winChild | winMaximized);
    parent = owner;
    XReparentWindow(display, handle, xConnection().root, toDevice(place.left), toDevice(place.top));
    setHints();
    updateClient();
    move(place.left, place.top, place.right, place.bottom);
    visible = false;
    if (shownNow) show(true);
}
