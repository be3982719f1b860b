#include "gui/CGroup.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/TabOrder.h"

namespace {

constexpr int percent = 100;

bool isGroup(const CCtrl* ctrl) {
    return ctrl->category == catGroup || ctrl->category == catGroupLike;
}

void alignAcross(CCtrl* c, int room) {
    if (c->align & alignRight)
        c->left = room - c->width - c->alignX;
    else if (c->align & alignWidth)
        c->width = room - c->left - c->alignX;
    else if (c->align & alignMiddleX)
        c->left = room * c->alignX / percent - c->width / 2;
}

void alignDown(CCtrl* c, int room) {
    if (c->align & alignBottom)
        c->top = room - c->height - c->alignY;
    else if (c->align & alignHeight)
        c->height = room - c->top - c->alignY;
    else if (c->align & alignPercentY)
        c->top = (room - c->height) * c->alignY / percent;
}

} // namespace

CGroup::CGroup(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CCtrl(owner, name, l, t, w, h) {
    category = catGroup;
}

CGroup::~CGroup() {
    deleteAll(controls);
}

void CGroup::paint(CGraphic* g, CRect rect) {
    CCtrl::paint(g, rect);
    if (fillColor != -1) g->fillRect(fillColor, rect);
    paintControls(g, rect, g->originX, g->originY);
}

void CGroup::resized() {
    for (CCtrl* c : controls) {
        alignAcross(c, width);
        alignDown(c, height);
        if (isGroup(c)) static_cast<CGroup*>(c)->resized();
    }
}

void CGroup::addControl(CCtrl* ctrl) {
    addChild(ctrl, this);
}

void CGroup::addChild(CCtrl* ctrl, CGroup* childParent) {
    ctrl->parent = childParent;
    controls.add(ctrl);
}

void CGroup::clear() {
    while (!controls.empty()) {
        auto* ctrl = controls.first();
        controls.del(0);
        win->app->deleteLater(ctrl);
    }
}

CCtrl* CGroup::controlAtPos(int x, int y) {
    for (CCtrl* c : controls)
        if (CCtrl* hit = find(c, x + scrollX, y + scrollY)) return hit;
    return nullptr;
}

CCtrl* CGroup::find(CCtrl* ctrl, int x, int y) {
    if (!ctrl->visible || !ctrl->enabled || !ctrl->inside(x - ctrl->left, y - ctrl->top))
        return nullptr;
    CCtrl* hit = ctrl;
    if (!isGroup(ctrl)) return hit;
    const int innerX = x - ctrl->left + ctrl->scrollX, innerY = y - ctrl->top + ctrl->scrollY;
    for (CCtrl* c : static_cast<CGroup*>(ctrl)->controls)
        if (CCtrl* inner = find(c, innerX, innerY)) hit = inner;
    return hit;
}

bool CGroup::keyInside(int key, int mods) {
    CCtrl* next = arrowsWalk && !mods ? neighbourOf(win->keyCtrl, this, key) : nullptr;
    if (next) win->setKeyCtrl(next);
    return next;
}

void CGroup::paintControls(CGraphic* g, CRect rect, int x, int y) {
    if (rect.empty()) return;
    for (CCtrl* c : controls) paintCtrl(g, c, x - scrollX + c->left, y - scrollY + c->top);
}

void CGroup::paintCtrl(CGraphic* g, CCtrl* ctrl, int x, int y) {
    ctrl->absX = x;
    ctrl->absY = y;
    const CRect bounds = sizeRect(ctrl->clientRect(), x - g->originX, y - g->originY,
                                  x - g->originX, y - g->originY);
    if (!ctrl->visible || !g->wants(bounds)) return;
    const ClipScope scope(g, bounds);
    ctrl->paint(g, ctrl->clientRect());
}

void CClientGroup::_changed(CObject* sender, void* arg) {
    win->_changed(sender, arg);
}

void CClientGroup::notify(const CStr& what, CObject* sender) {
    win->notify(what, sender);
}
