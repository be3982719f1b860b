#include "mixer/EqSection.h"

#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/Shapes.h"
#include "mixer/CMixerStrip.h"

#include <algorithm>

EqSection::EqSection(CMixerStrip& strip)
    : CCtrl(strip.win, "eq", 0, 0, 1, 1), owner(strip), curve(nullptr) {
    tabStop = true;
    hooverable = true;
    hint = "Press to open the equaliser; the right button switches it";
}

bool EqSection::refresh() {
    COutputChannel* ch = owner.strip().channel;
    std::array<Band, EqCurve::numHandles> now;
    for (size_t i = 0; i < now.size(); i++) {
        const CEQ* band = ch->eq[i];
        now[i] = {band->gain, band->frequency, band->q, band->filterType, band->active == 1};
    }
    if (now == shown && curveWidth == width && curveHeight == height) return false;
    shown = now;
    curveWidth = width;
    curveHeight = height;
    for (int i = 0; i < EqCurve::numHandles; i++) {
        curve.handles[i]->strip = ch;
        curve.handles[i]->band = i;
    }
    curve.SetSamplerate(ch->comp->host->rate);
    curve.SetNewWidth(width);
    curve.SetNewHeight(height);
    curve.CalcCurve();
    redraw();
    return true;
}

void EqSection::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const bool on = std::ranges::any_of(shown, &Band::on);
    g->fillRound(colours.window, rect);
    const int middle = rect.bottom / 2, columns = std::min(rect.right, curve.width);
    g->fillLine(colours.frame, asRect(0, middle, rect.right, middle + 1));
    const auto yOf = [&](int x) {
        return std::clamp(double(curve.GainToScreen(curve.curve[size_t(x)])), 1.0,
                          rect.bottom - 1.0);
    };
    CPath line, area;
    area.moveTo(0, middle);
    for (int x = 0; x < columns; x++) {
        x ? line.lineTo(x + 0.5, yOf(x)) : line.moveTo(0.5, yOf(0));
        area.lineTo(x + 0.5, yOf(x));
    }
    area.lineTo(columns, middle);
    area.close();
    const int colour = on ? colours.accent : colours.dimText;
    if (on) fillPath(g, area, colour, 0.25);
    strokePath(g, line, 1.5, colour);
    g->frameRound(hasKeyFocus() || isHovered() ? colours.accent : colours.frame, rect);
}

void EqSection::toggleAll() {
    COutputChannel* ch = owner.strip().channel;
    const bool on = std::ranges::any_of(shown, &Band::on);
    owner.door()->begin("Equaliser");
    for (int i = 0; i < EqCurve::numHandles; i++)
        owner.door()->set(eqPowerOf(ch, i), on ? 0.0 : 1.0);
    owner.door()->end();
    refresh();
}

void EqSection::mouseUp(int x, int y, int btn) {
    if (!inside(x, y)) return;
    if (btn & modRight)
        toggleAll();
    else if (btn & modLeft)
        owner.openEq();
}

bool EqSection::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (key != keyReturn || (mods & ~modControl)) return false;
    if (mods)
        toggleAll();
    else
        owner.openEq();
    return true;
}

void EqSection::describe(Description& d, int) const {
    d.role = Role::button;
    d.action = "open";
    d.text = std::ranges::any_of(shown, &Band::on) ? "on" : "off";
}

bool EqSection::pressPart(int) {
    owner.openEq();
    return true;
}
