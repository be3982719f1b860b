#include "gui/controls/CScrollbar.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/ItemStates.h"
#include "gui/Keys.h"

namespace {

enum ScrollMode : int { scrollNone, arrowBack, pageBack, thumbMode, pageOn, arrowOn };

constexpr int smallestThumb = 16, growingRoom = 64, repeatMs = 20, arrowGlyph = 4;
constexpr float arrowSpeed = 2.0f, pageSpeed = 8.0f, speedStep = 0.5f;
constexpr int arrowSpeedMax = 8, pageSpeedMax = 24, fastWheel = 10;
constexpr double hoverShare = 0.3;
constexpr int typedRoom = 5;

} // namespace

CScrollbar::CScrollbar(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CCtrl(owner, name, l, t, w, h) {
    hooverable = true;
}

void CScrollbar::setRange(int total, int visibleSize) {
    if (growing) total = asMax(total, saturate(int64_t(visibleSize) + growingRoom));
    maxSize = visibleSize;
    const CRect before = thumbRect();
    const int maxBefore = max;
    max = asMax(0, total - visibleSize);
    startMax = max;
    if (growing)
        max = asMax(max, pos);
    else if (pos > max)
        pos = max;
    const int track = length() - 2 * arrowSize;
    thumbSize = asMax(smallestThumb, total > 0 ? asRound(double(visibleSize) / total * track) : 0);
    placeThumb();
    if (max != maxBefore || !(thumbRect() == before)) redraw();
}

void CScrollbar::setPos(int p) {
    if (growing && p > startMax)
        max = p;
    else if (growing)
        max = startMax;
    pos = asMinMax(p, min, asMax(min, max));
    placeThumb();
}

void CScrollbar::placeThumb() {
    const double range = double(max) - min;
    thumbPos = arrowSize + (range > 0 ? asRound((double(pos) - min) / range * room()) : 0);
}

int CScrollbar::along(int x, int y) const {
    if (!vertical) return x;
    return reversed ? height - 1 - y : y;
}

CRect CScrollbar::thumbRect() const {
    if (!vertical) return asRect(thumbPos, 0, thumbPos + thumbSize, height);
    const int top0 = reversed ? height - thumbPos - thumbSize : thumbPos;
    return asRect(0, top0, width, top0 + thumbSize);
}

void CScrollbar::report() {
    redraw();
    if (onChange) (*onChange)(this);
}

void CScrollbar::paint(CGraphic* g, CRect rect) {
    drawGuiItem(g, rect, vertical ? &clScrollbarVert : &clScrollbarHorz);
    if (arrowSize > 0) {
        const CGuiItem2& first = vertical ? clScrollbarButtonUp : clScrollbarButtonLeft;
        const CGuiItem2& last = vertical ? clScrollbarButtonDown : clScrollbarButtonRight;
        const CRect begin =
            asRect(0, 0, vertical ? width : arrowSize, vertical ? arrowSize : height);
        const CRect end = vertical ? asRect(0, height - arrowSize, width, height)
                                   : asRect(width - arrowSize, 0, width, height);
        drawGuiItem(g, begin, &first);
        drawGuiItem(g, end, &last);
        drawArrow(g, first.symbolCol, begin, vertical ? dirUp : dirLeft, arrowGlyph);
        drawArrow(g, last.symbolCol, end, vertical ? dirDown : dirRight, arrowGlyph);
    }
    if (max <= min) return;
    const CGuiItem2& thumb = vertical ? clScrollbarVertThumb : clScrollbarHorzThumb;
    const CRect at = thumbRect();
    const double share = isHovered() || thumbDrag ? hoverShare : 0;
    drawGuiItemIn(g, at, thumb, fadeCol(thumb.fillCol, win->app->gui->palette.accent, share));
}

void CScrollbar::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (max <= 0 || !(btn & modLeft)) return;
    const int at = along(x, y);
    if (thumbSize == 0) {
        thumbDrag = true;
        scrollMode = thumbMode;
        dragStart = 0;
        dragTo(at);
    } else if (at < arrowSize) {
        scroll(arrowBack);
    } else if (at < thumbPos) {
        scroll(pageBack);
    } else if (at < thumbPos + thumbSize) {
        scrollMode = thumbMode;
        thumbDrag = true;
        dragStart = at - thumbPos;
        redraw();
    } else {
        scroll(at < length() - arrowSize ? pageOn : arrowOn);
    }
}

void CScrollbar::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    if (thumbDrag) dragTo(along(x, y));
}

/// Puts the thumb so that the point that was taken hold of comes to lie at `place`.
void CScrollbar::dragTo(int place) {
    const int travel = room();
    if (travel <= 0) return;
    const int offset = asMinMax(place - dragStart - arrowSize, 0, travel);
    const int wanted = asRound(min + double(offset) / travel * (double(max) - min));
    thumbPos = arrowSize + offset;
    if (wanted == pos) {
        redraw();
        return;
    }
    pos = wanted;
    report();
}

void CScrollbar::mouseUp(int x, int y, int btn) {
    win->app->killTimer(this);
    scrollMode = scrollNone;
    if (thumbDrag) {
        thumbDrag = false;
        placeThumb();
    }
    redraw();
    CCtrl::mouseUp(x, y, btn);
}

void CScrollbar::scroll(int mode) {
    const bool arrow = mode == arrowBack || mode == arrowOn;
    scrollMode = mode;
    speed = arrow ? arrowSpeed : pageSpeed;
    speedMax = arrow ? arrowSpeedMax : pageSpeedMax;
    win->app->addTimer(this, repeatMs, true);
    onTimer();
}

void CScrollbar::onTimer() {
    const bool back = scrollMode == arrowBack || scrollMode == pageBack;
    const int by = int(speed);
    speed = fLimit(speed + speedStep, 0.0f, float(speedMax));
    const int before = pos;
    setPos(saturate(int64_t(pos) + (back ? -by : by)));
    if (pos != before) report();
}

CFader::CFader(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CScrollbar(owner, name, l, t, w, h), color(asColor(64, 64, 64)),
      typed(this, "-0123456789", typedRoom) {
    typed.onTyped = [this](const CStr& text) {
        step(saturate(int64_t(strAsIntDef(text, pos)) - pos));
    };
    type = ctrlFader;
    tabStop = true;
    arrowSize = 0;
    thumbSize = smallestThumb;
    reversed = true;
    max = 100;
    placeThumb();
}

void CFader::paint(CGraphic* g, CRect rect) {
    if (onPaint) {
        CCtrl::paint(g, rect);
        return;
    }
    constexpr int trackHalf = 2;
    const CPalette& colours = win->app->gui->palette;
    const CRect thumb = thumbRect();
    const int middle = width / 2, thumbMiddle = (thumb.top + thumb.bottom) / 2;
    g->fillRect(color, asRect(middle - trackHalf, 0, middle + trackHalf, rect.bottom));
    g->fillRect(colours.accent,
                asRect(middle - trackHalf, thumbMiddle, middle + trackHalf, rect.bottom));
    const bool hot = isHovered() || thumbDrag;
    g->fillRect(hot ? fadeCol(colours.raised, colours.accent, hoverShare) : colours.raised, thumb);
    g->frameRect(hasKeyFocus() ? colours.accent : colours.frame, thumb);
    if (typed.typing())
        g->drawText(colours.text, typed.shown(), thumb, 0);
    else
        g->fillLine(colours.text, asRect(2, thumbMiddle, width - 2, thumbMiddle + 1));
}

bool CFader::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (CCtrl::mouseWheel(x, y, btn, dy, dx)) return true;
    if (!(btn & modControl)) return false;
    const int turned = dy ? dy : dx;
    const int by = (turned > 0) - (turned < 0);
    step(by * (btn & modShift ? fastWheel : 1));
    return true;
}

void CFader::step(int by) {
    const int before = pos;
    setPos(saturate(int64_t(pos) + by));
    if (pos != before) report();
}

bool CFader::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    return typed.keyDown(key, mods) || (!mods && stepKey(key));
}

bool CFader::stepKey(int key) {
    const int ones = (key == ::keyUp) - (key == ::keyDown);
    const int tens = (key == keyPageUp) - (key == keyPageDown);
    if (!ones && !tens && key != keyHome && key != keyEnd && key != keyDelete) return false;
    typed.finish();
    if (ones || tens)
        step(ones + fastWheel * tens);
    else
        step(saturate(int64_t(key == keyHome ? min : key == keyEnd ? max : resetPos) - pos));
    return true;
}

void CFader::setFocus(bool on) {
    CScrollbar::setFocus(on);
    if (!on) typed.finish();
}

void CScrollbar::describe(Description& d, int) const {
    d.role = Role::scrollBar;
    if (d.name.empty()) d.name = vertical ? "Scroll up and down" : "Scroll left and right";
    d.range = Description::Range{double(pos), double(min), double(max), 1.0};
    d.set(stateVertical, vertical);
}

bool CScrollbar::enterNumber(int, double to) {
    const int before = pos;
    setPos(saturate(asRound64(to)));
    if (pos != before) report();
    return true;
}

void CFader::describe(Description& d, int part) const {
    CScrollbar::describe(d, part);
    d.role = Role::slider;
}
