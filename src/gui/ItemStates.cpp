#include "gui/ItemStates.h"

#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"

void drawGuiItemIn(CGraphic* g, CRect rect, const CGuiItem2& item, int color, int flags) {
    constexpr double half = 0.5;
    if (item.fill == fillImage || color == item.fillCol) return drawGuiItem(g, rect, &item, flags);
    CGuiItem2 changed;
    static_cast<CGuiLook&>(changed) = item;
    if (changed.fill == fillNone) changed.fill = fillSolid;
    changed.fillCol = color;
    changed.fillCol2 = fadeCol(item.fillCol2, color, half);
    drawGuiItem(g, rect, &changed, flags);
}

void drawGuiItemEdge(CGraphic* g, CRect rect, const CGuiItem2& item, int color) {
    if (item.shape == 1)
        roundFrame(g, color, rect);
    else
        g->frameRect(color, rect);
}
