#include "gui/controls/CRangebar.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/ItemStates.h"
#include "gui/Keys.h"
#include "gui/TouchStep.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int notch = 32, cursorAcross = 3, cursorDown = 4; // the latter of `CCtrl::cursor`
constexpr double wheelShare = 0.1, zoomStep = 1.25, hoverShare = 0.3;

} // namespace

CRangebar::CRangebar(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CCtrl(owner, name, l, t, w, h) {
    hooverable = tabStop = true;
}

void CRangebar::setContent(double total, double leastSpan) {
    if (total != whole) redraw();
    whole = total;
    least = fLimit(leastSpan, 0.0, total);
    setRange(start, size);
}

void CRangebar::setRange(double newFrom, double newSpan) {
    const CRect before = thumbRect();
    size = fLimit(newSpan, least, whole);
    start = fLimit(newFrom, 0.0, whole - size);
    if (thumbRect() != before) redraw();
}

void CRangebar::change(double newFrom, double newSpan) {
    const double startWas = start, sizeWas = size;
    setRange(newFrom, newSpan);
    if ((start != startWas || size != sizeWas) && onChange) (*onChange)(this);
}

/// `around` stays where it is seen.
void CRangebar::zoom(double factor, double around) {
    const double newSpan = fLimit(size / factor, least, whole);
    change(around - (around - start) * newSpan / size, newSpan);
}

CRect CRangebar::thumbRect() const {
    const int room = length();
    const int wide = asMin(asMax(asRound(size / whole * room), leastThumb), room);
    const double free = whole - size;
    const int at = free > 0 ? asRound(start / free * (room - wide)) : 0;
    return vertical ? asRect(0, at, width, at + wide) : asRect(at, 0, at + wide, height);
}

CRangebar::Part CRangebar::partAt(int place) const {
    const CRect thumb = thumbRect();
    const int first = vertical ? thumb.top : thumb.left;
    const int last = vertical ? thumb.bottom : thumb.right;
    if (place < first) return Part::before;
    if (place >= last) return Part::behind;
    return place < first + grip ? Part::first : place >= last - grip ? Part::last : Part::middle;
}

void CRangebar::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    drawGuiItem(g, rect, vertical ? &clScrollbarVert : &clScrollbarHorz);
    const CGuiItem2& look = vertical ? clScrollbarVertThumb : clScrollbarHorzThumb;
    const CRect thumb = thumbRect();
    const double share = isHovered() || isPushed() ? hoverShare : 0;
    drawGuiItemIn(g, thumb, look, fadeCol(look.fillCol, colours.accent, share));
    for (const int inset : {grip / 2, grip - 1}) {
        const CRect in = vertical ? sizeRect(thumb, 2, inset, -2, -inset)
                                  : sizeRect(thumb, inset, 2, -inset, -2);
        const bool down = vertical;
        g->fillLine(colours.dimText, down ? asRect(in.left, in.top, in.right, in.top + 1)
                                          : asRect(in.left, in.top, in.left + 1, in.bottom));
        g->fillLine(colours.dimText, down ? asRect(in.left, in.bottom - 1, in.right, in.bottom)
                                          : asRect(in.right - 1, in.top, in.right, in.bottom));
    }
    if (hasKeyFocus()) g->frameRect(colours.accent, rect);
}

void CRangebar::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!(btn & modLeft)) return;
    win->setKeyCtrl(this);
    held = partAt(along(asPoint(x, y)));
    if (held == Part::before || held == Part::behind)
        change(start + (held == Part::before ? -size : size), size);
    else
        win->app->drag.start(this, this, asPoint(x, y), btn, 1);
}

void CRangebar::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    const Part over = partAt(along(asPoint(x, y)));
    const bool atEnd = over == Part::first || over == Part::last;
    cursor = !atEnd ? 1 : vertical ? cursorDown : cursorAcross;
}

void CRangebar::dragBegin(const DragPoint&) {
    startBefore = start;
    sizeBefore = size;
}

void CRangebar::dragMove(const DragPoint& point) {
    const int pixels = along(point.at) - along(point.anchor);
    const double by = pixels * perPixel(), end = startBefore + sizeBefore;
    if (held == Part::middle) {
        change(startBefore + by, sizeBefore);
    } else if (held == Part::last) {
        change(startBefore, fLimit(sizeBefore + by, least, whole - startBefore));
    } else {
        const double first = fLimit(startBefore + by, 0.0, end - least);
        change(first, end - first);
    }
}

void CRangebar::dragCancel() {
    change(startBefore, sizeBefore);
}

bool CRangebar::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (CCtrl::mouseWheel(x, y, btn, dy, dx)) return true;
    return touch(x, y, btn, {double(dx) / notch, double(dy) / notch});
}

bool CRangebar::touch(int x, int y, int btn, const TouchStep& step) {
    const double around = start + size * along(asPoint(x, y)) / asMax(length(), 1);
    const double turned = step.dy != 0 ? step.dy : step.dx;
    if (step.zoom != 1)
        zoom(step.zoom, around);
    else if (btn & modControl)
        zoom(std::pow(zoomStep, turned), around);
    else
        change(start - turned * wheelShare * size, size);
    return true;
}

bool CRangebar::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (mods & ~modShift) return false;
    const bool back = key == keyLeft || key == ::keyUp, on = key == keyRight || key == ::keyDown;
    if (back || on)
        change(start + (on ? wheelShare : -wheelShare) * size, size);
    else if (key == keyPageUp || key == keyPageDown)
        change(start + (key == keyPageDown ? size : -size), size);
    else if (key == keyHome || key == keyEnd)
        change(key == keyHome ? 0 : whole, size);
    else if (key == '+' || key == '-')
        zoom(key == '+' ? zoomStep : 1 / zoomStep, start + size / 2);
    else if (key == keyDelete)
        change(0, whole);
    else
        return false;
    return true;
}

void CRangebar::describe(Description& d, int) const {
    d.role = Role::scrollBar;
    if (d.name.empty()) d.name = vertical ? "Scroll up and down" : "Scroll left and right";
    d.range = Description::Range{start, 0.0, std::max(0.0, whole - size), 0.0};
    d.set(stateVertical, vertical);
}

bool CRangebar::enterNumber(int, double to) {
    change(to, size);
    return true;
}
