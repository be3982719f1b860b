#include "gui/controls/CRibbons.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CPopup.h"

namespace {
constexpr int margin = 4, buttonSize = 16;
} // namespace

CRibbons::CRibbons(CWin* owner, const CStr& name)
    : CGroup(owner, name, 0, 0, owner->width, tabHeight + stripHeight),
      tabs(new CGroup(owner, "tabs", 0, 0, width, tabHeight)),
      strip(new CGroup(owner, "commands", 0, tabHeight, width, stripHeight)),
      sizeButton(new CWindowButton(owner, CWindowButton::maximize, 0, (tabHeight - buttonSize) / 2,
                                   buttonSize, buttonSize)),
      activeWin(owner) {
    tabStop = true;
    for (CGroup* row : {tabs, strip}) {
        row->setAlign(alignWidth, 0, 0);
        addControl(row);
    }
    sizeButton->setAlign(alignRight, margin, 0);
    addControl(sizeButton);
}

CRibbonItem* CRibbons::add(CWin* target, const CStr& text, int itemTag, COnChange* builder) {
    auto* item = new CRibbonItem(this, CRibbonItem::tab, text, target);
    item->tag = itemTag;
    item->onChange = builder;
    tabs->addControl(item);
    placeTabs();
    return item;
}

void CRibbons::clearTabs() {
    tabs->clear();
    strip->clear();
    tabIndex = 0;
    markedIndex = -1;
}

void CRibbons::placeTabs() {
    int x = margin;
    for (auto* item : listAs<CRibbonItem>(tabs->controls)) {
        const bool empty = !item->onChange && item->menu->items.empty();
        item->visible = !empty && (item->target == win || item->target == activeWin);
        item->setBounds(x, 0, item->neededWidth(), tabHeight);
        if (item->visible) x += item->width;
    }
    tabs->redraw();
}

void CRibbons::setActiveWin(CWin* active) {
    activeWin = active;
    sizeButton->targetWin = active;
    placeTabs();
    const CRibbonItem* front = getTab(-1);
    if (front && !front->visible) tabIndex = 0;
    refresh();
}

CRibbonItem* CRibbons::getTab(int index) const {
    return listAs<CRibbonItem>(tabs->controls).items(index < 0 ? tabIndex : index);
}

void CRibbons::setTabIndex(int index) {
    if (index < 0 || !getTab(index)) return;
    tabIndex = index;
    markedIndex = -1;
    tabs->redraw();
    refresh();
    if (hasKeyFocus()) step(1);
}

CRibbonItem* CRibbons::itemAtPos(int x, int y) {
    for (CGroup* row : {tabs, strip})
        if (CCtrl* hit = row->controlAtPos(x - row->left, y - row->top))
            return static_cast<CRibbonItem*>(hit);
    return nullptr;
}

CRibbonItem* CRibbons::marked() const {
    if (!hasKeyFocus() || markedIndex < 0) return nullptr;
    return listAs<CRibbonItem>(strip->controls).items(markedIndex);
}

// The commands.

/// What the strip has to show: as many commands as fit. The caller owns them.
std::vector<CRibbonItem*> CRibbons::wantedItems() {
    std::vector<CRibbonItem*> items;
    const CRibbonItem* front = getTab(-1);
    int x = margin, index = 0;
    bool all = true;
    for (const auto* entry : front->menu->items) {
        const auto kind = entry->kind == menuSeparator ? CRibbonItem::separator
                          : entry->kind == menuSub     ? CRibbonItem::subMenu
                                                       : CRibbonItem::command;
        auto* item = new CRibbonItem(this, kind, entry->label(), front->target);
        item->index = index++;
        item->enabled = entry->enabled;
        item->checked = entry->checked;
        item->userPtr = entry->userPtr;
        item->setBounds(x, margin, item->neededWidth(), stripHeight - 2 * margin);
        x += item->width;
        all = all && entry->kind != menuRows;
        items.push_back(item);
    }
    if (all && x <= width - margin) return items;
    auto* more = new CRibbonItem(this, CRibbonItem::more, "", front->target);
    const int room = width - margin - more->neededWidth();
    more->setBounds(room, margin, more->neededWidth(), stripHeight - 2 * margin);
    while (!items.empty()) {
        const CRibbonItem* last = items.back();
        const bool shown =
            last->left + last->width <= room && front->menu->getItem(last->index)->kind != menuRows;
        if (shown) break;
        delete last;
        items.pop_back();
    }
    items.push_back(more);
    return items;
}

/// Whether these stand in the strip already, though in another state.
bool CRibbons::shows(const std::vector<CRibbonItem*>& wanted) const {
    if (strip->controls.getCount() != int(wanted.size())) return false;
    size_t i = 0;
    for (const auto* item : listAs<CRibbonItem>(strip->controls)) {
        const CRibbonItem* other = wanted[i++];
        if (item->text != other->text || item->kind != other->kind ||
            ctrlBounds(item) != ctrlBounds(other))
            return false;
    }
    return true;
}

void CRibbons::layout() {
    const std::vector<CRibbonItem*> wanted = wantedItems();
    if (!shows(wanted)) {
        strip->clear();
        for (CRibbonItem* item : wanted) strip->addControl(item);
        markedIndex = asMin(markedIndex, int(wanted.size()) - 1);
        strip->redraw();
        return;
    }
    size_t i = 0;
    for (auto* item : listAs<CRibbonItem>(strip->controls)) {
        item->setState(wanted[i]->enabled, wanted[i]->checked);
        delete wanted[i++];
    }
}

void CRibbons::refresh() {
    CRibbonItem* front = getTab(-1);
    if (!front || front->menu->visible) return;
    front->build();
    layout();
}

CMenuItem* CRibbons::entryOf(const CRibbonItem* item) const {
    CMenuItem* entry = getTab(-1)->menu->getItem(item->index);
    return entry && entry->selectable() && entry->label() == item->text ? entry : nullptr;
}

/// The point of the screen where a menu of the item opens.
CPoint CRibbons::below(const CRibbonItem* item) const {
    return addPos(addPos(win->getPos(true), win->controlPos(item)), asPoint(0, item->height));
}

void CRibbons::itemClicked(CRibbonItem* item, bool fromKeys, int btn) {
    win->setCapture(false);
    if (item->kind == CRibbonItem::tab) {
        setTabIndex(tabs->controls.indexed(item));
        return;
    }
    const CRibbonItem* front = getTab(-1);
    refresh();
    const CPoint at = below(item);
    if (item->kind == CRibbonItem::more)
        front->menu->popup(at.x, at.y, fromKeys);
    else if (CMenuItem* entry = entryOf(item))
        callEntry(item, entry, fromKeys, btn);
    refresh();
}

void CRibbons::callEntry(CRibbonItem* item, CMenuItem* entry, bool fromKeys, int btn) {
    const CPoint at = below(item);
    if (entry->kind == menuSub)
        entry->subMenu->popup(at.x, at.y, fromKeys);
    else if (entry->onChange)
        (*entry->onChange)(entry);
    else
        item->target->menuAction(item, entry, btn);
}

// Keys and looks.

void CRibbons::step(int by) {
    const int count = strip->controls.getCount();
    int at = markedIndex < 0 && by < 0 ? 0 : markedIndex;
    for (int k = 0; k < count; k++) {
        at = (at + by + count) % count;
        if (listAs<CRibbonItem>(strip->controls).items(at)->selectable()) break;
    }
    markedIndex = at;
    strip->redraw();
}

void CRibbons::stepTab(int by) {
    const int count = tabs->controls.getCount();
    int at = tabIndex;
    do {
        at = (at + by + count) % count;
    } while (at != tabIndex && !getTab(at)->visible);
    setTabIndex(at);
}

bool CRibbons::keyDown(int key, int mods) {
    if (CGroup::keyDown(key, mods)) return true;
    if (mods || !getTab(-1)) return false;
    if (key == keyLeft || key == keyRight)
        step(key == keyLeft ? -1 : 1);
    else if (key == ::keyUp || key == ::keyDown)
        stepTab(key == ::keyUp ? -1 : 1);
    else if (key == keyEscape)
        win->setKeyCtrl(nullptr);
    else if (key == keyReturn && marked())
        itemClicked(marked(), true, 0);
    else
        return false;
    return true;
}

void CRibbons::setFocus(bool on) {
    markedIndex = -1;
    refresh();
    if (on) step(1);
}

void CRibbons::resized() {
    CGroup::resized();
    if (getTab(-1)) layout();
}

void CRibbons::paint(CGraphic* g, CRect rect) {
    drawGuiItem(g, asRect(0, 0, rect.right, tabHeight), &clRibbon);
    drawGuiItem(g, asRect(0, tabHeight, rect.right, rect.bottom), &clRibbonBar);
    g->fillLine(clTabs.frameCol, asRect(0, tabHeight - 1, rect.right, tabHeight));
    g->fillLine(clTabs.frameCol, asRect(0, rect.bottom - 1, rect.right, rect.bottom));
    CGroup::paint(g, rect);
}

void CRibbons::describe(Description& d, int) const {
    d.role = Role::toolBar;
    if (d.name.empty()) d.name = "Ribbon";
}
