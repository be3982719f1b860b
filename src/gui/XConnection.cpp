#include "gui/XConnection.h"

#include "gui/Scale.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/cursorfont.h>

#include <cstdlib>
#include <span>
#include <vector>

int xerror = 0;
int xlibColorDepth = 24;

namespace {

using Atoms = XConnection::Atoms;

struct AtomName {
    unsigned long Atoms::*slot;
    const char* name;
};

constexpr AtomName ownAtoms[] = {{&Atoms::self, "_this"},
                                 {&Atoms::eventProc, "_XEventProc"},
                                 {&Atoms::wmProtocols, "WM_PROTOCOLS"},
                                 {&Atoms::wmDelete, "WM_DELETE_WINDOW"},
                                 {&Atoms::clipboard, "CLIPBOARD"},
                                 {&Atoms::targets, "TARGETS"},
                                 {&Atoms::timestamp, "TIMESTAMP"},
                                 {&Atoms::multiple, "MULTIPLE"},
                                 {&Atoms::atomPair, "ATOM_PAIR"},
                                 {&Atoms::incr, "INCR"},
                                 {&Atoms::utf8String, "UTF8_STRING"},
                                 {&Atoms::utf8Plain, "text/plain;charset=utf-8"},
                                 {&Atoms::text, "TEXT"},
                                 {&Atoms::uriList, "text/uri-list"},
                                 {&Atoms::netName, "_NET_WM_NAME"},
                                 {&Atoms::netIcon, "_NET_WM_ICON"},
                                 {&Atoms::fetched, "SONDRAVA_SELECTION"},
                                 {&Atoms::dndAware, "XdndAware"},
                                 {&Atoms::dndEnter, "XdndEnter"},
                                 {&Atoms::dndPosition, "XdndPosition"},
                                 {&Atoms::dndStatus, "XdndStatus"},
                                 {&Atoms::dndLeave, "XdndLeave"},
                                 {&Atoms::dndDrop, "XdndDrop"},
                                 {&Atoms::dndFinished, "XdndFinished"},
                                 {&Atoms::dndSelection, "XdndSelection"},
                                 {&Atoms::dndTypeList, "XdndTypeList"},
                                 {&Atoms::dndActionCopy, "XdndActionCopy"},
                                 {&Atoms::xembed, "_XEMBED"}};

constexpr AtomName managerAtoms[] = {{&Atoms::motifHints, "_MOTIF_WM_HINTS"},
                                     {&Atoms::netState, "_NET_WM_STATE"},
                                     {&Atoms::netMaxVert, "_NET_WM_STATE_MAXIMIZED_VERT"},
                                     {&Atoms::netMaxHorz, "_NET_WM_STATE_MAXIMIZED_HORZ"},
                                     {&Atoms::netFullscreen, "_NET_WM_STATE_FULLSCREEN"}};

/// In one trip to the server.
void intern(Display* display, Atoms& atoms, std::span<const AtomName> names, bool onlyIfExists) {
    std::vector<char*> texts;
    for (const AtomName& n : names) texts.push_back(const_cast<char*>(n.name));
    std::vector<Atom> found(names.size());
    XInternAtoms(display, texts.data(), int(texts.size()), onlyIfExists, found.data());
    for (size_t i = 0; i < names.size(); i++) atoms.*names[i].slot = found[i];
}

// Others in the process may have connections of their own, whose errors are theirs.
int noteError(Display* display, XErrorEvent* event) {
    if (display == xConnection().display) xerror = event->error_code;
    return 0;
}

int noteLoss(Display* display) {
    if (display == xConnection().display) xConnection().lost = true;
    return 0;
}

// Without an exit handler of its own the library would end the process after `noteLoss`.
void stayAlive(Display*, void*) {
}

} // namespace

XConnection& xConnection() {
    static XConnection connection;
    return connection;
}

_XDisplay* liveDisplay() {
    const XConnection& x = xConnection();
    return x.lost ? nullptr : x.display;
}

bool syncSucceeded() {
    if (Display* display = liveDisplay()) XSync(display, False);
    return liveDisplay() && xerror == 0;
}

void takeErrors() {
    XSetErrorHandler(noteError);
    XSetIOErrorHandler(noteLoss);
}

bool XConnection::open() {
    if (display) return !lost;
    XInitThreads();
    display = XOpenDisplay(nullptr);
    if (!display) return false;
    lost = false;
    takeErrors();
    XSetIOErrorExitHandler(display, stayAlive, nullptr);
    screen = DefaultScreen(display);
    root = RootWindow(display, screen);
    colormap = DefaultColormap(display, screen);
    xlibColorDepth = DefaultDepth(display, screen);
    const Visual* visual = DefaultVisual(display, screen);
    if (visual->red_mask && visual->green_mask && visual->blue_mask) {
        redMask = visual->red_mask;
        greenMask = visual->green_mask;
        blueMask = visual->blue_mask;
    }
    const char* resolution = XGetDefault(display, "Xft", "dpi");
    scalePercent = chooseScale(wantedScale, resolution ? std::strtod(resolution, nullptr) : 0);
    XkbSetDetectableAutoRepeat(display, True, nullptr); // a key that is held is not released
    internAtoms();
    makeCursors();
    font = openFace();
    return !lost;
}

void XConnection::close() {
    font.reset();
    for (auto& face : looks) face.reset();
    // A lost display cannot be closed without talking to it: its memory is left to the process.
    if (display && !lost) XCloseDisplay(display);
    *this = XConnection();
}

void XConnection::internAtoms() {
    intern(display, atoms, ownAtoms, false);
    findManagerAtoms();
}

void XConnection::findManagerAtoms() {
    if (atoms.motifHints && atoms.netState && atoms.netFullscreen) return;
    intern(display, atoms, managerAtoms, true);
}

void XConnection::makeCursors() {
    constexpr unsigned shapes[cursorCount] = {XC_left_ptr,           XC_watch,
                                              XC_left_side,          XC_top_side,
                                              XC_right_side,         XC_bottom_side,
                                              XC_top_right_corner,   XC_top_left_corner,
                                              XC_bottom_left_corner, XC_bottom_right_corner,
                                              XC_sb_v_double_arrow};
    for (int i = 0; i < cursorCount; i++) cursors[i + 1] = XCreateFontCursor(display, shapes[i]);
}

CPoint mousePos() {
    Display* display = liveDisplay();
    if (!display) return asPoint(0, 0);
    Window rootFound, child;
    int x = 0, y = 0, winX, winY;
    unsigned mask;
    XQueryPointer(display, xConnection().root, &rootFound, &child, &x, &y, &winX, &winY, &mask);
    return toLogical(asPoint(x, y));
}

void setMousePos(int x, int y) {
    Display* display = liveDisplay();
    if (display)
        XWarpPointer(display, None, xConnection().root, 0, 0, 0, 0, toDevice(x), toDevice(y));
}

int screenWidth() {
    Display* display = liveDisplay();
    return display ? toLogicalSize(DisplayWidth(display, xConnection().screen)) : 0;
}

int screenHeight() {
    Display* display = liveDisplay();
    return display ? toLogicalSize(DisplayHeight(display, xConnection().screen)) : 0;
}

CRect screenRect() {
    return asRect(0, 0, screenWidth(), screenHeight());
}

CRect getDesktopBounds() {
    return screenRect();
}
