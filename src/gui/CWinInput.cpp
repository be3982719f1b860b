// The mouse and the keys of a window.
#include "gui/CWin.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/Keys.h"
#include "gui/Senders.h"
#include "gui/TouchStep.h"
#include "gui/XConnection.h"
#include "gui/controls/CMDI.h"
#include "gui/controls/CPopup.h"

#include <X11/Xlib.h>

#include <cmath>

namespace {

constexpr int wheelStep = 32;
constexpr int edge = 3, corner = 3 * edge, moveStrip = 23;
enum CaptionTag : int { tagSize = 1, tagClose = 2, tagToolbar = 3 };

int cursorOfZone(int zone) {
    switch (zone) {
    case zoneLeft:
        return 3;
    case zoneTop:
        return 4;
    case zoneRight:
        return 5;
    case zoneBottom:
        return 6;
    case zoneTopRight:
        return 7;
    case zoneTopLeft:
        return 8;
    case zoneBottomLeft:
        return 9;
    case zoneBottomRight:
        return 10;
    default:
        return 0;
    }
}

/// A saved rectangle (left, top, width, height) after its zone was dragged by (dx, dy).
CRect draggedRect(CRect r, int zone, int dx, int dy) {
    if (zone & (zoneLeft | zoneTopLeft | zoneBottomLeft)) {
        r.left += dx;
        r.right -= dx;
    }
    if (zone & (zoneRight | zoneTopRight | zoneBottomRight)) r.right += dx;
    if (zone & (zoneTop | zoneTopLeft | zoneTopRight)) {
        r.top += dy;
        r.bottom -= dy;
    }
    if (zone & (zoneBottom | zoneBottomLeft | zoneBottomRight)) r.bottom += dy;
    if (zone == zoneMove) {
        r.left += dx;
        r.top += dy;
    }
    return r;
}

} // namespace

int CWin::getHitPos(int x, int y) const {
    if (hasStyle(winSizable) && !hasStyle(winMaximized)) {
        const bool nearLeft = x < corner, nearRight = x >= width - corner;
        const bool nearTop = y < corner, nearBottom = y >= height - corner;
        const bool atLeft = x < edge, atRight = x >= width - edge;
        const bool atTop = y < edge, atBottom = y >= height - edge;
        if ((atLeft && nearTop) || (nearLeft && atTop)) return zoneTopLeft;
        if ((nearRight && atTop) || (atRight && nearTop)) return zoneTopRight;
        if ((atLeft && nearBottom) || (nearLeft && atBottom)) return zoneBottomLeft;
        if ((atRight && nearBottom) || (nearRight && atBottom)) return zoneBottomRight;
        if (atLeft) return zoneLeft;
        if (atTop) return zoneTop;
        if (atRight) return zoneRight;
        if (atBottom) return zoneBottom;
    }
    return hasStyle(winCaption) && y < moveStrip ? zoneMove : zoneNone;
}

CPoint CWin::controlPos(const CCtrl* ctrl) const {
    CPoint at = asPoint(0, 0);
    for (const CCtrl* c = ctrl; c && c->category != catWin; c = c->parent) {
        const CCtrl* around = c->parent;
        at = addPos(at, asPoint(c->left, c->top));
        if (around) at = addPos(at, asPoint(-around->scrollX, -around->scrollY));
    }
    return at;
}

void CWin::setCapture(bool on) {
    Display* display = liveDisplay();
    if (!display) return;
    if (on)
        XGrabPointer(display, handle, False,
                     ButtonPressMask | ButtonReleaseMask | PointerMotionMask, GrabModeAsync,
                     GrabModeAsync, None, None, CurrentTime);
    else
        XUngrabPointer(display, CurrentTime);
}

void CWin::saveRect() {
    const CPoint at = getPos(false), size = getSize();
    restoreRect = asRect(at.x, at.y, size.x, size.y);
}

void CWin::toggleMaximized() {
    if (hasStyle(winMaximized))
        restore();
    else
        maximize();
}

void CWin::mouseDown(int x, int y, int btn) {
    app->cancelHint();
    if (!hasStyle(winPopup)) setCapture(true);
    CCtrl* hit = controlAtPos(x, y);
    app->lastModKey = btn;
    if (menu && keyCtrl == menu) setKeyCtrl(nullptr);
    if (hit) {
        if (app->exclusiveCtrl && app->exclusiveCtrl != hit) return;
        mouseCtrl = hit;
        const CPoint at = controlPos(hit);
        hit->mouseDown(x - at.x, y - at.y, btn);
        return;
    }
    sizeMode = getHitPos(x, y);
    if (sizeMode == zoneMove && (btn & modDouble)) {
        sizeMode = zoneNone;
        toggleMaximized();
    } else if (sizeMode > 0 && !hasStyle(winMaximized)) {
        saveRect();
    } else {
        sizeMode = zoneNone;
    }
}

void CWin::captionMouseDown(CObject*, int, int, int btn) {
    if (!(btn & modLeft)) return;
    if (btn & modDouble) {
        toggleMaximized();
    } else if (!hasStyle(winMaximized)) {
        sizeMode = zoneMove;
        saveRect();
    }
}

void CWin::captionMouseUp(CObject*, int, int, int btn) {
    if (!(btn & modRight)) return;
    dropCaptionMenu(mousePos(), false);
}

void CWin::dropCaptionMenu(CPoint at, bool fromKeys) {
    auto* popup = new CPopup(app, this);
    popup->autoDelete = true;
    fillCaptionMenu(popup);
    popup->popup(at.x, at.y, fromKeys);
}

void CWin::fillCaptionMenu(CPopup* popup) {
    const auto add = [&](const char* text, int entryTag) {
        CCtrl* entry = popup->add(text, new _COnChange<CWin>(this, &CWin::captionMenu));
        entry->tag = entryTag;
        entry->data = this;
    };
    if (hasStyle(winSizable)) add(hasStyle(winMaximized) ? "Restore" : "Maximize", tagSize);
    auto* owner = outer();
    CMDI* area = isPage() || !owner ? pageArea() : owner->mdi;
    if (hasStyle(winDockable) && area) area->addDockMenu(popup, this);
    popup->addSeparator();
    add("Close", tagClose);
}

void CWin::captionMenu(CObject* sender) {
    switch (tagOf(sender)) {
    case tagSize:
        toggleMaximized();
        break;
    case tagClose:
        hide();
        break;
    case tagToolbar:
        toggleToolbar();
        break;
    default:
        break;
    }
}

void CWin::toggleToolbar() {
    if (!toolbar) return;
    toolbar->visible = !toolbar->visible;
    updateClient();
    resized();
    redraw();
}

void CWin::dragZone() {
    const CPoint now = mousePos(), start = app->lastMousePos;
    const CRect r = draggedRect(restoreRect, sizeMode, now.x - start.x, now.y - start.y);
    move(r.left, r.top, r.right, r.bottom);
}

/// The pointer moved without a press. Returns the number of the cursor to show.
int CWin::hover(int x, int y, int btn) {
    CCtrl* hit = controlAtPos(x, y);
    if (!hit) {
        app->setHooverCtrl(nullptr, x, y);
        return 1;
    }
    const CPoint at = controlPos(hit);
    hit->mouseMove(x - at.x, y - at.y, btn);
    if (!visible || hit != controlAtPos(x, y)) return 1; // the handler has changed things
    const int shape = hit->cursor;
    app->setHooverCtrl(hit, x - at.x, y - at.y);
    return shape;
}

void CWin::mouseMove(int x, int y, int btn) {
    app->lastModKey = btn;
    int shape = 1;
    if (sizeMode) {
        dragZone();
    } else if (mouseCtrl) {
        shape = mouseCtrl->cursor;
        const CPoint at = controlPos(mouseCtrl);
        if (app->drag.of(mouseCtrl))
            app->drag.moved(asPoint(x - at.x, y - at.y), btn);
        else
            mouseCtrl->mouseMove(x - at.x, y - at.y, btn);
        if (app->dragList && app->dragCtrl) app->dragStep(btn);
    } else {
        shape = hover(x, y, btn);
    }
    const int zoneShape = cursorOfZone(btn & modLeft ? sizeMode : getHitPos(x, y));
    setCursor(zoneShape ? zoneShape : shape);
    if (!app->dragCtrl) app->hideDragWin();
}

void CWin::mouseUp(int x, int y, int btn) {
    app->lastModKey = btn;
    setCapture(false);
    if (CCtrl* pushed = mouseCtrl) {
        mouseCtrl = nullptr;
        const CPoint at = controlPos(pushed);
        if (app->drag.of(pushed)) app->drag.released(asPoint(x - at.x, y - at.y));
        pushed->mouseUp(x - at.x, y - at.y, btn);
    }
    if (sizeMode && isPage()) pageArea()->changed();
    sizeMode = zoneNone;
    if (app->dragCtrl) app->drop(btn);
    // The pointer may have left while the press held it.
    app->setHooverCtrl(inside(x, y) ? controlAtPos(x, y) : nullptr, x, y);
}

bool CWin::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (onWheel) return (*onWheel)(this, x, y, btn, dy, dx);
    CCtrl* hit = controlAtPos(x, y);
    for (CCtrl *c = hit, *around; c && c->category != catWin; c = around) {
        around = c->parent;
        const CPoint at = controlPos(c);
        if (c->mouseWheel(x - at.x, y - at.y, btn, dy, dx)) return true;
    }
    return false;
}

bool CWin::touch(int x, int y, int btn, const TouchStep& step) {
    CCtrl* hit = controlAtPos(x, y);
    for (CCtrl *c = hit, *around; c && c->category != catWin; c = around) {
        around = c->parent;
        const CPoint at = controlPos(c);
        if (c->touch(x - at.x, y - at.y, btn, step)) return true;
    }
    app->restX += step.dx;
    app->restY += step.dy;
    const auto whole = [](double& rest) {
        const double notches = std::trunc(rest);
        rest -= notches;
        return asInt(notches) * wheelStep;
    };
    const int dy = whole(app->restY), dx = whole(app->restX);
    return (dy || dx) && (app->drag.wheel(dy, dx) || mouseWheel(x, y, btn, dy, dx));
}

bool CWin::dropAt(int x, int y, int btn) {
    CCtrl* target = controlAtPos(x, y);
    while (target && target->category != catWin && !target->onDrop) target = target->parent;
    if (target && target->category != catWin) {
        const CPoint at = controlPos(target);
        (*target->onDrop)(target, x - at.x, y - at.y, btn);
        return true;
    }
    if (onDrop) (*onDrop)(this, x, y, btn);
    return onDrop;
}

bool CWin::keyDown(int key, int mods) {
    if (offerKey(key, mods) || ownKey(key, mods)) return true;
    auto* owner = outer();
    return hasStyle(winKeysToOwner) && owner && !owner->hasStyle(winPages) &&
           owner->keyDown(key, mods);
}

/// Everybody who may want the key before the window itself.
bool CWin::offerKey(int key, int mods) {
    CCtrl* hook = app->keyHookCtrl;
    if (hook && hook->onKeyDown && (*hook->onKeyDown)(hook, key, mods)) return true;
    if (app->onKey && (*app->onKey)(this, key, mods)) return true;
    if (onAccelerator && (*onAccelerator)(this, key, mods)) return true;
    if (key == keyF1 - 3 && (mods & modAlt)) {
        hide();
        return true;
    }
    if (takesKeys() && offerFocus(key, mods)) return true;
    if (mdi && hasFocus() && mdi->keyDown(key, mods)) return true;
    return onKeyDown && (*onKeyDown)(this, key, mods);
}

bool CWin::ownKey(int key, int mods) {
    constexpr int keyF6 = keyF1 - 5, keyF10 = keyF1 - 9, keyF11 = keyF1 - 10;
    if (key == keyEscape && hasStyle(winEscape) && takesKeys()) {
        hide();
        return true;
    }
    if (key == keyF11 && hasStyle(winSizable)) {
        toggleMaximized();
        return true;
    }
    if (key == ' ' && mods == modAlt && captionGroup) {
        dropCaptionMenuByKey();
        return true;
    }
    if (key == keyMenu || (key == keyF10 && mods == modShift)) return openContextMenu();
    if (key == keyF6 && mods == modControl) return nextPage();
    if (key != keyTab) return false;
    if (!(mods & modControl)) return nextCtrl(mods & modShift ? -1 : 1);
    app->nextWin(this, mods);
    return true;
}

void CWin::dropCaptionMenuByKey() {
    dropCaptionMenu(addPos(getPos(true), asPoint(borderSize, borderSize + captionHeight)), true);
}

bool CWin::keyUp(int key, int mods) {
    if (keyCtrl && keyCtrl->keyUp(key, mods)) return true;
    if (mdi && mdi->keyUp(key, mods)) return true;
    return onKeyUp && (*onKeyUp)(this, key, mods);
}
