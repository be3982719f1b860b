#include "gui/controls/CValue.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/XConnection.h"

#include <cstdlib>

namespace {

constexpr int fastWheel = 10;
constexpr double dragShare = 0.5;

int signOf(int v) {
    return (v > 0) - (v < 0);
}

double powerOfTen(int n) {
    double power = 1;
    for (int i = 0; i < n; i++) power *= 10;
    return power;
}

} // namespace

CValue::CValue(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CEdit(owner, name, l, t, w, h) {
    selectOnFocus = true;
}

CStr CValue::getText() const {
    return asStr(value + displayOffset);
}

int CValue::parse(const CStr& typed) const {
    return saturate(int64_t(strAsIntDef(typed, saturate(int64_t(value) + displayOffset))) -
                    displayOffset);
}

void CValue::paint(CGraphic* g, CRect rect) {
    if (hasKeyFocus() || !onPaint)
        CEdit::paint(g, rect);
    else
        CCtrl::paint(g, rect);
}

bool CValue::beginsTyping(int btn) const {
    return (btn & modLeft) && ((btn & modDouble) || hasKeyFocus());
}

void CValue::beginDrag() {
    const CPoint at = mousePos();
    dragStartX = at.x;
    dragStartY = at.y;
    dragStartValue = value;
}

void CValue::mouseDown(int x, int y, int btn) {
    typing = beginsTyping(btn);
    if (typing) {
        const bool fresh = !hasKeyFocus();
        win->setKeyCtrl(this);
        if (!fresh) CEdit::mouseDown(x, y, btn);
        return;
    }
    if ((btn & modMiddle) && hasKeyFocus()) return CEdit::mouseDown(x, y, btn);
    if (btn & modLeft) {
        beginDrag();
        redraw();
    }
    CCtrl::mouseDown(x, y, btn);
}

void CValue::mouseMove(int x, int y, int btn) {
    if (typing) {
        CEdit::mouseMove(x, y, btn);
        return;
    }
    CCtrl::mouseMove(x, y, btn);
    if (!(btn & modLeft) || !isPushed()) return;
    const CPoint at = mousePos();
    const int delta = (dragStartY - at.y) + (at.x - dragStartX);
    const int64_t steps = sensitivity > 0 ? asInt(delta * dragShare / sensitivity) : 0;
    const int wanted = asMinMax(saturate(dragStartValue + multiplier * (step * steps)), min, max);
    if (wanted == value) return;
    value = wanted;
    const int stepBefore = step;
    if (liveUpdate) changing();
    if (step != stepBefore) beginDrag();
    redraw();
}

void CValue::mouseUp(int x, int y, int btn) {
    const bool wasTyping = typing;
    typing = false;
    redraw();
    if (wasTyping) return CEdit::mouseUp(x, y, btn);
    CCtrl::mouseUp(x, y, btn);
    if ((btn & modLeft) && !liveUpdate && value != dragStartValue) changing();
    if ((btn & modRight) && inside(x, y)) nudge(x < width / 2 ? -1 : 1);
}

void CValue::nudge(int by) {
    const int wanted = asMinMax(saturate(int64_t(value) + by), min, max);
    if (wanted == value) return;
    value = wanted;
    if (hasKeyFocus()) {
        text = getText();
        selectAll();
    }
    changing();
    redraw();
}

bool CValue::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (CCtrl::mouseWheel(x, y, btn, dy, dx)) return true;
    if (!(btn & modControl)) return false;
    nudge(signOf(dy ? dy : dx) * (btn & modShift ? fastWheel : 1));
    return true;
}

bool CValue::keyDown(int key, int mods) {
    if (key != keyReturn) return (!mods && stepKey(key)) || CEdit::keyDown(key, mods);
    if (CCtrl::keyDown(key, mods)) return true;
    win->setKeyCtrl(nullptr);
    return true;
}

/// Nothing has been typed and the caret has not been moved since it got the focus or was stepped.
bool CValue::untouched() const {
    return anchor == -1 && selLength == text.length() && text == getText();
}

bool CValue::stepKey(int key) {
    const int by = (key == ::keyUp) - (key == ::keyDown) +
                   fastWheel * ((key == keyPageUp) - (key == keyPageDown));
    if (by) {
        const int typed = asMinMax(parse(text), min, max);
        nudge(saturate(int64_t(typed) - value + by));
        return true;
    }
    if (!untouched()) return false;
    if (key == keyHome || key == keyEnd)
        nudge(saturate(int64_t(key == keyHome ? min : max) - value));
    else if (key == keyDelete && resetValue)
        nudge(saturate(int64_t(*resetValue) - value));
    else
        return false;
    return true;
}

void CValue::setFocus(bool on) {
    if (on) {
        text = getText();
        CEdit::setFocus(true);
        return;
    }
    selLength = 0;
    if (!cancelled) nudge(saturate(int64_t(asMinMax(parse(text), min, max)) - value));
}

void CValue::changing() {
    if (onChange) (*onChange)(this);
}

void CValue::setValue(int v) {
    const int wanted = asMinMax(v, min, max);
    if (wanted == value) return;
    value = wanted;
    if (liveUpdate) changing();
    redraw();
}

void CValue::showValue(int v) {
    const int wanted = asMinMax(v, min, max);
    if (wanted == value) return;
    value = wanted;
    redraw();
}

double CDecimalValue::getValue() const {
    return value / powerOfTen(decimals);
}

CStr CDecimalValue::getText() const {
    return asStrFormat((double(value) + displayOffset) / powerOfTen(decimals),
                       CStr("%.") + asStr(decimals) + "f");
}

int CDecimalValue::parse(const CStr& typed) const {
    CStr plain = typed.trim();
    const int comma = plain.pos(",");
    if (comma >= 0) {
        plain.del(comma, 1);
        plain.ins(".", comma);
    }
    char* end = nullptr;
    const double number = std::strtod(plain.asChar(), &end);
    if (plain.empty() || *end != 0) return value;
    return saturate(asRound64(number * powerOfTen(decimals)) - displayOffset);
}

double CDecimalValue::unit() const {
    return 1.0 / powerOfTen(decimals);
}

void CValue::describe(Description& d, int part) const {
    CEdit::describe(d, part);
    const auto shown = [this](int v) { return (double(v) + displayOffset) * unit(); };
    d.role = Role::number;
    d.text = getText().asChar();
    d.range = Description::Range{shown(value), shown(min), shown(max), unit()};
}

bool CValue::enterNumber(int, double to) {
    const int before = value;
    setValue(saturate(asRound64(to / unit()) - displayOffset));
    if (value != before && !liveUpdate) changing();
    return true;
}

bool CValue::enterText(const std::string& to) {
    return enterNumber(wholeCtrl, (double(parse(to.c_str())) + displayOffset) * unit());
}
