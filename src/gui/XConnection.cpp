#include "gui/XConnection.h"

#include "gui/Scale.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/cursorfont.h>

#include <cstdlib>
#include <initializer_list>

int xerror = 0;
int xlibColorDepth = 24;

namespace {

int noteError(Display*, XErrorEvent* event) {
    xerror = event->error_code;
    return 0;
}

int noteLoss(Display*) {
    xConnection().lost = true;
    return 0;
}

// Without an exit handler of its own the library would end the process after `noteLoss`.
void stayAlive(Display*, void*) {
}

} // namespace

int ServerFont::textWidth(const char* text, int length) const {
    constexpr int guessedWidth = 6;
    auto* face = static_cast<XFontStruct*>(info);
    return face ? XTextWidth(face, text, length) : length * guessedWidth;
}

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

bool XConnection::open() {
    if (display) return !lost;
    XInitThreads();
    display = XOpenDisplay(nullptr);
    if (!display) return false;
    lost = false;
    XSetErrorHandler(noteError);
    XSetIOErrorHandler(noteLoss);
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
    internAtoms();
    makeCursors();
    findFont();
    return !lost;
}

void XConnection::close() {
    if (font.info) XFreeFontInfo(nullptr, static_cast<XFontStruct*>(font.info), 1);
    // A lost display cannot be closed without talking to it: its memory is left to the process.
    if (display && !lost) XCloseDisplay(display);
    *this = XConnection();
}

void XConnection::internAtoms() {
    const char* names[] = {"_this", "_XEventProc", "WM_PROTOCOLS", "WM_DELETE_WINDOW"};
    Atom made[4] = {};
    XInternAtoms(display, const_cast<char**>(names), 4, False, made);
    atoms = {made[0], made[1], made[2], made[3], 0, 0, 0, 0, 0};
    findManagerAtoms();
}

void XConnection::findManagerAtoms() {
    if (atoms.motifHints && atoms.netState && atoms.netFullscreen) return;
    const char* names[] = {"_MOTIF_WM_HINTS", "_NET_WM_STATE", "_NET_WM_STATE_MAXIMIZED_VERT",
                           "_NET_WM_STATE_MAXIMIZED_HORZ", "_NET_WM_STATE_FULLSCREEN"};
    Atom found[5] = {};
    XInternAtoms(display, const_cast<char**>(names), 5, True, found);
    atoms.motifHints = found[0];
    atoms.netState = found[1];
    atoms.netMaxVert = found[2];
    atoms.netMaxHorz = found[3];
    atoms.netFullscreen = found[4];
}

void XConnection::makeCursors() {
    constexpr unsigned shapes[cursorCount] = {XC_left_ptr,           XC_watch,
                                              XC_left_side,          XC_top_side,
                                              XC_right_side,         XC_bottom_side,
                                              XC_top_right_corner,   XC_top_left_corner,
                                              XC_bottom_left_corner, XC_bottom_right_corner};
    for (int i = 0; i < cursorCount; i++) cursors[i + 1] = XCreateFontCursor(display, shapes[i]);
}

void XConnection::findFont() {
    font = ServerFont();
    XFontStruct* face = XQueryFont(display, XGContextFromGC(DefaultGC(display, screen)));
    for (const char* name : {"fixed", "*"}) {
        if (face) break;
        face = XLoadQueryFont(display, name);
        if (face) font.id = face->fid;
    }
    if (!face) return;
    font.info = face;
    font.ascent = face->ascent;
    font.descent = face->descent;
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
