#include "gui/controls/CIncDec.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"

namespace {
constexpr int glyph = 3, textMargin = 4;
constexpr double hoverShare = 0.15;
} // namespace

CIncDec::CIncDec(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CCtrl(owner, name, l, t, w, h) {
    hooverable = true;
}

void CIncDec::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    direction = x < width / 2 ? -1 : 1;
    redraw();
    if (onChange) (*onChange)(this);
}

void CIncDec::mouseUp(int x, int y, int btn) {
    CCtrl::mouseUp(x, y, btn);
    redraw();
}

void CIncDec::paint(CGraphic* g, CRect rect) {
    const int middle = rect.width() / 2;
    const CRect sides[] = {asRect(0, 0, middle, rect.bottom),
                           asRect(middle, 0, rect.right, rect.bottom)};
    for (int i = 0; i < 2; i++) {
        const bool pushed = isPushed() && direction == (i ? 1 : -1);
        drawGuiItem(g, sides[i], &clButton);
        if (pushed || isHovered())
            g->fillRect(fadeCol(clButton.fillCol, win->app->gui->palette.accent,
                                pushed ? 2 * hoverShare : hoverShare),
                        sizeRect(sides[i], 1, 1, -1, -1));
        drawArrow(g, clButton.symbolCol, sides[i], i ? dirUp : dirDown, glyph);
    }
}

CTextValue::CTextValue(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CGroup(owner, name, l, t, w, h), halves(new CIncDec(owner, "step", w - 2 * h, 0, 2 * h, h)) {
    tabStop = true;
    halves->setAlign(alignRight, 0, 0);
    halves->onChange = new _COnChange<CTextValue>(this, &CTextValue::stepped);
    addControl(halves);
}

void CTextValue::setIndex(int row) {
    index = asMinMax(row, 0, asMax(items.getCount() - 1, 0));
    redraw();
}

void CTextValue::step(int by) {
    const int before = index;
    setIndex(index + by);
    if (index != before && onChange) (*onChange)(this);
}

void CTextValue::stepped(CObject*) {
    step(halves->direction);
}

bool CTextValue::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (CGroup::mouseWheel(x, y, btn, dy, dx)) return true;
    if (!(btn & modControl)) return false;
    step((dy ? dy : dx) > 0 ? 1 : -1);
    return true;
}

bool CTextValue::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (mods) return false;
    if (key == ::keyUp || key == ::keyDown)
        step(key == ::keyUp ? 1 : -1);
    else if (key == keyHome || key == keyEnd)
        step(key == keyHome ? -index : items.getCount());
    else
        return false;
    return true;
}

void CTextValue::paint(CGraphic* g, CRect rect) {
    drawGuiItem(g, rect, &clValue);
    g->drawText(enabled ? clValue.textCol : win->app->gui->palette.dimText, items.get(index),
                sizeRect(rect, textMargin, 0, -halves->width, 0), 2);
    CGroup::paint(g, rect);
    if (hasKeyFocus()) g->frameRect(win->app->gui->palette.accent, rect);
}

void CTextValue::describe(Description& d, int) const {
    d.role = Role::number;
    d.text = items.get(index).asChar();
    d.range = Description::Range{double(index), 0.0, items.getCount() - 1.0, 1.0};
}

bool CTextValue::enterNumber(int, double to) {
    step(saturate(asRound64(to)) - index);
    return true;
}
