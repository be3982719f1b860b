#include "mixer/CEqView.h"

#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"

#include <cmath>

static_assert(StripSpectrum::lowest == EqCurve::leastSpectrum);

CEqView::CEqView(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CCtrl(owner, name, l, t, w, h), curve(this) {
    tabStop = true;
    hint = "Drag a band; with the right button its width";
    curve.CalcCurve();
}

void CEqView::setStrip(COutputChannel* shown) {
    drag(false);
    strip = shown;
    spectrum.setStrip(strip);
    curve.spectrum = strip ? &spectrum.levels() : nullptr;
    for (int i = 0; i < EqCurve::numHandles; i++) {
        curve.handles[i]->strip = strip;
        curve.handles[i]->band = i;
    }
    curve.Invalidate();
}

void CEqView::drag(bool on) {
    if (strip && on && !dragging) strip->comp->host->values->begin();
    if (strip && !on && dragging) strip->comp->host->values->end();
    dragging = on;
}

void CEqView::setRate(double hz) {
    curve.SetSamplerate(hz);
    curve.Invalidate();
}

void CEqView::followSound() {
    if (spectrum.follow(curve.freqs, curve.rate)) redraw();
}

void CEqView::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    curve.Paint(g, clientRect());
    if (current >= 0) g->frameRect(colours.text, curve.handleRect(current));
    g->frameRect(hasKeyFocus() ? colours.accent : colours.frame, clientRect());
}

void CEqView::mouseDown(int x, int y, int btn) {
    if (!(btn & (modLeft | modRight))) return;
    win->setKeyCtrl(this);
    current = curve.handleAt(x, y);
    drag(current >= 0);
    widens = (btn & modRight) != 0;
    if (dragging) {
        const CRect square = curve.handleRect(current);
        constexpr int half = EqCurve::handleSize / 2;
        grab = asPoint(x - square.left - half, y - square.top - half);
    }
    redraw();
}

void CEqView::mouseMove(int x, int y, int btn) {
    if (!dragging || (strip && !strip->comp->host->values->dragging()) || !isPushed() ||
        !(btn & (modLeft | modRight)))
        return;
    EqHandle& handle = *curve.handles[current];
    if (widens) {
        handle.SetQ(curve.ScreenToQ(y));
    } else {
        handle.SetFreq(curve.ScreenToFreq(x - grab.x));
        handle.SetGain(curve.ScreenToGain(y - grab.y));
    }
    changed();
}

void CEqView::mouseUp(int, int, int) {
    drag(false);
}

bool CEqView::keyDown(int key, int mods) {
    constexpr double gainStep = 0.5, widthStep = 1.1;
    if (mods) return false;
    if (key >= '1' && key < '1' + EqCurve::numHandles) {
        current = key - '1';
        redraw();
        return true;
    }
    if (current < 0) return false;
    EqHandle& handle = *curve.handles[current];
    const double column = std::pow(10.0, curve.scale);
    switch (key) {
    case keyLeft:
    case keyRight:
        handle.SetFreq(key == keyLeft ? handle.GetFreq() / column : handle.GetFreq() * column);
        break;
    case ::keyUp:
    case ::keyDown:
        handle.SetGain(handle.GetGain() + (key == ::keyUp ? gainStep : -gainStep));
        break;
    case keyPageUp:
        handle.SetQ(handle.GetQ() * widthStep);
        break;
    case keyPageDown:
        handle.SetQ(handle.GetQ() / widthStep);
        break;
    default:
        return false;
    }
    changed();
    return true;
}

void CEqView::setFocus(bool) {
    redraw();
}

void CEqView::changed() {
    curve.Invalidate();
    if (onChange) (*onChange)(this);
}
