#include "mixer/LoudnessLabel.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "mixer/CMixerStrip.h"

namespace {

CStr figure(double level) {
    return level <= Loudness::silent ? CStr("-inf") : asStrFormat(level, "%.1f");
}

} // namespace

LoudnessLabel::LoudnessLabel(CMixerStrip& strip, Kind what)
    : CCtrl(strip.win, what == integrated ? "loudness" : "truepeak", 0, 0, 1, 1), owner(strip),
      kind(what) {
    tabStop = true;
    hooverable = true;
}

bool LoudnessLabel::show(const Loudness::Levels& now) {
    over = now.truePeak > 0.0;
    const CStr text = figure(kind == integrated ? now.integrated : now.truePeak);
    hint = "Loudness after EBU R 128: " + figure(now.integrated) + " LUFS, short-term " +
           figure(now.shortTerm) + ", momentary " + figure(now.momentary) + ", range " +
           asStrFormat(now.range, "%.1f") + " LU, true peak " + figure(now.truePeak) +
           " dB. A press begins anew";
    if (text == shown) return false;
    shown = text;
    redraw();
    return true;
}

/// With its unit, which narrow strips have no room for.
CStr LoudnessLabel::told() const {
    return shown + (kind == integrated ? " LUFS" : " dBTP");
}

void LoudnessLabel::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const TextScope small(g, {.size = TextSize::small});
    const bool red = over && kind == truePeak;
    const int ground = red ? colours.meter[2] : colours.window;
    g->fillRound(ground, rect);
    const CStr full = told();
    const bool fits = textFace({.size = TextSize::small})->textWidth(full) < rect.width() - 2;
    g->drawText(red ? textOn(ground) : colours.text, fits ? full : shown, rect, 0);
    if (hasKeyFocus() || isHovered())
        g->frameRound(colours.accent, rect);
    else
        g->frameRound(colours.frame, rect);
}

void LoudnessLabel::mouseUp(int x, int y, int btn) {
    if ((btn & modLeft) && inside(x, y)) owner.resetLoudness();
}

bool LoudnessLabel::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (mods || (key != keyReturn && key != keyDelete)) return false;
    owner.resetLoudness();
    return true;
}

void LoudnessLabel::describe(Description& d, int) const {
    d.role = Role::button;
    d.action = "reset";
    d.text = told().asChar();
}

bool LoudnessLabel::pressPart(int) {
    owner.resetLoudness();
    return true;
}
