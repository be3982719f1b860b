#include "gui/controls/CTabs.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CGui.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"
#include "gui/XConnection.h"

CLabel::CLabel(CWin* owner, const CStr& label, int l, int t, int w, int h)
    : CCtrl(owner, label, l, t, w, h), text(label) {
    enabled = false;
}

void CLabel::paint(CGraphic* g, CRect rect) {
    CCtrl::paint(g, rect);
    int color = textCol == -1 ? clWinBkgnd.textCol : textCol;
    if (field && !field->enabled) color = fadeCol(clWinBkgnd.symbolCol, clWinBkgnd.fillCol, 0.4);
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

CTabs::CTabs(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CCtrl(owner, name, l, t, w, h) {
    hooverable = true;
    tabStop = true;
}

CTabs::~CTabs() {
    delete onRightClick;
}

int CTabs::tabAt(int x) const {
    const int tab = x < 0 ? -1 : tabWidth < 1 ? 0 : x / tabWidth;
    return tab < items.getCount() ? tab : -1;
}

void CTabs::setIndex(int tab) {
    tab = asMinMax(tab, 0, asMax(items.getCount() - 1, 0));
    if (tab == index) return;
    index = tab;
    redraw();
    if (onChange) (*onChange)(this);
}

void CTabs::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    const int over = inside(x, y) ? tabAt(x) : -1;
    if (over == hoverIndex) return;
    hoverIndex = over;
    redraw();
}

void CTabs::mouseOver(bool enter, int x, int y) {
    CCtrl::mouseOver(enter, x, y);
    if (!enter) hoverIndex = -1;
}

void CTabs::mouseUp(int x, int y, int btn) {
    CCtrl::mouseUp(x, y, btn);
    if (inside(x, y) && tabAt(x) >= 0) setIndex(tabAt(x));
    if ((btn & modRight) && onRightClick) (*onRightClick)(this);
}

bool CTabs::contextMenu() {
    if (onRightClick) (*onRightClick)(this);
    return onRightClick;
}

bool CTabs::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (mods) return false;
    if (key == keyLeft || key == keyRight)
        setIndex(index + (key == keyLeft ? -1 : 1));
    else if (key == keyHome || key == keyEnd)
        setIndex(key == keyHome ? 0 : items.getCount() - 1);
    else
        return false;
    return true;
}

void CTabs::paint(CGraphic* g, CRect rect) {
    g->fillLine(clTabs.frameCol, asRect(0, rect.bottom - 1, rect.right, rect.bottom));
    for (int i = 0; i < items.getCount(); i++) {
        const bool chosen = i == index;
        const CGuiItem2& look = chosen || i == hoverIndex ? clTabsSelected : clTabs;
        const CRect tab = asRect(i * tabWidth, chosen ? 0 : 2, (i + 1) * tabWidth, rect.bottom);
        drawGuiItem(g, tab, &look);
        if (chosen)
            g->fillRect(look.fillCol,
                        asRect(tab.left + 1, tab.bottom - 1, tab.right - 1, tab.bottom));
        if (chosen && hasKeyFocus())
            g->fillRect(win->app->gui->palette.accent, asRect(tab.left, 0, tab.right, 2));
        g->drawText(look.textCol, items.get(i), tab, 0);
    }
}

/// One that names a field is heard with it.
void CLabel::describe(Description& d, int) const {
    d.role = field || text.empty() ? Role::none : Role::label;
    d.name = text.asChar();
}

void CToolbar::describe(Description& d, int) const {
    d.role = Role::toolBar;
    if (d.name.empty()) d.name = id.asChar();
}

int CTabs::accessParts() const {
    return items.getCount();
}

int CTabs::focusedPart() const {
    return index < items.getCount() ? index : wholeCtrl;
}

void CTabs::describe(Description& d, int part) const {
    d.role = part == wholeCtrl ? Role::tabs : Role::tab;
    if (part == wholeCtrl) return;
    d.name = items.get(part).asChar();
    d.action = "switch";
    d.set(stateSelectable, true);
    d.set(stateSelected, part == index);
    d.bounds = asRect(part * tabWidth, 0, (part + 1) * tabWidth, height);
}

bool CTabs::pressPart(int part) {
    if (part == wholeCtrl) return false;
    setIndex(part);
    return true;
}
