#include "shell/CActivityLight.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Shapes.h"

#include <numbers>

namespace {

constexpr int lightTop = 4, lightHeight = 48;
constexpr double lampMiddle = 32.0, lampRadius = 5.0;
constexpr int titleHeight = 16, full = 100;

} // namespace

CActivityLight::CActivityLight(CWin* owner, int l, CQV* host)
    : CCtrl(owner, "midi", l, lightTop, lightWidth, lightHeight), qv(host) {
    hint = "MIDI controller mapping";
}

void CActivityLight::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.window, clientRect());
    g->frameRect(colours.frame, clientRect());
    g->drawText(colours.dimText, "MIDI", asRect(0, 3, width, titleHeight), 0);
    CPath lamp;
    lamp.arc(width / 2.0, lampMiddle, lampRadius, 0, 2 * std::numbers::pi);
    fillPath(g, lamp, fadeCol(colours.frame, colours.meter[0], brightness / double(full)));
}

void CActivityLight::refresh() {
    const int now = asRound(double(qv->midiActivity) * full);
    if (now == brightness) return;
    brightness = now;
    redraw();
}

void CActivityLight::describe(Description& d, int) const {
    d.role = Role::meter;
    d.name = "MIDI activity";
    d.range = Description::Range{double(brightness), 0.0, 100.0, 1.0};
}
