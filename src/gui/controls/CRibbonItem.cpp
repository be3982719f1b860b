#include "gui/controls/CRibbonItem.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"
#include "gui/controls/CPopup.h"
#include "gui/controls/CRibbons.h"

namespace {
constexpr int textMargin = 10, arrowRoom = 14, arrowSize = 3;
constexpr int separatorWidth = 9, moreWidth = 24;
constexpr double disabledShare = 0.4; // how much a text fades into the strip
} // namespace

CRibbonItem::CRibbonItem(CRibbons* owner, Kind itemKind, const CStr& label, CWin* served)
    : CCtrl(owner->win, itemKind == more ? CStr("more") : label, 0, 0, 0, 0), text(label),
      kind(itemKind), target(served), ribbon(owner) {
    hooverable = kind != separator;
    hint = kind == more ? CStr("All commands of this tab") : kind == tab ? CStr() : text;
    if (kind == tab) menu = std::make_unique<CPopup>(owner->win->app, owner->win);
}

CRibbonItem::~CRibbonItem() = default;

int CRibbonItem::neededWidth() const {
    if (kind == separator) return separatorWidth;
    if (kind == more) return moreWidth;
    const int wide = win->graphic->textWidth(text) + 2 * textMargin;
    return kind == subMenu ? wide + arrowRoom : wide;
}

void CRibbonItem::build() {
    if (!onChange) return;
    menu->clearItems();
    menu->tag = tag;
    (*onChange)(menu.get());
}

void CRibbonItem::setState(bool isEnabled, bool isChecked) {
    if (enabled == isEnabled && checked == isChecked) return;
    enabled = isEnabled;
    checked = isChecked;
    redraw();
}

void CRibbonItem::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    redraw();
}

void CRibbonItem::mouseUp(int x, int y, int btn) {
    redraw();
    CCtrl::mouseUp(x, y, btn);
    if ((btn & modLeft) && inside(x, y)) ribbon->itemClicked(this, false, btn);
}

void CRibbonItem::paint(CGraphic* g, CRect rect) {
    if (kind == separator)
        g->fillLine(clTabs.frameCol, asRect(rect.right / 2, 4, rect.right / 2 + 1, height - 4));
    else if (kind == tab)
        paintTab(g, rect);
    else
        paintCommand(g, rect);
}

void CRibbonItem::paintTab(CGraphic* g, CRect rect) const {
    const bool front = ribbon->getTab(-1) == this;
    const CGuiItem2& look = front || isHovered() ? clTabsSelected : clTabs;
    if (!front) rect.top += 2;
    drawGuiItem(g, rect, &look);
    if (front) {
        g->fillRect(win->app->gui->palette.accent, asRect(0, 0, rect.right, 2));
        g->fillRect(look.fillCol, asRect(1, rect.bottom - 1, rect.right - 1, rect.bottom));
    }
    g->drawText(look.textCol, text, rect, 0);
}

void CRibbonItem::paintCommand(CGraphic* g, CRect rect) const {
    const bool marked = isHovered() || ribbon->marked() == this;
    const CGuiItem2& look = !enabled                ? clSpeedButton
                            : checked || isPushed() ? clSpeedButtonPushed
                            : marked                ? clSpeedButtonMouseOver
                                                    : clSpeedButton;
    drawGuiItem(g, rect, &look);
    if (ribbon->marked() == this) g->frameRect(win->app->gui->palette.accent, rect);
    const int ground = clRibbonBar.fill == fillSolid ? clRibbonBar.fillCol : clWinBkgnd.fillCol;
    const int color = enabled ? look.textCol : fadeCol(look.symbolCol, ground, disabledShare);
    if (kind == more) {
        drawArrow(g, color, rect, dirDown, arrowSize);
        return;
    }
    const int room = kind == subMenu ? arrowRoom : 0;
    g->drawText(color, text, asRect(0, 0, rect.right - room, rect.bottom), 0);
    if (room)
        drawArrow(g, color, asRect(rect.right - room - 4, 0, rect.right, rect.bottom), dirDown,
                  arrowSize);
}

void CRibbonItem::describe(Description& d, int) const {
    static constexpr Role roles[] = {Role::tab, Role::button, Role::button, Role::separator,
                                     Role::button};
    d.role = kind == separator ? Role::none : checked ? Role::toggle : roles[kind];
    d.name = kind == more ? "More commands" : text.asChar();
    d.action = "press";
    d.set(statePressed, checked);
    d.set(stateSelected, kind == tab && ribbon->getTab(-1) == this);
}

bool CRibbonItem::pressPart(int) {
    ribbon->itemClicked(this, true, modLeft);
    return true;
}
