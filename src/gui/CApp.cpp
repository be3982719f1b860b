#include "gui/CApp.h"

#include "base/Numbers.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/FloatWins.h"
#include "gui/ForeignWindows.h"
#include "gui/InputMethod.h"
#include "gui/KeyPlayer.h"
#include "gui/Keys.h"
#include "gui/Scale.h"
#include "gui/SelectionOwner.h"
#include "gui/TouchInput.h"
#include "gui/XConnection.h"
#include "gui/Xdnd.h"
#include "gui/access/LiveTree.h"
#include "gui/controls/CForeign.h"

#include <X11/Xlib.h>
#include <poll.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <thread>

using Clock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::milliseconds oneMs{1};
constexpr int doubleClickRoom = 7; // pixels either way
constexpr int wheelStep = 32;
constexpr int mostWaitMs = 500; // at a time

template <class ExposeEvent>
CRect areaOf(const ExposeEvent& e) {
    return asRect(e.x, e.y, e.x + e.width, e.y + e.height);
}

/// Whether a modal window keeps a press or release from the window that it goes to.
bool barred(const XEvent& event, const CWin* modal) {
    const bool isButton = event.type == ButtonPress || event.type == ButtonRelease;
    return isButton && modal && !modal->takesPress(event.xany.window);
}

} // namespace

CApp::CApp() : stepped(Clock::now()) {
}

CApp::~CApp() {
    purge();
    endDrag();
    dragWin.reset();
    delete hintWin;
    delete onKey;
    delete onHint;
    delete onEndDrag;
    delete onStrayDrop;
    delete onFileDialog;
    backBuffer.reset();
    selectionOwner().close();
    writing.reset();
    xConnection().close();
}

bool CApp::open() {
    if (!xConnection().open()) {
        const char* name = std::getenv("DISPLAY");
        std::fprintf(stderr, "The display \"%s\" cannot be opened.\n", name ? name : "");
        return false;
    }
    gui = std::make_unique<CGui>();
    gui->setPalette(darkPalette());
    outsideDrags = std::make_unique<XdndTarget>(this);
    touch = std::make_unique<TouchInput>(this);
    touch->open();
    writing = std::make_unique<InputMethod>();
    return true;
}

void CApp::run(CWin* main) {
    mainWin = main;
    if (!main->visible) main->show(true);
    running = true;
    // A main window that is deleted is the main window no longer.
    while (mainWin == main && main->visible && liveDisplay()) {
        dispatchEvents();
        longIdle();
    }
    running = false;
}

Clock::time_point CApp::dispatchEnd() const {
    return Clock::now() + std::chrono::milliseconds(dispatchMs);
}

void CApp::dispatchEvents(const CWin* modal) {
    const auto end = dispatchEnd();
    XEvent event;
    while (Clock::now() < end && (!modal || modal->visible) && nextEvent(event))
        if (!barred(event, modalWin)) handleEvent(event);
}

/// Presses and releases stay in the queue, and with them what came later, while they are held.
bool CApp::holdsNext() const {
    if (!inputHeld || !inputHeld()) return false;
    XEvent next;
    XPeekEvent(liveDisplay(), &next);
    if (next.type < KeyPress || next.type > ButtonRelease) return false;
    std::this_thread::sleep_for(oneMs); // the loop would find it at once
    return true;
}

bool CApp::nextEvent(XEvent& event) {
    Display* display = liveDisplay();
    if (!display) return false;
    const bool any = XPending(display) > 0;
    frameIfDue(any);
    if (!any) return false;
    do {
        if (!liveDisplay() || XPending(display) < 1 || xConnection().lost || holdsNext())
            return false;
        XNextEvent(display, &event);
    } while (keptByMethod(event));
    return true;
}

void CApp::idle() {
    stepTimers(dueMs());
    frameIfDue(false);
    if (access) access->update();
    waitForEvent(turnMs);
}

void CApp::longIdle() {
    stepTimers(dueMs());
    frameIfDue(false);
    if (access) access->update();
    waitForEvent(mostWaitMs);
}

/// The whole milliseconds since the last call, by the clock.
int CApp::dueMs() {
    const auto passed = (Clock::now() - stepped) / oneMs;
    stepped += passed * oneMs;
    return saturate(passed);
}

void CApp::stepTimers(int ms) {
    if (ms < 1) return;
    std::vector<CCtrl*> now;
    for (CCtrl* ctrl : timers) now.push_back(ctrl);
    for (CCtrl* ctrl : now) {
        if (!timers.contains(ctrl)) continue; // an earlier handler has removed it
        const int64_t left = int64_t(ctrl->timerCount) - ms;
        ctrl->timerCount = saturate(left);
        if (left >= 1) continue;
        if (ctrl->timerRepeat)
            ctrl->timerCount = saturate(left % ctrl->timerInterval + ctrl->timerInterval);
        else
            timers.remove(ctrl);
        const HandlerScope scope(this);
        ctrl->onTimer();
    }
}

/// Up to so many milliseconds after the timers were stepped, and no longer than a timer or the next
/// frame needs.
void CApp::waitForEvent(int ms) {
    for (CForeign* place : foreign) place->follow();
    for (const CCtrl* ctrl : timers) ms = asMin(ms, ctrl->timerCount);
    auto end = stepped + asMax(ms, 1) * oneMs;
    if (frameWanted()) end = std::min(end, frames.dueAt());
    const auto left = end - Clock::now();
    if (left <= left.zero()) return;
    timespec wait{0, long(std::chrono::nanoseconds(left).count())};
    Display* display = liveDisplay();
    if (display && XEventsQueued(display, QueuedAfterFlush) > 0) return;
    std::vector<pollfd> awaited{{display ? ConnectionNumber(display) : -1, POLLIN, 0}};
    if (access) access->await(awaited, wait);
    ppoll(awaited.data(), awaited.size(), &wait, nullptr);
}

void CApp::addTimer(CCtrl* ctrl, int ms, bool repeat) {
    timers.remove(ctrl);
    const auto waiting = (Clock::now() - stepped) / oneMs; // that idle has still to step
    ctrl->timerInterval = asMax(ms, turnMs);
    ctrl->timerCount = saturate(ctrl->timerInterval + waiting);
    ctrl->timerRepeat = repeat;
    timers.add(ctrl);
}

void CApp::killTimer(CCtrl* ctrl) {
    timers.remove(ctrl);
}

void CApp::handleEvent(const XEvent& raw) {
    if (raw.type == MappingNotify) {
        XMappingEvent mapping = raw.xmapping; // another keyboard layout
        XRefreshKeyboardMapping(&mapping);
        return;
    }
    const HandlerScope scope(this);
    if ((raw.type >= KeyPress && raw.type <= MotionNotify) || raw.type == ConfigureNotify)
        frames.ask();
    if (touch && touch->handle(raw)) return frames.ask();
    CWin* win = windowOf(raw.xany.window);
    if (!win) {
        strangersEvent(raw);
        return;
    }
    const XEvent event = toLogical(raw);
    if (event.type >= KeyPress && event.type <= FocusOut && event.type != MotionNotify)
        deliverMotion(); // what the user did before
    switch (event.type) {
    case KeyPress:
    case KeyRelease:
        xConnection().userTime = event.xkey.time;
        keyEvent(win, event);
        break;
    case ButtonPress:
        xConnection().userTime = event.xbutton.time;
        press(win, event);
        break;
    case ButtonRelease:
        if (event.xbutton.button >= Button4 || otherButton(event)) break;
        lastMouseBtn = pressedButton = 0;
        win->mouseUp(event.xbutton.x, event.xbutton.y,
                     translateButton(int(event.xbutton.button), event.xbutton.state));
        break;
    case MotionNotify:
        holdMotion(event);
        break;
    case EnterNotify:
        touch->pointerInside(true);
        break;
    case LeaveNotify:
        touch->pointerInside(false);
        if (event.xcrossing.mode == NotifyNormal) setHooverCtrl(nullptr, 0, 0);
        break;
    case FocusIn:
    case FocusOut:
        focusEvent(win, event);
        break;
    case Expose:
        win->pending.exposed(areaOf(event.xexpose));
        break;
    case GraphicsExpose:
        win->pending.missed(areaOf(event.xgraphicsexpose));
        if (event.xgraphicsexpose.count == 0) win->pending.copied();
        break;
    case NoExpose:
        win->pending.copied();
        break;
    case MapNotify:
    case UnmapNotify:
        if (event.xmap.window == win->handle) win->mapped = event.type == MapNotify;
        break;
    case ConfigureNotify:
        win->resized();
        break;
    case ClientMessage:
        if (outsideDrags->handle(win, event)) break;
        if (static_cast<Atom>(event.xclient.data.l[0]) == xConnection().atoms.wmDelete)
            closeAsked(win);
        break;
    default:
        break;
    }
}

/// The window manager wants a window closed. A modal one keeps that from the others as it does with
/// presses, and shows itself instead.
void CApp::closeAsked(CWin* win) {
    if (!modalWin || modalWin->takesPress(win->handle)) return win->hide();
    modalWin->raise(true);
}

void CApp::strangersEvent(const XEvent& event) {
    for (CForeign* place : foreign)
        if (place->handle(event)) return;
    if (selectionOwner().handle(event) || outsideDrags->handle(nullptr, event)) return;
    callPlugin(this, event);
}

/// While a button is held, presses and releases of the others neither begin nor end anything.
bool CApp::otherButton(const XEvent& event) const {
    const unsigned masks[] = {0, Button1Mask, Button2Mask, Button3Mask};
    const int button = int(event.xbutton.button);
    return pressedButton && button != pressedButton && button < Button4 &&
           (event.xbutton.state & masks[pressedButton]);
}

bool CApp::secondPress(const XEvent& event) const {
    const XButtonEvent& button = event.xbutton;
    return lastMouseTime != -1 && std::abs(button.x_root - lastMousePos.x) <= doubleClickRoom &&
           std::abs(button.y_root - lastMousePos.y) <= doubleClickRoom &&
           uint32_t(button.time) - uint32_t(lastMouseTime) <= uint32_t(doubleClickTime);
}

void CApp::press(CWin* win, const XEvent& event) {
    const XButtonEvent& button = event.xbutton;
    if (otherButton(event)) {
        drag.cancel();
        return;
    }
    if (CWin* owner = getMDIOwner(win)) {
        win->raise(false);
        owner->setKeyCtrl(nullptr);
    }
    if (button.button >= Button4) {
        wheel(win, event);
        return;
    }
    pressedButton = int(button.button);
    int held = translateButton(pressedButton, button.state);
    if (secondPress(event)) {
        held |= modDouble;
        lastMouseTime = -1;
    } else {
        lastMouseTime = long(button.time);
    }
    lastMousePos = asPoint(button.x_root, button.y_root);
    win->mouseDown(button.x, button.y, held);
    lastMouseBtn = (held & modLeft ? 1 : 0) + (held & modRight ? 2 : 0);
}

void CApp::wheel(CWin* win, const XEvent& event) {
    constexpr int across = 6, last = 7;
    const XButtonEvent& button = event.xbutton;
    const int number = int(button.button);
    if (number > last || touch->isCopy(button.time)) return;
    const int step = number % 2 == 0 ? wheelStep : -wheelStep;
    const int held = translateButton(0, button.state);
    const int dy = number < across ? step : 0, dx = number < across ? 0 : step;
    if (!drag.wheel(dy, dx)) win->mouseWheel(button.x, button.y, held, dy, dx);
}

void CApp::focusEvent(CWin* win, const XEvent& event) {
    // A grab of the keyboard, such as for a key of the window manager, moves no focus.
    const XFocusChangeEvent& focus = event.xfocus;
    if (focus.mode == NotifyGrab || focus.mode == NotifyUngrab || focus.detail == NotifyPointer)
        return;
    if (focus.detail == NotifyInferior) return foreignFocus(win);
    if (event.type == FocusIn) lastWin = win;
    win->setFocus(event.type == FocusIn);
    for (CForeign* place : foreign)
        if (keyWindow(place->win) == win) place->activated(event.type == FocusIn);
    activeChanged();
    lastWin = nullptr;
}

/// The focus has gone to a window of others inside one of ours, which keeps it by that, or back.
void CApp::foreignFocus(const CWin* win) {
    Window focused = None;
    int revert;
    XGetInputFocus(liveDisplay(), &focused, &revert);
    for (CForeign* place : foreign)
        if (keyWindow(place->win) == win && place->holds(focused)) place->win->setKeyCtrl(place);
}

void CApp::nextWin(CWin* from, int) {
    if (CWin* owner = getMDIOwner(from)) from = owner;
    const int count = windows.getCount(), at = windows.indexed(from);
    if (count < 2 || at < 0) return;
    windows.items((at + 1) % count)->setFocus(true);
}

CWin* CApp::focusedWindow() const {
    Display* display = liveDisplay();
    if (!display) return nullptr;
    Window focused = None;
    int revert;
    XGetInputFocus(display, &focused, &revert);
    if (CWin* own = windowOf(focused)) return own;
    for (const CForeign* place : foreign)
        if (place->holds(focused)) return keyWindow(place->win);
    return nullptr;
}

void CApp::activeChanged() {
    if (!liveDisplay()) return;
    active = windows.contains(focusedWindow());
    if (active) return;
    killMenu(nullptr);
    if (keyPlayer) keyPlayer->focusLost();
}

void CApp::killMenu(CWin* keep) {
    while (auto* menu = menus.last()) {
        if (menu == keep) break;
        menu->hide();
        menus.remove(menu);
    }
    topMenu = menus.last();
}

void CApp::setCursor(int number) {
    appCursor = number;
    for (CWin* win : windows) win->setCursor(number > 0 ? number : 1);
    if (Display* display = liveDisplay()) XFlush(display); // what follows may take its time
}

void CApp::cancelHint() {
    if (!hintWin) return;
    killTimer(hintWin);
    if (hintWin->visible) hintWin->hide();
}

void CApp::updateHint(CCtrl* ctrl) {
    if (onHint && menus.empty() && mainWin) (*onHint)(ctrl);
}

void CApp::setHooverCtrl(CCtrl* ctrl, int x, int y) {
    if (ctrl != hooverCtrl) {
        hooverCtrl = ctrl;
        updateHint(ctrl);
    }
    CCtrl* over = ctrl && ctrl->hooverable ? ctrl : nullptr;
    if (over == mouseOverCtrl) return;
    CCtrl* former = mouseOverCtrl;
    mouseOverCtrl = over;
    // The handlers come last: they may delete their control.
    if (former) {
        former->redraw();
        former->mouseOver(false, x, y);
    }
    if (over && mouseOverCtrl == over) {
        over->redraw();
        over->mouseOver(true, x, y);
    }
}

void CApp::deleteLater(CCtrl* ctrl) {
    if (ctrl->category == catWin) static_cast<CWin*>(ctrl)->hide();
    if (handlers == 0) {
        delete ctrl;
        return;
    }
    detach(ctrl);
    if (std::find(doomed.begin(), doomed.end(), ctrl) == doomed.end()) doomed.push_back(ctrl);
}

/// Lets no event reach the control and what is inside it any more.
void CApp::detach(CCtrl* ctrl) {
    forget(ctrl);
    ctrl->visible = false;
    if (ctrl->category == catWin) removeWindow(static_cast<CWin*>(ctrl)->handle, ctrl->win);
    if (ctrl->win->mouseCtrl == ctrl) ctrl->win->mouseCtrl = nullptr;
    if (ctrl->win->keyCtrl == ctrl) ctrl->win->keyCtrl = nullptr;
    if (ctrl->category == catCtrl) return;
    for (CCtrl* child : static_cast<CGroup*>(ctrl)->controls) detach(child);
}

void CApp::purge() {
    while (!doomed.empty()) {
        CCtrl* ctrl = doomed.back();
        doomed.pop_back();
        delete ctrl;
    }
}

void CApp::purgeIn(const CWin* win) {
    const auto within = [win](const CCtrl* c) { return c->win == win && c != win; };
    while (true) {
        const auto at = std::find_if(doomed.begin(), doomed.end(), within);
        if (at == doomed.end()) return;
        CCtrl* ctrl = *at;
        doomed.erase(at);
        delete ctrl;
    }
}

void CApp::addWindow(unsigned long handle, CWin* win) {
    if (handle) windowTable[handle] = win;
}

void CApp::removeWindow(unsigned long handle, CWin* win) {
    windowTable.erase(handle);
    if (writing) writing->left(handle);
    windows.remove(win);
    for (CWin** slot : {&mainWin, &topMenu, &modalWin, &hintWin, &lastWin})
        if (*slot == win) *slot = nullptr;
}

CWin* CApp::windowOf(unsigned long handle) const {
    const auto found = windowTable.find(handle);
    return found == windowTable.end() ? nullptr : found->second;
}

CWin* CApp::winAtPos(int x, int y) const {
    Display* display = liveDisplay();
    if (!display) return nullptr;
    const Window root = xConnection().root;
    Window deepest = root, child = None;
    const CPoint at = toDevice(asPoint(x, y));
    int inX, inY;
    while (XTranslateCoordinates(display, root, deepest, at.x, at.y, &inX, &inY, &child) && child)
        deepest = child;
    return windowOf(deepest);
}

void CApp::forget(const CCtrl* ctrl) {
    drag.forget(ctrl);
    timers.remove(ctrl);
    std::erase(followers, ctrl);
    if (access) access->forget(ctrl);
    for (CCtrl** slot :
         {&hooverCtrl, &exclusiveCtrl, &keyHookCtrl, &mouseOverCtrl, &dragCtrl, &dragOverCtrl})
        if (*slot == ctrl) *slot = nullptr;
}
