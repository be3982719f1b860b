// The key focus of a window.
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/TabOrder.h"
#include "gui/XConnection.h"
#include "gui/controls/CMDI.h"

#include <algorithm>

bool CWin::offerFocus(int key, int mods) {
    if (!keyCtrl) return false;
    if (keyCtrl->keyDown(key, mods)) return true;
    // The handler may have moved the focus: the groups around where it is now are asked.
    CGroup* around = keyCtrl ? keyCtrl->parent : nullptr;
    for (; around && around->category != catWin; around = around->parent)
        if (around->keyInside(key, mods)) return true;
    return false;
}

/// That of the control with the focus or of one around it, else that of the caption.
bool CWin::openContextMenu() {
    for (CCtrl* c = keyCtrl; c && c->category != catWin; c = c->parent) {
        app->menuCtrl = keyCtrl;
        const bool opened = c->contextMenu();
        app->menuCtrl = nullptr;
        if (opened) return true;
    }
    if (captionGroup) dropCaptionMenuByKey();
    return captionGroup;
}

CPoint CApp::menuPoint() const {
    if (!menuCtrl) return mousePos();
    const CPoint at = menuCtrl->win->controlPos(menuCtrl);
    return addPos(addPos(menuCtrl->win->getPos(true), at), asPoint(0, menuCtrl->height));
}

std::vector<CCtrl*> CWin::tabStops() {
    std::vector<CCtrl*> stops;
    const CCtrl* now = keyTarget();
    for (CCtrl* part : std::initializer_list<CCtrl*>{menu, toolbar, clientGroup})
        if (part) collectStops(part, now, stops);
    if (!mdi || !mdi->visible || !mdi->current) return stops;
    const std::vector<CCtrl*> inner = mdi->current->tabStops();
    stops.insert(stops.end(), inner.begin(), inner.end());
    return stops;
}

bool CWin::nextCtrl(int by) {
    if (CWin* owner = getMDIOwner(this)) return owner->nextCtrl(by);
    const std::vector<CCtrl*> stops = tabStops();
    const int count = int(stops.size());
    if (count == 0) return false;
    const auto found = std::find(stops.begin(), stops.end(), keyTarget());
    int at = found == stops.end() ? (by > 0 ? -1 : count) : int(found - stops.begin());
    // What has the focus stands among the stops even if it is none any more.
    for (int step = 0; step < count; step++) {
        at = (at + by + count) % count;
        CCtrl* next = stops[size_t(at)];
        if (!takesTab(next) || next == keyTarget()) continue;
        if (next->win != this) setKeyCtrl(nullptr);
        next->win->setKeyCtrl(next);
        return true;
    }
    return false;
}

bool CWin::nextPage() {
    CWin* owner = getMDIOwner(this);
    CMDI* area = owner ? owner->mdi : mdi;
    return area && area->raiseLast();
}

void CWin::setKeyCtrl(CCtrl* ctrl) {
    CCtrl* former = keyCtrl;
    if (former == ctrl) return;
    keyCtrl = ctrl;
    if (ctrl && mdi && mdi->current) mdi->current->setKeyCtrl(nullptr);
    if (former) {
        former->redraw();
        former->setFocus(false);
    }
    if (!ctrl || keyCtrl != ctrl) return;
    for (CGroup* g = ctrl->parent; g && g->category != catWin; g = g->parent) g->reveal(ctrl);
    ctrl->redraw();
    ctrl->setFocus(true);
}
