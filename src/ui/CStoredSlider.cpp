#include "ui/CStoredSlider.h"

#include "base/Numbers.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "ui/ProgramItems.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int barHeight = 4, thumbWidth = 4;
constexpr int typedRoom = 6;
constexpr double fine = 0.1, keyShare = 0.05;

} // namespace

CStoredSlider::CStoredSlider(CWin* owner, const CStr& name, ValueDoor* through, int l, int t, int w,
                             int h)
    : CCtrl(owner, name, l, t, w, h), door(through), typed(this, "0123456789.,-", typedRoom) {
    typed.onTyped = [this](const CStr& entered) {
        setAll(typedValue(std::strtod(entered.asChar(), nullptr)));
    };
    tabStop = true;
    hooverable = true;
    enabled = false;
}

double CStoredSlider::present() const {
    const auto one = value();
    return one ? one->get()[0] : usual;
}

bool CStoredSlider::refresh() {
    const bool none = !value();
    const double now = present();
    if (now == shown && none == empty) return false;
    shown = now;
    empty = none;
    enabled = !none;
    redraw();
    return true;
}

int CStoredSlider::xOf(double number) const {
    const double share = (std::clamp(number, least, most) - least) / (most - least);
    return asRound(share * (width - thumbWidth));
}

void CStoredSlider::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    if (typed.typing()) {
        g->fillRect(colours.window, clientRect());
        g->drawText(colours.text, typed.shown(), clientRect(), 0);
    } else {
        const int middle = height / 2;
        const CRect track = asRect(0, middle - barHeight / 2, width, middle + barHeight / 2);
        g->fillRound(clTrackLed.fillCol, track);
        if (empty) return;
        const int x = xOf(shown), from = xOf(origin) + (origin > least ? thumbWidth / 2 : 0);
        g->fillRect(colours.accent,
                    asRect(std::min(x, from), track.top, std::max(x, from), track.bottom));
        const bool held = win->app->drag.of(this) || isHovered();
        g->fillRound(held ? colours.accent : colours.text,
                     asRect(x, 1, x + thumbWidth, height - 1));
    }
    if (hasKeyFocus()) g->frameRect(colours.accent, clientRect());
}

void CStoredSlider::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!(btn & modLeft) || empty) return;
    if (btn & modDouble)
        setAll(usual);
    else
        win->app->drag.start(this, this, asPoint(x, y), btn, 1);
}

void CStoredSlider::dragBegin(const DragPoint&) {
    moved = values();
    before.clear();
    for (const StoredValue& one : moved) before.push_back(one.get());
    door->begin();
}

void CStoredSlider::dragMove(const DragPoint& point) {
    if (!door->dragging()) return; // undone meanwhile
    const double wide = std::max(1, width - thumbWidth);
    const double by =
        (point.at.x - point.anchor.x) / wide * (most - least) * (point.btn & modShift ? fine : 1.0);
    for (size_t i = 0; i < moved.size(); i++) {
        StoredValue::Numbers to = before[i];
        to[0] = std::clamp(to[0] + by, least, most);
        door->set(moved[i], to);
    }
    refresh();
    if (onTold) onTold(text());
}

void CStoredSlider::dragEnd(const DragPoint&) {
    door->end();
    redraw();
}

void CStoredSlider::dragCancel() {
    door->cancel();
    refresh();
}

void CStoredSlider::setAll(double to) {
    door->begin();
    for (const StoredValue& one : values()) {
        StoredValue::Numbers numbers = one.get();
        numbers[0] = std::clamp(to, least, most);
        door->set(one, numbers);
    }
    door->end();
    refresh();
}

bool CStoredSlider::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (empty) return false;
    return typed.keyDown(key, mods) || (!mods && stepKey(key));
}

bool CStoredSlider::stepKey(int key) {
    const double step = keyShare * (most - least);
    if (key == keyPageUp || key == keyPageDown)
        setAll(present() + (key == keyPageUp ? step : -step));
    else if (key == keyHome || key == keyEnd)
        setAll(key == keyHome ? least : most);
    else if (key == keyDelete)
        setAll(usual);
    else
        return false;
    return true;
}

void CStoredSlider::setFocus(bool on) {
    CCtrl::setFocus(on);
    if (!on) typed.finish();
}

void CStoredSlider::describe(Description& d, int) const {
    d.role = Role::slider;
    d.text = empty ? "" : text().asChar();
    d.range = Description::Range{shown, least, most, 0.0};
}

bool CStoredSlider::enterNumber(int, double to) {
    if (empty) return false;
    setAll(to);
    return true;
}
