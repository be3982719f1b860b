#include "gui/controls/CToolbarButton.h"

#include "gui/CApp.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"

const CGuiItem2* CToolbarButton::look() const {
    if (enabled && (lit || isPushed())) return &clSpeedButtonPushed;
    return enabled && isHovered() ? &clSpeedButtonMouseOver : &clSpeedButton;
}

int CToolbarButton::symbolColour() const {
    constexpr double disabledShare = 0.6;
    const CPalette& colours = win->app->gui->palette;
    if (!enabled) return fadeCol(colours.dimText, colours.window, disabledShare);
    return look()->textCol;
}

void CToolbarButton::paint(CGraphic* g, CRect rect) {
    drawGuiItem(g, rect, look());
    paintFocus(g, rect, look()->fillCol);
    paintContent(g, rect);
}

void CToolbarButton::paintContent(CGraphic* g, CRect rect) {
    if (onPaint)
        CCtrl::paint(g, rect);
    else
        g->drawText(symbolColour(), text, rect, 0);
}

void CImageButton::paintContent(CGraphic* g, CRect rect) {
    const CBitmap* shown = litImage && (lit || isPushed()) ? litImage : image;
    if (!shown) {
        CToolbarButton::paintContent(g, rect);
        return;
    }
    g->render(shown, (rect.width() - shown->width) / 2, (rect.height() - shown->height) / 2, 0, 0,
              shown->width, shown->height);
}
