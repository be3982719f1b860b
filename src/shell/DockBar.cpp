#include "shell/DockBar.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDocker.h"
#include "gui/controls/CPopup.h"

namespace {

constexpr int buttonSize = 16, buttonStep = 18, edge = 2, textMargin = 4;

} // namespace

DockBar::DockBar(CWin* window, CDocker* area, int t, int w)
    : CGroup(window, "dockbar", 0, t, w, barHeight), docker(area) {
    setAlign(alignWidth, 0, 0);
    visible = false;
    hooverable = true;
    tabStop = true;
    hint = "Pages";
    addButton(closeButton, CWindowButton::close, edge);
    addButton(sizeButton, CWindowButton::maximize, edge + buttonStep);
}

void DockBar::addButton(CWindowButton*& button, int kind, int rightMargin) {
    button = new CWindowButton(win, kind, 0, (tabHeight - buttonSize) / 2, buttonSize, buttonSize);
    button->setAlign(alignRight, rightMargin, 0);
    button->hooverable = true;
    button->hint = kind == CWindowButton::close ? "Close" : "Restore";
    addControl(button);
}

void DockBar::refresh() {
    visible = docker->tabCount() > 0;
    CWin* page = docker->current;
    for (CWindowButton* button : {closeButton, sizeButton}) {
        button->visible = page && page->hasStyle(winMaximized);
        button->targetWin = page ? page : win;
    }
    redraw();
}

void DockBar::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.panel, clientRect());
    g->fillLine(clTabs.frameCol, asRect(0, tabHeight - 1, width, tabHeight));
    for (const CDock* dock : docker->docks) {
        CRect tab = docker->tabRect(dock, tabHeight);
        if (tab.empty()) continue;
        const bool chosen = dock == docker->getDock(-1);
        const bool hovered = docker->docks.indexed(dock) == hoverIndex;
        const CGuiItem2& look = chosen || hovered ? clTabsSelected : clTabs;
        if (!chosen) tab.top += edge;
        drawGuiItem(g, tab, &look);
        if (chosen)
            g->fillRect(look.fillCol,
                        asRect(tab.left + 1, tabHeight - 1, tab.right - 1, tabHeight));
        if (chosen && hasKeyFocus())
            g->fillRect(colours.accent, asRect(tab.left, 0, tab.right, edge));
        const CRect box = sizeRect(tab, textMargin, 0, -textMargin, 0);
        const bool fits = g->textWidth(dock->name) <= box.width();
        g->drawText(look.textCol, dock->name, box, fits ? 0 : textLeft);
    }
    CGroup::paint(g, rect);
}

void DockBar::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    CDock* dock = y < tabHeight ? docker->dockAtPos(x) : nullptr;
    if (dock) docker->setActive(docker->docks.indexed(dock));
}

void DockBar::mouseMove(int x, int y, int btn) {
    CGroup::mouseMove(x, y, btn);
    const CDock* over = inside(x, y) && y < tabHeight ? docker->dockAtPos(x) : nullptr;
    const int index = over ? docker->docks.indexed(over) : -1;
    if (index == hoverIndex) return;
    hoverIndex = index;
    redraw();
}

void DockBar::mouseOver(bool enter, int x, int y) {
    CGroup::mouseOver(enter, x, y);
    if (!enter) hoverIndex = -1;
}

void DockBar::mouseUp(int x, int y, int btn) {
    CGroup::mouseUp(x, y, btn);
    if ((btn & modRight) && inside(x, y) && docker->dockAtPos(x)) contextMenu();
}

bool DockBar::contextMenu() {
    if (!docker->current) return false;
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    docker->current->fillCaptionMenu(popup);
    const CPoint at = win->app->menuPoint();
    popup->popup(at.x, at.y, win->app->menuCtrl);
    return true;
}

bool DockBar::keyDown(int key, int mods) {
    if (CGroup::keyDown(key, mods)) return true;
    if (mods) return false;
    if (key == keyLeft || key == keyRight)
        docker->nextDock(key == keyLeft ? -1 : 1);
    else if (key == keyHome || key == keyEnd)
        goToEnd(key == keyEnd);
    else
        return false;
    return true;
}

void DockBar::goToEnd(bool last) {
    int at = 0;
    for (const CDock* dock : docker->docks)
        if (last && docker->hasTab(dock)) at = docker->docks.indexed(dock);
    docker->setActive(at);
}

int DockBar::accessParts() const {
    return docker->docks.getCount();
}

int DockBar::focusedPart() const {
    return docker->docks.indexed(docker->getDock(-1));
}

void DockBar::describe(Description& d, int part) const {
    d.role = Role::tabs;
    if (part == wholeCtrl) return;
    const CDock* dock = docker->getDock(part);
    d.role = Role::tab;
    d.name = dock->name.asChar();
    d.action = "switch";
    d.bounds = docker->tabRect(dock, tabHeight);
    d.set(stateShowing, docker->hasTab(dock));
    d.set(stateSelected, dock == docker->getDock(-1));
}

bool DockBar::pressPart(int part) {
    if (part == wholeCtrl) return false;
    docker->setActive(part);
    return true;
}
