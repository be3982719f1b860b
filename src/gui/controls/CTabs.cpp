#include "gui/controls/CTabs.h"

#include "gui/CGraphic.h"
#include "gui/CGui.h"
#include "gui/CWin.h"
#include "gui/Drawing.h"
#include "gui/XConnection.h"

CLabel::CLabel(CWin* owner, const CStr& label, int l, int t, int w, int h)
    : CCtrl(owner, label, l, t, w, h), text(label) {
    enabled = false;
}

void CLabel::paint(CGraphic* g, CRect rect) {
    CCtrl::paint(g, rect);
    const int color = textCol == -1 ? clWinBkgnd.textCol : textCol;
    if (text.pos("\n") < 0) {
        g->drawText(color, text, rect, textFlags);
        return;
    }
    const int lineHeight = g->font->ascent + g->font->descent + 3;
    CStr rest = text;
    for (int y = 0; !rest.empty(); y += lineHeight) {
        const int end = rest.pos("\n");
        g->drawText(color, rest.sub(0, end), asRect(0, y, rect.right, y + lineHeight),
                    textFlags & (textLeft | textRight));
        rest = end < 0 ? CStr() : rest.sub(end + 1, -1);
    }
}

void CLabel::setText(const CStr& newText) {
    if (text == newText) return;
    text = newText;
    redraw();
}

void CPanel::paint(CGraphic* g, CRect rect) {
    drawGuiItem(g, rect, &clPanel);
    CGroup::paint(g, rect);
}

CToolbar::CToolbar(CWin* owner, const CStr& name)
    : CGroup(owner, name, 0, 0, owner->width, toolbarHeight) {
}

void CToolbar::paint(CGraphic* g, CRect rect) {
    drawGuiItem(g, rect, &clToolbar);
    CGroup::paint(g, rect);
}

void CSeparator::paint(CGraphic* g, CRect rect) {
    drawSeparator(g, 0, rect.height() / 2, rect.right);
}
