#include "gui/dialogs/CSwatches.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"

#include <cmath>
#include <numbers>

namespace {

/// A channel of linear light, 0 to 1, as it is sent to the screen.
int encoded(double linear) {
    const double light = fLimit(linear, 0.0, 1.0);
    const double sent =
        light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
    return asRound(255 * sent);
}

/// The pixel of an Oklab colour. Formulas: B. Ottosson, "A perceptual color space for image
/// processing", 2020.
int fromOklab(double lightness, double a, double b) {
    const double l = std::pow(lightness + 0.3963377774 * a + 0.2158037573 * b, 3);
    const double m = std::pow(lightness - 0.1055613458 * a - 0.0638541728 * b, 3);
    const double s = std::pow(lightness - 0.0894841775 * a - 1.2914855480 * b, 3);
    return asColor(encoded(4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s),
                   encoded(-1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s),
                   encoded(-0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s));
}

} // namespace

int paletteColour(int index) {
    constexpr double lightness = 0.7, chroma = 0.115; // all sixteen can be shown
    const unsigned step = unsigned(index) % CSwatches::count;
    const double hue = 2 * std::numbers::pi * step / CSwatches::count;
    return fromOklab(lightness, chroma * std::cos(hue), chroma * std::sin(hue));
}

CSwatches::CSwatches(CWin* owner, const CStr& name, int l, int t)
    : CCtrl(owner, name, l, t, fullWidth, fullHeight) {
    tabStop = true;
}

CRect CSwatches::cell(int i) {
    const int x = i % inRow * cellStep, y = i / inRow * cellStep;
    return asRect(x, y, x + cellSize, y + cellSize);
}

void CSwatches::paint(CGraphic* g, CRect rect) {
    CCtrl::paint(g, rect);
    const CPalette& colours = win->app->gui->palette;
    for (int i = 0; i < count; i++) {
        const CRect at = cell(i);
        g->fillRect(paletteColour(i), at);
        g->frameRect(colours.frame, at);
        if (i != index) continue;
        g->frameRect(hasKeyFocus() ? colours.accent : colours.text, at);
        g->frameRect(colours.window, sizeRect(at, 1, 1, -1, -1));
    }
    if (hasKeyFocus() && index < 0) g->frameRect(colours.accent, cell(0));
}

void CSwatches::choose(int i) {
    index = i;
    redraw();
    if (onChange) (*onChange)(this);
}

void CSwatches::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!(btn & modLeft)) return;
    win->setKeyCtrl(this);
    for (int i = 0; i < count; i++)
        if (cell(i).contains(x, y)) choose(i);
}

bool CSwatches::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    const int by =
        (key == keyRight) - (key == keyLeft) + inRow * ((key == ::keyDown) - (key == ::keyUp));
    if (mods || !by) return false;
    if (index < 0)
        choose(0);
    else if (index + by >= 0 && index + by < count)
        choose(index + by);
    return true;
}

int CSwatches::accessParts() const {
    return count;
}

int CSwatches::focusedPart() const {
    return index;
}

void CSwatches::describe(Description& d, int part) const {
    d.role = part == wholeCtrl ? Role::list : Role::listRow;
    d.name = part == wholeCtrl ? "Palette" : (CStr("Colour ") + asStr(part + 1)).asChar();
    if (part == wholeCtrl) return;
    d.action = "choose";
    d.bounds = cell(part);
    d.set(stateSelectable, true);
    d.set(stateSelected, part == index);
}

bool CSwatches::pressPart(int part) {
    if (part == wholeCtrl) return false;
    choose(part);
    return true;
}
