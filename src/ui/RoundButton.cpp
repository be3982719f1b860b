#include "ui/RoundButton.h"

#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/GuiItem.h"
#include "gui/Shapes.h"

#include <numbers>

namespace {

constexpr double corner = 3;

CPath roundedBox(CRect box, double radius) {
    constexpr double quarter = std::numbers::pi / 2;
    const double l = box.left, t = box.top, r = box.right, b = box.bottom;
    CPath path;
    path.moveTo(l, t + radius);
    path.arc(l + radius, t + radius, radius, 2 * quarter, 3 * quarter);
    path.arc(r - radius, t + radius, radius, 3 * quarter, 4 * quarter);
    path.arc(r - radius, b - radius, radius, 0, quarter);
    path.arc(l + radius, b - radius, radius, quarter, 2 * quarter);
    path.close();
    return path;
}

} // namespace

bool RoundButton::paintRound(CGraphic* g, CRect rect) {
    const CGuiItem2& look = present();
    if (look.fill != fillSolid) {
        CButton::paint(g, rect);
        return false;
    }
    const int frame = look.frame ? look.frameCol : fillColour();
    fillPath(g, roundedBox(rect, corner), frame);
    fillPath(g, roundedBox(sizeRect(rect, 1, 1, -1, -1), corner - 1), fillColour());
    return true;
}

void RoundButton::paint(CGraphic* g, CRect rect) {
    if (!paintRound(g, rect)) return;
    if (onPaint)
        CCtrl::paint(g, rect);
    else
        g->drawText(faceColour(), text, rect, 0);
    paintFocus(g, rect, fillColour());
}
