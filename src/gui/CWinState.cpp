// How a window is shown, sized by the window manager, and run in a loop of its own.
#include "gui/CWin.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/Monitors.h"
#include "gui/XConnection.h"
#include "gui/controls/CMDI.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

constexpr int restoredMargin = 100; // from the screen's edges, for want of a former rectangle
constexpr int managerMs = 250, askAgainMs = 5; // what a window manager may take to act
constexpr int wheelFirst = 4, wheelLast = 7;

/// Whether nobody rules who has the focus: there is no window manager, and the pointer decides.
bool focusIsFree() {
    Window focused = None;
    int revert;
    XGetInputFocus(liveDisplay(), &focused, &revert);
    return focused == None || focused == PointerRoot || focused == xConnection().root;
}

} // namespace

void CWin::show(bool activate) {
    Display* display = liveDisplay();
    if (!display || visible) return;
    resized();
    if (hasStyle(winCentre)) centre();
    setSizeHints();
    XSetWindowAttributes attributes{};
    attributes.override_redirect = !activate || hasStyle(winPopup);
    XChangeWindowAttributes(display, handle, CWOverrideRedirect, &attributes);
    XMapRaised(display, handle);
    XSync(display, False);
    if (!hasStyle(winChild) && !hasStyle(winPopup)) app->windows.addUnique(this);
    visible = true;
    if (CMDI* area = pageArea()) area->pageShown(this);
    if (activate && !hasStyle(winPopup) && focusIsFree()) setFocus(true);
}

void CWin::centre() {
    style &= ~winCentre;
    auto* owner = outer();
    const CRect room = monitorOf(owner);
    CRect around = room;
    if (owner && owner->visible) {
        const CPoint at = owner->getPos(true);
        around = asRect(at.x, at.y, at.x + owner->width, at.y + owner->height);
    }
    const CPoint corner = centredIn(around, width, height, room);
    setPos(corner.x, corner.y);
}

void CWin::raise(bool focus) {
    if (Display* display = liveDisplay()) XRaiseWindow(display, handle);
    if (CMDI* area = pageArea()) area->pageRaised(this);
    if (focus) setFocus(true);
}

void CWin::hide() {
    if (visible) {
        visible = false;
        // Before it goes, or a window manager would choose who gets the keys next.
        if (app->modalWin == this && parent && hasFocus()) parent->setFocus(true);
        if (Display* display = liveDisplay()) {
            XUnmapWindow(display, handle);
            XSync(display, False);
        }
        app->windows.remove(this);
        if (app->drag.of(mouseCtrl)) app->drag.cancel();
        mouseCtrl = keyCtrl = nullptr;
        if (app->hooverCtrl && app->hooverCtrl->win == this) app->setHooverCtrl(nullptr, 0, 0);
        if (app->dragCtrl && app->dragCtrl->win == this) app->endDrag(); // no release will come
        if (CMDI* area = pageArea()) area->pageHidden(this);
    }
    leaveLists();
}

void CWin::leaveLists() {
    app->menus.remove(this);
    app->topMenu = app->menus.last();
}

void CWin::minimize() {
    Display* display = liveDisplay();
    if (!display || !hasStyle(winSizable) || isPage()) return;
    XIconifyWindow(display, handle, xConnection().screen);
    style |= winMinimized;
    setFocus(false);
}

/// Whether the window manager has made the window fill the screen by itself.
bool CWin::filledByManager() {
    constexpr long mostStates = 128;
    Display* display = liveDisplay();
    if (!display) return false;
    xConnection().findManagerAtoms();
    const XConnection::Atoms& atoms = xConnection().atoms;
    if (!atoms.netState) return false;
    Atom typeFound;
    int format;
    unsigned long count = 0, rest;
    unsigned char* found = nullptr;
    XGetWindowProperty(display, handle, atoms.netState, 0, mostStates, False, XA_ATOM, &typeFound,
                       &format, &count, &rest, &found);
    bool filled = false;
    const auto* states = reinterpret_cast<const Atom*>(found);
    for (unsigned long i = 0; states && format == 32 && i < count; i++)
        filled = filled ||
                 (states[i] && (states[i] == atoms.netMaxVert || states[i] == atoms.netMaxHorz ||
                                states[i] == atoms.netFullscreen));
    if (found) XFree(found);
    return filled;
}

void CWin::askManager(int action) {
    const XConnection& x = xConnection();
    Display* display = liveDisplay();
    if (!display || !x.atoms.netState) return;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = handle;
    event.xclient.message_type = x.atoms.netState;
    event.xclient.format = 32;
    event.xclient.data.l[0] = action;
    event.xclient.data.l[1] = long(x.atoms.netMaxVert);
    event.xclient.data.l[2] = long(x.atoms.netMaxHorz);
    XSendEvent(display, x.root, False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
    XSync(display, False);
}

bool CWin::fillsScreen() {
    return getPos(true) == asPoint(0, 0) && getSize() == asPoint(screenWidth(), screenHeight());
}

void CWin::maximize() {
    if (!hasStyle(winSizable)) return;
    style |= winMaximized;
    if (hasStyle(winManaged) && !isPage() && filledByManager()) {
        restoreRect = asRect(restoredMargin, restoredMargin, screenWidth() - restoredMargin,
                             screenHeight() - restoredMargin);
        restore();
        return;
    }
    saveRect();
    CMDI* area = pageArea();
    if (area)
        fillOwner();
    else if (hasStyle(winManaged))
        askManager(1);
    else
        fillRoom(monitorOf(this));
    resized();
    if (area) area->changed();
}

void CWin::fillRoom(CRect room) {
    move(room.left, room.top, room.width(), room.height());
}

void CWin::restore() {
    Display* display = liveDisplay();
    style &= ~winMaximized;
    if (!display) return;
    CMDI* area = pageArea();
    if (area) updateClient();
    if (hasStyle(winManaged) && !area) {
        askManager(0);
        for (int ms = 0; fillsScreen() && ms < managerMs; ms += askAgainMs) asSleep(askAgainMs);
        // Some window managers keep a window that fills the screen at that size.
        if (fillsScreen()) {
            XUnmapWindow(display, handle);
            setPos(restoredMargin, restoredMargin);
            setSize(screenWidth() - 2 * restoredMargin, screenHeight() - 2 * restoredMargin);
            XMapWindow(display, handle);
        }
    }
    move(restoreRect.left, restoreRect.top, restoreRect.right, restoreRect.bottom);
    if (area) area->changed();
    resized();
}

void CWin::showModal() {
    const CApp::HandlerScope scope(app);
    setCapture(false);
    CWin* former = app->modalWin;
    app->modalWin = this;
    show(true);
    while (visible && liveDisplay()) {
        modalTurn();
        if (visible) app->longIdle();
    }
    app->modalWin = former;
    if (parent && liveDisplay() && focusIsFree()) parent->setFocus(true);
}

void CWin::modalTurn() {
    app->activeChanged();
    Display* display = liveDisplay();
    if (!display) return;
    if (!hasFocus() && (app->active || focusIsFree()) && isViewable())
        XSetInputFocus(display, handle, RevertToParent, CurrentTime);
    app->dispatchEvents(this);
}

bool CWin::takesPress(unsigned long target) const {
    const CWin* w = app->windowOf(target);
    if (!w) return true; // an editor of others inside one of our windows
    if (w->hasStyle(winPopup) || app->menus.contains(w)) return true;
    while (w != this && w->hasStyle(winChild) && w->parent) w = w->outer();
    return w == this;
}

void CWin::showMenu() {
    const CApp::HandlerScope scope(app);
    const bool first = app->menus.empty();
    app->menus.addUnique(this);
    app->topMenu = app->menus.last();
    if (onShowMenu) (*onShowMenu)(this);
    setCapture(false);
    show(false);
    if (!first) return;
    while (visible && liveDisplay()) {
        const auto end = app->dispatchEnd();
        XEvent event;
        while (visible && std::chrono::steady_clock::now() < end && app->nextEvent(event))
            menuEvent(event);
        if (visible) app->longIdle();
    }
    if (autoDelete) app->deleteLater(this);
}

void CWin::menuEvent(XEvent& event) {
    auto* last = app->menus.last();
    const bool wheel = event.type == ButtonPress && int(event.xbutton.button) >= wheelFirst &&
                       int(event.xbutton.button) <= wheelLast;
    if (last && (event.type == KeyPress || wheel))
        event.xany.window = last->handle;
    else if (event.type == ButtonPress && !app->menus.contains(app->windowOf(event.xany.window)))
        app->killMenu(nullptr);
    if (visible) app->handleEvent(event);
}
