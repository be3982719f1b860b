#include "ui/CStoredCtrl.h"

#include "base/Numbers.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/controls/CPopup.h"
#include "ui/MenuDeed.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr int typedRoom = 6;
constexpr double fine = 0.1, keyShare = 0.05, wheelShare = 0.02;

} // namespace

CStoredCtrl::CStoredCtrl(CWin* owner, const CStr& name, ValueDoor* through, int l, int t, int w,
                         int h)
    : CCtrl(owner, name, l, t, w, h), door(through), typed(this, "0123456789.,-", typedRoom) {
    typed.onTyped = [this](const CStr& entered) {
        setAll(typedValue(std::strtod(entered.asChar(), nullptr)));
    };
    tabStop = true;
    hooverable = true;
    enabled = false;
}

double CStoredCtrl::present() const {
    const auto one = value();
    return one ? one->get()[0] : usual;
}

bool CStoredCtrl::refresh() {
    const bool none = !value();
    const double now = present();
    if (now == shown && none == nothing && (none || !toldText.empty())) return false;
    shown = now;
    nothing = none;
    toldText = none ? CStr() : text();
    enabled = !none;
    redraw();
    return true;
}

double CStoredCtrl::shareOf(double number) const {
    return (toScale(std::clamp(number, least, most)) - toScale(least)) / span();
}

double CStoredCtrl::toScale(double number) const {
    return logarithmic ? std::log(std::max(number, least)) : number;
}

double CStoredCtrl::fromScale(double place) const {
    return logarithmic ? std::exp(place) : place;
}

double CStoredCtrl::span() const {
    return toScale(most) - toScale(least);
}

bool CStoredCtrl::held() const {
    return win->app->drag.of(this) || isHovered();
}

double CStoredCtrl::stepOf(double share, int mods) const {
    const double step = share * span() * (mods & modShift ? fine : 1.0);
    return whole ? std::max(1.0, std::round(step)) : step;
}

void CStoredCtrl::paintTyping(CGraphic* g, const CRect& at) const {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.window, at);
    g->drawText(colours.text, typed.shown(), at, 0);
}

void CStoredCtrl::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!(btn & modLeft) || nothing) return;
    if (btn & modDouble)
        setAll(usual);
    else
        win->app->drag.start(this, this, asPoint(x, y), btn, 1);
}

void CStoredCtrl::mouseUp(int x, int y, int btn) {
    CCtrl::mouseUp(x, y, btn);
    if ((btn & modRight) && inside(x, y)) contextMenu();
}

bool CStoredCtrl::contextMenu() {
    if (!menu || nothing) return false;
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    addDeed(popup, "Type a value...", [this] {
        win->setKeyCtrl(this);
        typed.begin();
        redraw();
    });
    addDeed(popup, "Default", [this] { setAll(usual); });
    menu(popup);
    popup->popupBelow(this);
    return true;
}

// What a gesture moves.

void CStoredCtrl::collect() {
    taken.clear();
    before.clear();
    const auto own = value();
    if (!own) return;
    taken.push_back(*own);
    if (values)
        for (const StoredValue& one : values())
            if (std::find(taken.begin(), taken.end(), one) == taken.end()) taken.push_back(one);
    for (const StoredValue& one : taken) before.push_back(one.get());
}

/// Where a place of the scale comes to when the one that is shown moves by so much.
double CStoredCtrl::moved(double from, double by) const {
    const double own = toScale(before.front()[0]);
    if (!proportional || own <= 0.0 || from <= 0.0) return from + by;
    return from * (own + by) / own;
}

void CStoredCtrl::moveCollected(double by) {
    const double low = toScale(least), high = toScale(most);
    for (const auto& numbers : before) {
        const double from = std::clamp(toScale(numbers[0]), low, high);
        const double rate = moved(from, 1.0) - from; // it moves along a line
        if (rate > 0.0) by = std::clamp(by, (low - from) / rate, (high - from) / rate);
    }
    for (size_t i = 0; i < taken.size(); i++) {
        StoredValue::Numbers to = before[i];
        to[0] = std::clamp(fromScale(moved(toScale(to[0]), by)), least, most);
        door->set(taken[i], to);
    }
    tell();
}

void CStoredCtrl::tell() {
    if (onSet) onSet();
    refresh();
    if (onTold) onTold(toldText);
}

void CStoredCtrl::dragBegin(const DragPoint&) {
    collect();
    door->begin();
}

void CStoredCtrl::dragMove(const DragPoint& point) {
    if (!door->dragging() || taken.empty()) return; // undone meanwhile
    const double share = along(point) / std::max(1.0, travel());
    moveCollected(share * span() * (point.btn & modShift ? fine : 1.0));
}

void CStoredCtrl::dragEnd(const DragPoint&) {
    door->end();
    redraw();
}

void CStoredCtrl::dragCancel() {
    door->cancel();
    refresh();
}

void CStoredCtrl::setAll(double to) {
    collect();
    door->begin();
    for (size_t i = 0; i < taken.size(); i++) {
        StoredValue::Numbers numbers = before[i];
        numbers[0] = std::clamp(to, least, most);
        door->set(taken[i], numbers);
    }
    door->end();
    tell();
}

void CStoredCtrl::moveAll(double by) {
    collect();
    if (taken.empty()) return;
    door->begin();
    moveCollected(by);
    door->end();
}

// Wheel and keys.

/// Turns of one value that follow each other are one step.
bool CStoredCtrl::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (CCtrl::mouseWheel(x, y, btn, dy, dx)) return true;
    if (!(btn & modControl) || nothing) return false;
    const double size = stepOf(wheelShare, btn), step = (dy ? dy : dx) > 0 ? size : -size;
    collect();
    if (taken.size() > 1) {
        moveAll(step);
        return true;
    }
    StoredValue::Numbers to = before.front();
    to[0] = std::clamp(fromScale(toScale(to[0]) + step), least, most);
    door->nudge(taken.front(), to);
    tell();
    return true;
}

bool CStoredCtrl::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (nothing) return false;
    return typed.keyDown(key, mods) || (!(mods & ~modShift) && stepKey(key, mods));
}

bool CStoredCtrl::stepKey(int key, int mods) {
    const double step = stepOf(keyShare, mods);
    if (key == keyPageUp || key == keyPageDown)
        moveAll(key == keyPageUp ? step : -step);
    else if (mods)
        return false;
    else if (key == keyHome || key == keyEnd)
        setAll(key == keyHome ? least : most);
    else if (key == keyDelete)
        setAll(usual);
    else
        return false;
    return true;
}

void CStoredCtrl::setFocus(bool on) {
    CCtrl::setFocus(on);
    if (!on) typed.finish();
}

void CStoredCtrl::describe(Description& d, int) const {
    d.role = Role::slider;
    d.text = toldText.asChar();
    d.range = Description::Range{shown, least, most, 0.0};
}

bool CStoredCtrl::enterNumber(int, double to) {
    if (nothing) return false;
    setAll(to);
    return true;
}
