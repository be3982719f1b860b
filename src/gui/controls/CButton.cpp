#include "gui/controls/CButton.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/ItemStates.h"
#include "gui/Keys.h"

namespace {

constexpr double hoverShare = 0.15, pushedShare = 0.5, disabledShare = 0.6;
constexpr int boxSize = 14, boxGap = 8;

struct ButtonItems {
    const CGuiItem2 *normal, *over;
};

ButtonItems windowItems(int kind) {
    switch (kind) {
    case CWindowButton::close:
        return {&clWinClose, &clWinCloseMouseOver};
    case CWindowButton::maximize:
        return {&clWinMax, &clWinMaxMouseOver};
    default:
        return {&clWinMin, &clWinMinMouseOver};
    }
}

const char* nameOf(int kind) {
    constexpr const char* names[] = {"", "winclose", "winmax", "winmin"};
    return names[kind];
}

void drawMaximize(CGraphic* g, CRect r, int color, bool restores) {
    const int x = r.width() / 2, y = r.height() / 2;
    const CRect box = asRect(x - 4, y - 4, x + 4, y + 4);
    if (!restores) {
        g->frameRect(color, box);
        g->fillRect(color, asRect(box.left, box.top, box.right, box.top + 2));
        return;
    }
    g->frameRect(color, asRect(box.left, box.top + 2, box.right - 2, box.bottom));
    g->fillRect(color, asRect(box.left + 2, box.top, box.right, box.top + 1));
    g->fillRect(color, asRect(box.right - 1, box.top, box.right, box.bottom - 2));
}

void drawMinimize(CGraphic* g, CRect r, int color) {
    const int x = r.width() / 2, y = r.height() / 2 + 2;
    g->fillRect(color, asRect(x - 4, y, x + 4, y + 2));
}

} // namespace

CButton::CButton(CWin* owner, const CStr& name, const CStr& caption, int l, int t, int w, int h)
    : CCtrl(owner, name, l, t, w, h), text(caption), skin(&clButton) {
    hooverable = true;
    tabStop = true;
}

const CGuiItem2& CButton::present() const {
    return lit && litSkin ? *litSkin : *skin;
}

int CButton::fillColour() const {
    const CPalette& colours = win->app->gui->palette;
    const bool tinted = lit && !litSkin;
    const int fill = tinted ? (litCol == -1 ? colours.accent : litCol) : present().fillCol;
    if (!enabled) return fadeCol(fill, colours.window, disabledShare);
    if (isPushed()) return fadeCol(fill, colours.frame, pushedShare);
    return isHovered() ? fadeCol(fill, lit ? colours.text : colours.accent, hoverShare) : fill;
}

int CButton::faceColour() const {
    const CPalette& colours = win->app->gui->palette;
    if (!enabled) return fadeCol(colours.dimText, colours.window, disabledShare);
    if (lit && !litSkin) return textOn(fillColour());
    const CGuiItem2& item = present();
    const bool asSymbol = (item.caps & capSymbol) && (onPaint || !(item.caps & capText));
    return asSymbol ? item.symbolCol : item.textCol;
}

void CButton::paintFace(CGraphic* g, CRect rect) const {
    const int fill = fillColour();
    drawGuiItemIn(g, rect, present(), fill);
    // An image shows by its edge what others show by their colour.
    if (present().fill == fillImage && enabled && (lit || isHovered() || isPushed()))
        drawGuiItemEdge(g, rect, present(), win->app->gui->palette.accent);
    paintFocus(g, rect, fill);
}

void CButton::paintFocus(CGraphic* g, CRect rect, int fill) const {
    if (!hasKeyFocus() || !enabled) return;
    if (lit)
        g->frameRect(textOn(fill), sizeRect(rect, 2, 2, -2, -2));
    else
        drawGuiItemEdge(g, rect, present(), win->app->gui->palette.accent);
}

void CButton::paint(CGraphic* g, CRect rect) {
    paintFace(g, rect);
    if (onPaint)
        CCtrl::paint(g, rect);
    else
        g->drawText(faceColour(), text, rect, 0);
}

void CButton::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    redraw();
}

void CButton::mouseUp(int x, int y, int btn) {
    redraw();
    CCtrl::mouseUp(x, y, btn);
    if ((btn & modLeft) && inside(x, y)) click();
}

bool CButton::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (mods || !enabled || (key != keyReturn && key != ' ')) return false;
    click();
    return true;
}

void CButton::click() {
    if (onChange) {
        (*onChange)(this);
        return;
    }
    _changed(this, nullptr);
    notify(id, this);
}

void CButton::setText(const CStr& newText) {
    if (text == newText) return;
    text = newText;
    redraw();
}

void CButton::setLit(bool on) {
    if (lit == on) return;
    lit = on;
    redraw();
}

void CButton::setEnabled(bool on) {
    if (enabled == on) return;
    enabled = on;
    redraw();
}

void CCheckbox::paint(CGraphic* g, CRect rect) {
    const int boxTop = (rect.height() - boxSize) / 2;
    const CRect box = asRect(0, boxTop, boxSize, boxTop + boxSize);
    const CPalette& colours = win->app->gui->palette;
    const int fill = checked && enabled ? colours.accent : fillColour();
    drawGuiItemIn(g, box, *skin, fill);
    if (hasKeyFocus()) drawGuiItemEdge(g, box, *skin, colours.accent);
    if (checked) drawCheck(g, enabled ? textOn(fill) : faceColour(), sizeRect(box, -3, 0, 0, 0));
    g->drawText(faceColour(), text, asRect(boxSize + boxGap, 0, rect.right, rect.bottom), textLeft);
}

void CCheckbox::click() {
    checked = !checked;
    redraw();
    if (onChange) (*onChange)(this);
}

void CCheckbox::setChecked(bool on) {
    if (checked == on) return;
    checked = on;
    redraw();
}

CWindowButton::CWindowButton(CWin* owner, int buttonKind, int l, int t, int w, int h)
    : CButton(owner, nameOf(buttonKind), "", l, t, w, h), kind(buttonKind), targetWin(owner) {
    tabStop = false;
}

void CWindowButton::paint(CGraphic* g, CRect rect) {
    const ButtonItems items = windowItems(kind);
    const CGuiItem2* item = isHovered() || isPushed() ? items.over : items.normal;
    drawGuiItem(g, rect, item);
    if (kind == close)
        drawCloseButton(g, rect, item->symbolCol);
    else if (kind == maximize)
        drawMaximize(g, rect, item->symbolCol, targetWin->hasStyle(winMaximized));
    else
        drawMinimize(g, rect, item->symbolCol);
}

void CWindowButton::click() {
    if (kind == close)
        targetWin->hide();
    else if (kind == maximize)
        targetWin->toggleMaximized();
    else
        targetWin->minimize();
}

void CButton::describe(Description& d, int) const {
    d.role = lit ? Role::toggle : Role::button;
    if (d.name.empty()) d.name = text.asChar();
    d.action = "press";
    d.set(statePressed, lit);
}

bool CButton::pressPart(int) {
    click();
    return true;
}

void CCheckbox::describe(Description& d, int part) const {
    CButton::describe(d, part);
    d.role = Role::checkBox;
    d.action = checked ? "uncheck" : "check";
    d.set(stateChecked, checked);
}

void CWindowButton::describe(Description& d, int part) const {
    CButton::describe(d, part);
    d.name = kind == close ? "Close" : kind == maximize ? "Maximize" : "Minimize";
}
