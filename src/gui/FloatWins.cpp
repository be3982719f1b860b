#include "gui/FloatWins.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/XConnection.h"

namespace {
constexpr int floatingBare = winFloating | winNoBorder;
constexpr int textMargin = 8, dragWidth = 128, dragHeight = 22, hintWidth = 100, hintHeight = 32;
constexpr int hintBelow = 24;
} // namespace

CTextFloat::CTextFloat(CApp* application, CWin* owner, int w, int h, int bits)
    : CWin(application, owner, "", 0, 0, w, h, bits) {
    auto* face = new CCtrl(this, "text", 0, 0, w, h);
    face->setAlign(alignWidth | alignHeight, 0, 0);
    face->onPaint = new _COnPaint<CTextFloat>(this, &CTextFloat::paintText);
    addControl(face);
}

void CTextFloat::setText(const CStr& newText) {
    text = newText;
    fitted = false;
    redraw();
}

void CTextFloat::show(bool activate) {
    fitted = false;
    CWin::show(activate);
}

void CTextFloat::paintText(CObject*, CGraphic* g, CRect rect) {
    if (!fitted) {
        fitted = true;
        setSize(g->textWidth(text) + 2 * textMargin, wantedHeight());
    }
    drawText(g, rect);
}

CDragWin::CDragWin(CApp* application, CWin* owner)
    : CTextFloat(application, owner, dragWidth, dragHeight, floatingBare) {
}

int CDragWin::wantedHeight() const {
    return toolbarHeight;
}

void CDragWin::drawText(CGraphic* g, CRect rect) {
    drawGuiItem(g, rect, &clTreeSelected);
    g->drawText(clTreeSelected.textCol, getText(), rect, 0);
}

CHintWin::CHintWin(CApp* application, CWin* owner)
    : CTextFloat(application, owner, hintWidth, hintHeight,
                 winFloating | winMain | winNoBorder | winEscape) {
}

int CHintWin::wantedHeight() const {
    return hintHeight;
}

void CHintWin::onTimer() {
    if (getText().empty()) {
        hide();
        return;
    }
    const CPoint at = mousePos();
    setPos(at.x, at.y + hintBelow);
    show(false);
}

void CHintWin::drawText(CGraphic* g, CRect rect) {
    roundRect(g, asColor(255, 255, 255), rect);
    roundFrame(g, asColor(0, 0, 0), rect);
    g->drawText(asColor(0, 0, 0), getText(), sizeRect(rect, textMargin, 0, 0, 0), textLeft);
}
