#include "gui/controls/CForeign.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/Scale.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>

#include <algorithm>

namespace {

enum EmbedMessage : long {
    embeddedNotify = 0,
    windowActivate = 1,
    windowDeactivate = 2,
    requestFocus = 3,
    focusIn = 4,
    focusOut = 5,
    focusNext = 6,
    focusPrior = 7,
};

/// Whether a call on the windows of others went well; its failure is nobody's fault.
template <class F>
bool succeeds(F&& call) {
    const int former = xerror;
    xerror = 0;
    const bool called = call();
    const bool well = syncSucceeded() && called;
    xerror = former;
    return well;
}

CRect placeOf(const CCtrl* ctrl) {
    const CPoint at = ctrl->win->controlPos(ctrl);
    return asRect(at.x, at.y, at.x + ctrl->width, at.y + ctrl->height);
}

} // namespace

CForeign::CForeign(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CCtrl(owner, name, l, t, w, h), told(asPoint(w, h)) {
    tabStop = true;
    Display* display = liveDisplay();
    if (!display) return;
    XSetWindowAttributes attributes{};
    attributes.event_mask = SubstructureNotifyMask;
    frame = XCreateWindow(display, win->handle, 0, 0, unsigned(toDevice(asMax(w, 1))),
                          unsigned(toDevice(asMax(h, 1))), 0, CopyFromParent, InputOutput,
                          CopyFromParent, CWEventMask, &attributes);
    // With the keyboard held until it is decided whose a key is, and then given on as it came.
    XGrabKey(display, AnyKey, AnyModifier, frame, False, GrabModeAsync, GrabModeSync);
    XSync(display, False); // others are told of it, over connections of their own
    win->app->foreign.push_back(this);
}

CForeign::~CForeign() {
    release();
    std::erase(win->app->foreign, this);
    if (frame && liveDisplay()) XDestroyWindow(liveDisplay(), frame);
}

void CForeign::release() {
    Display* display = liveDisplay();
    const unsigned long window = inner;
    inner = 0;
    if (!window || !display || !taken) return;
    succeeds([&] {
        XUnmapWindow(display, window);
        XReparentWindow(display, window, xConnection().root, 0, 0);
        XRemoveFromSaveSet(display, window);
        return true;
    });
}

bool CForeign::embed(unsigned long window) {
    Display* display = liveDisplay();
    if (!display || !frame) return false;
    release();
    const bool moved = succeeds([&] {
        XAddToSaveSet(display, window); // it outlives this program
        XUnmapWindow(display, window);
        return XReparentWindow(display, window, frame, 0, 0) != 0;
    });
    if (!moved) return false;
    taken = true;
    if (inner != window) adopt(window);
    return inner == window;
}

void CForeign::adopt(unsigned long window) {
    Display* display = liveDisplay();
    XWindowAttributes about{};
    if (!succeeds([&] { return XGetWindowAttributes(display, window, &about) != 0; })) return;
    inner = window;
    innerAt = asPoint(about.x, about.y);
    send(embeddedNotify, 0, long(frame));
    sized(about.width, about.height);
    if (win->takesKeys()) send(windowActivate);
    succeeds([&] { return XMapWindow(display, window) != 0; });
    follow();
}

void CForeign::lost() {
    inner = 0;
    taken = false;
    if (Display* display = liveDisplay(); display && frame) { // else its picture would stay
        XSetWindowBackground(display, frame, unsigned(win->app->gui->palette.window));
        XClearWindow(display, frame);
    }
    redraw();
    if (onChange) (*onChange)(this);
}

/// The window inside has given itself a size.
void CForeign::sized(int deviceWidth, int deviceHeight) {
    const CPoint size = asPoint(toLogicalSize(deviceWidth), toLogicalSize(deviceHeight));
    if (size == told && size == asPoint(width, height)) return;
    told = size;
    setBounds(left, top, size.x, size.y);
    if (onChange) (*onChange)(this);
}

bool CForeign::handle(const XEvent& event) {
    if (event.xany.window != frame || !frame) return false;
    switch (event.type) {
    case CreateNotify:
        if (!inner) adopt(event.xcreatewindow.window);
        break;
    case ReparentNotify:
        if (event.xreparent.parent == frame && !inner)
            adopt(event.xreparent.window);
        else if (event.xreparent.parent != frame && event.xreparent.window == inner)
            lost();
        break;
    case ConfigureNotify:
        if (event.xconfigure.window == inner)
            sized(event.xconfigure.width, event.xconfigure.height);
        break;
    case DestroyNotify:
        if (event.xdestroywindow.window == inner) lost();
        break;
    case KeyPress:
    case KeyRelease:
        keyGrabbed(event);
        break;
    case ClientMessage:
        if (event.xclient.message_type == xConnection().atoms.xembed) message(event.xclient.data.l);
        break;
    default:
        break;
    }
    return true;
}

/// The server holds the keyboard: it is let go before anything is done, as that may take its time.
void CForeign::keyGrabbed(const XEvent& event) {
    int key, mods;
    const bool press = event.type == KeyPress, known = translateKey(event, key, mods);
    const bool ours = !press || (known && hostTakes && hostTakes(key, mods));
    if (press) XAllowEvents(liveDisplay(), ours ? AsyncKeyboard : ReplayKeyboard, event.xkey.time);
    XFlush(liveDisplay());
    if (!ours || !known) return;
    CWin* around = win->app->keyWindow(win);
    if (press)
        around->keyDown(key, mods);
    else
        around->keyUp(key, mods);
}

bool CForeign::offer(const XEvent& event, int key, int mods) {
    if (!inner || (hostTakes && hostTakes(key, mods))) return false;
    XEvent copy = event;
    copy.xkey.window = inner;
    copy.xkey.subwindow = None;
    return succeeds(
        [&] { return XSendEvent(liveDisplay(), inner, False, NoEventMask, &copy) != 0; });
}

void CForeign::message(const long* words) {
    switch (words[1]) {
    case requestFocus:
        win->setKeyCtrl(this);
        break;
    case focusNext:
    case focusPrior:
        if (hasKeyFocus()) win->nextCtrl(words[1] == focusNext ? 1 : -1);
        break;
    default:
        break;
    }
}

void CForeign::send(long what, long detail, long first) {
    if (!inner || !liveDisplay()) return;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = inner;
    event.xclient.message_type = xConnection().atoms.xembed;
    event.xclient.format = 32;
    const long words[] = {long(xConnection().userTime), what, detail, first, 0};
    std::copy(std::begin(words), std::end(words), event.xclient.data.l);
    succeeds([&] { return XSendEvent(liveDisplay(), inner, False, NoEventMask, &event) != 0; });
}

void CForeign::setFocus(bool on) {
    CCtrl::setFocus(on);
    Display* display = liveDisplay();
    send(on ? focusIn : focusOut);
    if (on || !display) return;
    Window focused = None;
    int revert;
    XGetInputFocus(display, &focused, &revert);
    // It may have taken the server's focus, which nobody else would get back from it.
    if (holds(focused))
        XSetInputFocus(display, win->app->keyWindow(win)->handle, RevertToNone, CurrentTime);
}

void CForeign::activated(bool on) {
    send(on ? windowActivate : windowDeactivate);
}

bool CForeign::holds(unsigned long window) const {
    Display* display = liveDisplay();
    while (display && window > PointerRoot && window != frame) {
        Window root = None, around = None, *inside = nullptr;
        unsigned count;
        const bool known = succeeds(
            [&] { return XQueryTree(display, window, &root, &around, &inside, &count) != 0; });
        if (inside) XFree(inside);
        if (!known || around == root) return false;
        window = around;
    }
    return frame && window == frame;
}

/// What of it lies within all groups around.
CRect CForeign::seen() const {
    CRect rect = intersect(placeOf(this), win->clientRect());
    for (const CCtrl* c = parent; c && c->category != catWin; c = c->parent)
        rect = intersect(rect, placeOf(c));
    return rect;
}

void CForeign::follow() {
    Display* display = liveDisplay();
    if (!display || !frame) return;
    const CRect part = toDevice(seen()), whole = toDevice(placeOf(this));
    const bool show = shown() && !seen().empty();
    if (show && !(part == frameAt))
        XMoveResizeWindow(display, frame, part.left, part.top, unsigned(part.width()),
                          unsigned(part.height()));
    if (show) frameAt = part;
    if (show != mapped) show ? XMapWindow(display, frame) : XUnmapWindow(display, frame);
    mapped = show;
    if (!inner || !show) return;
    const CPoint at = asPoint(whole.left - part.left, whole.top - part.top);
    const bool resized = asPoint(width, height) != told;
    if (at == innerAt && !resized) return;
    innerAt = at;
    told = asPoint(width, height);
    succeeds([&] {
        XMoveWindow(display, inner, at.x, at.y);
        if (resized)
            XResizeWindow(display, inner, unsigned(asMax(whole.width(), 1)),
                          unsigned(asMax(whole.height(), 1)));
        return true;
    });
}

void CForeign::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.window, rect);
    if (hasKeyFocus()) g->frameRect(colours.accent, rect);
}
