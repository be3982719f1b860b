// How a window is painted.
#include "gui/CWin.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/XConnection.h"

namespace {
constexpr int captionTextHeight = 20, captionTextLeft = 4;
}

void CWin::redraw() {
    if (visible) pending.add(clientRect());
}

void CWin::paintPending() {
    if (pending.empty()) return;
    if (!liveDisplay() || !visible || !mapped) return pending.forget();
    for (const PendingPaint::Move& m : pending.takeMoves())
        graphic->moveContent(m.area, m.dx, m.dy);
    const DirtyAreas changed = pending.takeAreas();
    paintAreas(changed.all());
}

void CWin::paint(int, CRect rect) {
    paintAreas({&rect, 1});
}

void CWin::paintAreas(std::span<const CRect> areas) {
    CRect around;
    for (const CRect& area : areas) around = unite(around, area);
    CGraphic* g = nullptr;
    if (!app->startDraw(this, &g, around, false)) return;
    g->setAreas(areas);
    paintBackground(g, around);
    paintControls(g, around, 0, 0);
    if (!onPaint && !hasStyle(winNoBorder) && !(hasStyle(winChild) && hasStyle(winMaximized))) {
        const CPoint size = getSize();
        drawGuiItem(g, asRect(0, 0, size.x, size.y), &clWinBkgnd, drawFrame);
    }
    g->setAreas({});
    for (const CRect& area : areas) app->endDraw(this, area, false);
}

void CWin::paintBackground(CGraphic* g, CRect rect) {
    if (onPaint) {
        (*onPaint)(this, g, rect);
        return;
    }
    const bool covered = hasStyle(winMain) && !clientGroup->controls.empty();
    if (!covered) {
        drawGuiItem(g, rect, &clWinBkgnd, drawBackground);
        return;
    }
    const int fill = clWinBkgnd.fillCol, border = borderSize;
    g->fillRect(fill, asRect(0, 0, width, 2 * border + captionTextHeight));
    g->fillRect(fill, asRect(0, 0, border, height));
    g->fillRect(fill, asRect(width - border, 0, width, height));
    g->fillRect(fill, asRect(0, height - border, width, height));
}

void CWin::drawCaption(CObject*, CGraphic* g, CRect rect) {
    const bool lit = takesKeys();
    if (lit) drawGuiItem(g, rect, &clCaption);
    int textLeft0 = captionTextLeft;
    if (onIconPaint) {
        (*onIconPaint)(this, g, asRect(0, 0, captionHeight, captionHeight));
        textLeft0 = captionHeight;
    }
    const CRect box = asRect(textLeft0, 0, rect.right, captionTextHeight);
    g->drawText(lit ? clCaption.textCol : clWinBkgnd.textCol, id, box, textLeft);
}
