#include "gui/dialogs/CColourField.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int stripWidth = 20, stripGap = 8, markRadius = 4, cell = 4;
constexpr double keyStep = 0.02, sixths = 6.0;

/// Part of the way along a span of pixels, 0 to 1.
double share(int at, int from, int to) {
    return fLimit(double(at - from) / asMax(to - 1 - from, 1), 0.0, 1.0);
}

} // namespace

CHsv toHsv(int pixel) {
    int r, g, b;
    asRGB(pixel, &r, &g, &b);
    const int most = std::max({r, g, b}), span = most - std::min({r, g, b});
    CHsv hsv;
    hsv.value = most / 255.0;
    if (span == 0) return hsv;
    hsv.saturation = double(span) / most;
    double side = most == r ? double(g - b) / span
                            : (most == g ? 2 + double(b - r) / span : 4 + double(r - g) / span);
    if (side < 0) side += sixths;
    hsv.hue = side / sixths;
    return hsv;
}

int fromHsv(const CHsv& colour) {
    // Each channel falls off with the distance of the hue from its own, in sixths of the circle.
    const auto channel = [&](double own) {
        double away = std::fabs(colour.hue * sixths - own);
        away = std::min(away, sixths - away);
        const double lit = fLimit(2 - away, 0.0, 1.0);
        return asRound(255 * colour.value * (1 - colour.saturation * (1 - lit)));
    };
    return asColor(channel(0), channel(2), channel(4));
}

CColourField::CColourField(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CCtrl(owner, name, l, t, w, h) {
    tabStop = true;
}

CRect CColourField::square() const {
    return asRect(1, 1, width - stripWidth - stripGap - 1, height - 1);
}

CRect CColourField::strip() const {
    return asRect(width - stripWidth + 1, 1, width - 1, height - 1);
}

void CColourField::paint(CGraphic* g, CRect rect) {
    static_cast<void>(rect);
    const CPalette& colours = win->app->gui->palette;
    const CRect frame = sizeRect(square(), -1, -1, 1, 1);
    paintSquare(g);
    paintStrip(g);
    g->frameRect(hasKeyFocus() ? colours.accent : colours.frame, frame);
    g->frameRect(colours.frame, sizeRect(strip(), -1, -1, 1, 1));
}

void CColourField::paintSquare(CGraphic* g) const {
    const CRect area = square();
    for (int y = area.top; y < area.bottom; y += cell)
        for (int x = area.left; x < area.right; x += cell) {
            const CHsv at = {colour.hue, share(x + cell / 2, area.left, area.right),
                             1 - share(y + cell / 2, area.top, area.bottom)};
            g->fillRect(fromHsv(at),
                        asRect(x, y, asMin(x + cell, area.right), asMin(y + cell, area.bottom)));
        }
    const int x = area.left + asRound(colour.saturation * (area.width() - 1));
    const int y = area.top + asRound((1 - colour.value) * (area.height() - 1));
    const CRect mark =
        asRect(x - markRadius, y - markRadius, x + markRadius + 1, y + markRadius + 1);
    const ClipScope scope(g, area);
    const CRect inner = sizeRect(mark, -area.left, -area.top, -area.left, -area.top);
    g->frameRect(asColor(0, 0, 0), inner);
    g->frameRect(asColor(255, 255, 255), sizeRect(inner, 1, 1, -1, -1));
}

void CColourField::paintStrip(CGraphic* g) const {
    const CRect area = strip();
    for (int y = area.top; y < area.bottom; y++)
        g->fillRect(fromHsv({share(y, area.top, area.bottom), 1, 1}),
                    asRect(area.left, y, area.right, y + 1));
    const int y = area.top + asRound(colour.hue * (area.height() - 1));
    g->frameRect(asColor(0, 0, 0),
                 asRect(area.left, asMax(y - 2, area.top), area.right, asMin(y + 3, area.bottom)));
    g->fillLine(asColor(255, 255, 255), asRect(area.left + 1, y, area.right - 1, y + 1));
}

void CColourField::take(int x, int y) {
    const CRect area = onStrip ? strip() : square();
    if (onStrip) {
        colour.hue = share(y, area.top, area.bottom);
    } else {
        colour.saturation = share(x, area.left, area.right);
        colour.value = 1 - share(y, area.top, area.bottom);
    }
    redraw();
    if (onChange) (*onChange)(this);
}

void CColourField::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!(btn & modLeft)) return;
    win->setKeyCtrl(this);
    onStrip = x >= strip().left;
    take(x, y);
}

void CColourField::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    if (isPushed() && (btn & modLeft)) take(x, y);
}

bool CColourField::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (mods & ~modShift) return false;
    const int across = (key == keyRight) - (key == keyLeft);
    const int up = (key == ::keyUp) - (key == ::keyDown);
    if (!across && !up) return false;
    if (mods & modShift) {
        const double turned = colour.hue + keyStep * (across - up);
        colour.hue = turned - std::floor(turned);
    } else {
        colour.saturation = fLimit(colour.saturation + keyStep * across, 0.0, 1.0);
        colour.value = fLimit(colour.value + keyStep * up, 0.0, 1.0);
    }
    redraw();
    if (onChange) (*onChange)(this);
    return true;
}

void CColourField::describe(Description& d, int) const {
    d.role = Role::canvas;
    if (d.name.empty()) d.name = "Colour";
    constexpr int turn = 360, percent = 100;
    d.text = (CStr("hue ") + asStr(asRound(colour.hue * turn)) + ", saturation " +
              asStr(asRound(colour.saturation * percent)) + " %, value " +
              asStr(asRound(colour.value * percent)) + " %")
                 .asChar();
}
