#include "shell/CMonitorVolume.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "ui/LevelText.h"

namespace {

constexpr int wheelStep = 2, keyStep = 5, pageStep = 20;
constexpr int typedRoom = 3;
constexpr int thumbWidth = 3;
constexpr int nameWidth = 54, gainWidth = 48, leastTrack = 60; ///< with both and the bar

} // namespace

CMonitorVolume::CMonitorVolume(CWin* owner, int l, int t, int w, int h, CQV* host)
    : CCtrl(owner, "monitor", l, t, w, h), qv(host), typed(this, "0123456789", typedRoom) {
    typed.onTyped = [this](const CStr& text) { setPercent(strAsIntDef(text, getPercent())); };
    hint = "Monitor volume in percent: drag, turn the wheel, or type";
    tabStop = true;
}

int CMonitorVolume::getPercent() const {
    return asRound(double(qv->listenVolume) * full);
}

void CMonitorVolume::setPercent(int percent) {
    qv->listenVolume = float(asMinMax(percent, 0, full)) / float(full);
    refresh();
}

void CMonitorVolume::refresh() {
    if (getPercent() == shownPercent) return;
    shownPercent = getPercent();
    redraw();
}

void CMonitorVolume::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.panel, clientRect());
    const CRect bar = track();
    const int x = bar.left + shownPercent * (bar.width() - thumbWidth) / full;
    g->fillRect(colours.frame, bar);
    g->fillRect(colours.accent, asRect(bar.left, bar.top, x, bar.bottom));
    g->fillRect(colours.text, asRect(x, 0, x + thumbWidth, height));
    if (bar.left > 0) {
        const TextScope small(g, {.size = TextSize::small});
        g->drawText(colours.dimText, "MONITOR", asRect(0, 0, bar.left, height), textLeft);
        g->drawText(colours.dimText, gainText(), asRect(bar.right, 0, width, height), textRight);
    }
    if (typed.typing()) {
        g->fillRect(colours.window, clientRect());
        g->drawText(colours.text, typed.shown(), clientRect(), 0);
    }
    if (hasKeyFocus()) g->frameRect(colours.accent, clientRect());
}

CRect CMonitorVolume::track() const {
    const bool told = width >= nameWidth + gainWidth + leastTrack;
    return asRect(told ? nameWidth : 0, height / 2 - 2, told ? width - gainWidth : width,
                  height / 2 + 2);
}

CStr CMonitorVolume::gainText() const {
    const float share = float(shownPercent) / full;
    return decibelText(share * share);
}

void CMonitorVolume::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (btn & modDouble)
        setPercent(full);
    else
        mouseMove(x, y, btn);
}

void CMonitorVolume::mouseMove(int x, int, int btn) {
    if ((btn & modLeft) && !(btn & modDouble) && isPushed())
        setPercent((x - track().left) * full / asMax(1, track().width() - thumbWidth));
}

bool CMonitorVolume::mouseWheel(int, int, int, int dy, int) {
    setPercent(getPercent() + (dy > 0 ? wheelStep : -wheelStep));
    return true;
}

bool CMonitorVolume::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    return typed.keyDown(key, mods) || (!mods && stepKey(key));
}

bool CMonitorVolume::stepKey(int key) {
    const int by =
        keyStep * ((key == keyRight || key == ::keyUp) - (key == keyLeft || key == ::keyDown)) +
        pageStep * ((key == keyPageUp) - (key == keyPageDown));
    const bool fullUp = key == keyEnd || key == keyDelete;
    if (!by && !fullUp && key != keyHome) return false;
    typed.finish();
    setPercent(by ? getPercent() + by : fullUp ? full : 0);
    return true;
}

void CMonitorVolume::setFocus(bool on) {
    CCtrl::setFocus(on);
    if (!on) typed.finish();
}

void CMonitorVolume::describe(Description& d, int) const {
    d.role = Role::slider;
    d.name = "Monitor volume";
    d.text = (asStr(getPercent()) + " %").asChar();
    d.range = Description::Range{double(getPercent()), 0.0, double(full), 1.0};
}

bool CMonitorVolume::enterNumber(int, double to) {
    setPercent(asRound(to));
    return true;
}
