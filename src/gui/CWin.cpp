#include "gui/CWin.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/Scale.h"
#include "gui/TouchInput.h"
#include "gui/Utf8.h"
#include "gui/XConnection.h"
#include "gui/Xdnd.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CMDI.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstdint>

namespace {

constexpr long eventMask = KeyPressMask | KeyReleaseMask | ButtonPressMask | ButtonReleaseMask |
                           PointerMotionMask | EnterWindowMask | LeaveWindowMask | ExposureMask |
                           StructureNotifyMask | FocusChangeMask | PropertyChangeMask;
constexpr int captionButtonSize = 16, captionButtonMargin = 2, captionButtonStep = 18;
constexpr int captionGap = 3;
constexpr int contentMargin = 8;

/// An address as the two halves of 32 bits that properties hold, low half first. The library takes
/// items of 32 bits as longs.
void setAddress(Display* display, Window window, Atom name, const void* address) {
    const auto bits = reinterpret_cast<uintptr_t>(address);
    const long halves[2] = {long(bits & 0xffffffffU), long(uint64_t(bits) >> 32)};
    XChangeProperty(display, window, name, name, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(halves), 2);
}

void handleXEvent(XEvent* event, CApp* app) {
    app->handleEvent(*event);
}

} // namespace

CWin::CWin(CApp* application, CWin* owner, const CStr& title, int l, int t, int w, int h, int bits)
    : CGroup(this, title, l, t, w, h), style(bits), app(application) {
    category = catWin;
    visible = false;
    parent = owner;
    createHandle();
    createCaption();
}

CWin::~CWin() {
    app->purgeIn(this);
    forgetHover();
    CWin::hide();
    deleteAll(controls);
    releaseChildren();
    if (CMDI* area = pageArea()) area->pageGone(this);
    if (parent && hasStyle(winChild)) outer()->children.remove(this);
    app->removeWindow(handle, this);
    app->forget(this);
    delete onShowMenu;
    delete onIconPaint;
    delete onAccelerator;
    graphic.reset();
    Display* display = liveDisplay();
    if (display && handle) XDestroyWindow(display, handle);
}

/// Windows inside this one would vanish with it on the server, and their owners not know.
void CWin::releaseChildren() {
    Display* display = liveDisplay();
    for (CWin* child : children) {
        child->hide();
        child->parent = nullptr;
        if (display) XReparentWindow(display, child->handle, xConnection().root, 0, 0);
    }
}

void CWin::forgetHover() {
    for (CCtrl** slot : {&app->hooverCtrl, &app->mouseOverCtrl})
        if (*slot && (*slot)->win == this) *slot = nullptr;
}

void CWin::createHandle() {
    auto* owner = outer();
    if (owner && hasStyle(winChild)) owner->children.add(this);
    if (Display* display = liveDisplay()) {
        XConnection& x = xConnection();
        x.findManagerAtoms();
        XSetWindowAttributes attributes{};
        attributes.background_pixmap = None; // the server clears nothing, so that nothing flickers
        attributes.override_redirect = hasStyle(winPopup);
        attributes.event_mask = eventMask;
        attributes.colormap = x.colormap;
        attributes.cursor = x.cursors[shownCursor];
        handle = XCreateWindow(
            display, owner && hasStyle(winChild) ? owner->handle : x.root, toDevice(left),
            toDevice(top), unsigned(toDevice(asMax(width, 1))),
            unsigned(toDevice(asMax(height, 1))), 0, CopyFromParent, InputOutput, CopyFromParent,
            CWBackPixmap | CWOverrideRedirect | CWEventMask | CWColormap | CWCursor, &attributes);
        setHints();
    }
    app->addWindow(handle, this);
    if (app->touch) app->touch->watch(handle);
    graphic = std::make_unique<CGraphic>(handle);
}

void CWin::setHints() {
    Display* display = liveDisplay();
    const XConnection& x = xConnection();
    setSizeHints();
    std::string name = "sondrava", kind = "Sondrava"; // by which desktops tell programs
    XClassHint classHint{name.data(), kind.data()};
    XSetClassHint(display, handle, &classHint);
    if (!app->icon.empty() && !hasStyle(winChild | winPopup | winFloating))
        XChangeProperty(display, handle, x.atoms.netIcon, XA_CARDINAL, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(app->icon.data()),
                        int(app->icon.size()));
    if (x.atoms.motifHints) {
        constexpr long decorationsGiven = 2;
        const long noDecorations[5] = {decorationsGiven, 0, 0, 0, 0};
        XChangeProperty(display, handle, x.atoms.motifHints, x.atoms.motifHints, 32,
                        PropModeReplace, reinterpret_cast<const unsigned char*>(noDecorations), 5);
    }
    if (parent) XSetTransientForHint(display, handle, outer()->handle);
    if (!hasStyle(winChild | winPopup | winFloating)) XdndTarget::announce(handle);
    Atom closing = x.atoms.wmDelete;
    XSetWMProtocols(display, handle, &closing, 1);
    setAddress(display, handle, x.atoms.self, this);
    setAddress(display, handle, x.atoms.eventProc, reinterpret_cast<const void*>(&handleXEvent));
    nameHandle();
}

/// The smallest size is known when the window is shown.
void CWin::setSizeHints() {
    Display* display = liveDisplay();
    if (!display) return;
    XSizeHints hints{};
    hints.flags = PPosition | PMinSize;
    hints.x = toDevice(left);
    hints.y = toDevice(top);
    hints.min_width = toDevice(minWidth);
    hints.min_height = toDevice(minHeight);
    XSetWMNormalHints(display, handle, &hints);
}

/// For the window manager, which reads old names as Latin-1 and new ones as UTF-8.
void CWin::nameHandle() {
    Display* display = liveDisplay();
    if (!display) return;
    const XConnection::Atoms& atoms = xConnection().atoms;
    const std::string name = asUtf8(id.asChar());
    XStoreName(display, handle, asLatin1(name).c_str());
    XChangeProperty(display, handle, atoms.netName, atoms.utf8String, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(name.data()), int(name.size()));
}

void CWin::createCaption() {
    const int border = hasStyle(winNoBorder) ? 0 : borderSize;
    const int above = hasStyle(winCaption) ? captionHeight : 0;
    clientGroup = new CClientGroup(this, "client", border, border + above, width - 2 * border,
                                   height - 2 * border - above);
    clientGroup->setAlign(alignWidth | alignHeight, border, border);
    addChild(clientGroup, nullptr);
    if (!hasStyle(winCaption)) return;
    captionGroup = new CGroup(this, "close", border, border, width - 2 * border, captionHeight);
    captionGroup->setAlign(alignWidth, border, 0);
    captionGroup->onPaint = new _COnPaint<CWin>(this, &CWin::drawCaption);
    captionGroup->onMouseDown = new _COnMouse<CWin>(this, &CWin::captionMouseDown);
    captionGroup->onMouseUp = new _COnMouse<CWin>(this, &CWin::captionMouseUp);
    addChild(captionGroup, this);
    addCaptionButton(CWindowButton::close, captionButtonMargin);
    if (hasStyle(winMaxButton))
        addCaptionButton(CWindowButton::maximize, captionButtonMargin + captionButtonStep);
    if (hasStyle(winMinButton))
        addCaptionButton(CWindowButton::minimize, captionButtonMargin + 2 * captionButtonStep);
}

void CWin::addCaptionButton(int kind, int rightMargin) {
    auto* button = new CWindowButton(this, kind, 0, (captionHeight - captionButtonSize) / 2,
                                     captionButtonSize, captionButtonSize);
    button->setAlign(alignRight, rightMargin, 0);
    captionGroup->addControl(button);
}

void CWin::addControl(CCtrl* ctrl) {
    clientGroup->addControl(ctrl);
}

void CWin::clear() {
    clientGroup->clear();
}

void CWin::addMenu(CGroup* bar) {
    menu = bar;
    addChild(bar, this);
    updateClient();
}

void CWin::addToolbar(CGroup* strip) {
    toolbar = strip;
    addChild(strip, this);
    updateClient();
}

void CWin::updateClient() {
    const bool bare = isPage() && hasStyle(winMaximized);
    const int border = bare || hasStyle(winNoBorder) ? 0 : borderSize;
    int y = border;
    if (captionGroup) captionGroup->visible = !bare;
    if (menu) menu->visible = !bare;
    if (captionGroup && !bare) y += captionGroup->height + captionGap;
    for (CGroup* bar : {menu, toolbar}) {
        if (!bar || !bar->visible) continue;
        bar->left = border;
        bar->top = y;
        bar->setAlign(alignWidth, border, 0);
        y += bar->height;
    }
    clientGroup->left = border;
    clientGroup->top = y;
    clientGroup->setAlign(alignWidth | alignHeight, border, border);
}

void CWin::setCaption(const CStr& text) {
    id = text;
    nameHandle();
    if (captionGroup) captionGroup->redraw();
}

void CWin::resized() {
    const CPoint size = getSize();
    width = size.x;
    height = size.y;
    absX = absY = 0;
    CGroup::resized();
}

CPoint CWin::getSize() {
    Display* display = liveDisplay();
    Window rootFound;
    int x, y;
    unsigned w, h, border, depth;
    if (!display || !XGetGeometry(display, handle, &rootFound, &x, &y, &w, &h, &border, &depth))
        return asPoint(width, height);
    return asPoint(toLogicalSize(int(w)), toLogicalSize(int(h)));
}

CPoint CWin::getPos(bool onScreen) {
    Display* display = liveDisplay();
    if (!display) return asPoint(left, top);
    Window from = xConnection().root, child;
    if (!onScreen && parent && hasStyle(winChild)) from = outer()->handle;
    int x = toDevice(left), y = toDevice(top);
    XTranslateCoordinates(display, handle, from, 0, 0, &x, &y, &child);
    return toLogical(asPoint(x, y));
}

void CWin::setPos(int x, int y) {
    left = x;
    top = y;
    if (Display* display = liveDisplay()) XMoveWindow(display, handle, toDevice(x), toDevice(y));
}

void CWin::move(int x, int y, int w, int h) {
    left = x;
    top = y;
    width = w;
    height = h;
    Display* display = liveDisplay();
    if (display)
        XMoveResizeWindow(display, handle, toDevice(x), toDevice(y),
                          unsigned(toDevice(asMax(w, minWidth))),
                          unsigned(toDevice(asMax(h, minHeight))));
}

void CWin::setSize(int w, int h) {
    width = w;
    height = h;
    Display* display = liveDisplay();
    if (display)
        XResizeWindow(display, handle, unsigned(toDevice(asMax(w, minWidth))),
                      unsigned(toDevice(asMax(h, minHeight))));
}

void CWin::setSizeFromControls(int minW, int minH, int) {
    int w = minW, h = minH;
    for (const CCtrl* c : clientGroup->controls) {
        w = asMax(w, c->left + c->width + contentMargin);
        h = asMax(h, c->top + c->height + contentMargin);
    }
    setSize(w + 2 * borderSize, h + clientGroup->top + borderSize);
}

/// As the server has them: of pages that lie over each other the one in front counts.
CWin* CWin::innermostAt(CPoint screen) {
    Display* display = liveDisplay();
    CWin* found = this;
    if (!display) return found;
    const CPoint at = toDevice(screen);
    Window under = handle, child = None;
    int x, y;
    while (XTranslateCoordinates(display, xConnection().root, under, at.x, at.y, &x, &y, &child) &&
           child) {
        under = child;
        if (CWin* own = app->windowOf(child)) found = own;
    }
    return found;
}

bool CWin::hasFocus() {
    return app->focusedWindow() == this;
}

bool CWin::isViewable() const {
    Display* display = liveDisplay();
    XWindowAttributes attributes{};
    return display && XGetWindowAttributes(display, handle, &attributes) &&
           attributes.map_state == IsViewable;
}

void CWin::setFocus(bool on) {
    if (isPage()) {
        if (CWin* owner = getMDIOwner(this)) owner->setKeyCtrl(nullptr);
        if (on) raise(false);
        return;
    }
    Display* display = liveDisplay();
    if (on && display && app->lastWin != this && !hasFocus() && isViewable()) {
        XSetInputFocus(display, handle, RevertToNone, CurrentTime);
        XSync(display, False);
    }
    if (on) style &= ~winMinimized;
    if (!on) {
        setKeyCtrl(nullptr);
        if (app->drag.of(mouseCtrl)) app->drag.cancel();
        CCtrl* pushed = mouseCtrl;
        mouseCtrl = nullptr;
        if (pushed) pushed->redraw();
    }
    if (mdi) mdi->ownerFocus(on);
    redraw();
}

void CWin::setCursor(int number) {
    if (app->appCursor > 0) number = app->appCursor;
    Display* display = liveDisplay();
    if (!display || number == shownCursor || number < 1 || number > XConnection::cursorCount)
        return;
    shownCursor = number;
    XDefineCursor(display, handle, xConnection().cursors[number]);
}

void CWin::describe(Description& d, int) const {
    d.role = isPage() ? Role::page : Role::window;
    d.name = id.asChar();
    d.set(stateActive, app->lastWin == this);
    d.set(stateModal, app->modalWin == this);
}
