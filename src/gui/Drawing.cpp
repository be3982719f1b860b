#include "gui/Drawing.h"

#include "gui/CGraphic.h"
#include "gui/CGui.h"
#include "gui/Colours.h"

#include <cmath>

namespace {

/// As wide or high as told even where lines are thicker.
void horzStrip(CGraphic* g, int color, int left, int y, int right) {
    g->fillRect(color, asRect(left, y, right, y + 1));
}

void vertStrip(CGraphic* g, int color, int x, int top, int bottom) {
    g->fillRect(color, asRect(x, top, x + 1, bottom));
}

} // namespace

void roundRect(CGraphic* g, int color, CRect r) {
    if (!r.empty()) g->fillRound(color, r);
}

void roundFrame(CGraphic* g, int color, CRect r) {
    if (!r.empty()) g->frameRound(color, r);
}

void drawGradient(CGraphic* g, CRect rect, int from, int to, int dir) {
    const DeviceScope scope(g);
    const CRect r = scope.deviceRect(rect);
    const bool across = dir == gradientAcross || dir == gradientAcrossTo;
    const bool back = dir == gradientDownUp || dir == gradientAcrossTo;
    const int lines = across ? r.width() : r.height();
    for (int i = 0; i < lines; i++) {
        const double at = lines > 1 ? double(i) / (lines - 1) : 0;
        const int color = fadeCol(from, to, back ? 1 - std::abs(2 * at - 1) : at);
        if (across)
            vertStrip(g, color, r.left + i, r.top, r.bottom);
        else
            horzStrip(g, color, r.left, r.top + i, r.right);
    }
}

void drawGlossy(CGraphic* g, CRect r, int color, float f, int margin) {
    constexpr double lowShare = 0.25;
    const int high = fadeCol(color, asColor(255, 255, 255), std::abs(double(f)));
    const int low = fadeCol(color, high, lowShare);
    const int middle = r.top + r.height() / 2;
    g->fillRect(color, r);
    if (f >= 0)
        drawGradient(g, asRect(r.left + margin, r.top + margin, r.right - margin, middle + 1), high,
                     low, gradientDown);
    else
        drawGradient(g, asRect(r.left + margin, middle, r.right - margin, r.bottom), low, high,
                     gradientDown);
}

void drawCheck(CGraphic* g, int color, CRect r) {
    constexpr int indent = 5, down = 3, up = 6;
    const int x = r.left + indent, y = r.top + r.height() / 2;
    g->setLineCol(color);
    for (int twice = 0; twice < 2; twice++) {
        g->drawLine(x, y + twice, x + down, y + down + twice);
        g->drawLine(x + down - 1, y + down - 1 + twice, x + down - 1 + up,
                    y + down - 1 - up + twice);
    }
}

void drawArrow(CGraphic* g, int color, CRect rect, int dir, int size) {
    const DeviceScope scope(g);
    const CRect r = scope.deviceRect(rect);
    const int last = scope.deviceLength(size + 1) - 1; // of the lines
    const int x = r.left + r.width() / 2, y = r.top + r.height() / 2, start = last / 2;
    for (int i = 0; i <= last; i++) {
        const int tipFirst = i, tipLast = last - i;
        switch (dir) {
        case dirLeft:
            vertStrip(g, color, x - start + i, y - tipFirst, y + tipFirst + 1);
            break;
        case dirRight:
            vertStrip(g, color, x - start + i, y - tipLast, y + tipLast + 1);
            break;
        case dirUp:
            horzStrip(g, color, x - tipFirst, y - start + i, x + tipFirst + 1);
            break;
        default:
            horzStrip(g, color, x - tipLast, y - start + i, x + tipLast + 1);
            break;
        }
    }
}

void drawCloseButton(CGraphic* g, CRect r, int color) {
    constexpr int arm = 4;
    const int x = r.left + r.width() / 2, y = r.top + r.height() / 2;
    g->setLineCol(color);
    for (int twice = 0; twice < 2; twice++) {
        g->drawLine(x - arm + twice, y - arm, x + arm + twice, y + arm);
        g->drawLine(x - arm + twice, y + arm - 1, x + arm + twice, y - arm - 1);
    }
}

void drawSeparator(CGraphic* g, int x1, int y, int x2) {
    constexpr int depth = 16;
    g->fillLine(addBrightness(clWinBkgnd.fillCol, -depth), asRect(x1, y, x2, y + 1));
    g->fillLine(addBrightness(clWinBkgnd.fillCol, depth), asRect(x1, y + 1, x2, y + 2));
}
