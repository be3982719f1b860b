#include "gui/controls/CDocker.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/controls/CPopup.h"

#include <algorithm>

namespace {

constexpr int tabMargin = 12, leastTabWidth = 64;

} // namespace

CDocker::CDocker(CApp* application, CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CMDI(application, owner, name, l, t, w, h), active(new CDock(this)) {
    docks.add(active);
}

CDocker::~CDocker() {
    disableChanges(true);
    hidePlaced();
    deleteAll(docks);
}

// Which window is where.

CDock* CDocker::getDock(int index) const {
    return index == -1 ? active : docks.items(index);
}

CDock* CDocker::dockOf(const CWin* page) const {
    for (const Place& p : places)
        if (p.win == page) return p.dock;
    return nullptr;
}

CWin* CDocker::winOn(const CDock* dock, int index) const {
    for (const Place& p : places)
        if (p.dock == dock && index-- == 0) return p.win;
    return nullptr;
}

int CDocker::orderOf(const CWin* page) const {
    const CDock* dock = dockOf(page);
    int order = 0;
    while (dock && winOn(dock, order) != page) order++;
    return dock ? order : -1;
}

void CDocker::removePlace(const CWin* page) {
    std::erase_if(places, [page](const Place& p) { return p.win == page; });
}

void CDocker::attach(CWin* page, CDock* dock, int order) {
    removePlace(page);
    const CWin* behind = order < 0 ? nullptr : winOn(dock, order);
    const auto at = std::find_if(places.begin(), places.end(),
                                 [behind](const Place& p) { return p.win == behind; });
    places.insert(at, Place{page, dock});
    if (page->parent != this) {
        page->moveInto(this);
        keepInside(page);
    }
    updateDocks();
}

void CDocker::keepInside(CWin* page) {
    const CPoint at = page->getPos(false), size = page->getSize();
    const int x = asMinMax(at.x, 0, asMax(width - size.x, 0));
    const int y = asMinMax(at.y, 0, asMax(height - size.y, 0));
    if (at != asPoint(x, y)) page->setPos(x, y);
}

void CDocker::detach(CWin* page, CRect place) {
    if (page->parent != this) return;
    removePlace(page);
    page->moveOut(outer(), place);
    updateDocks();
}

void CDocker::hidePlaced() {
    while (!places.empty()) {
        CWin* page = places.back().win;
        removePlace(page);
        page->hide();
    }
}

void CDocker::pageGone(CWin* page) {
    removePlace(page);
    CMDI::pageGone(page);
    updateDocks();
}

void CDocker::clearDocks() {
    disableChanges(true);
    hidePlaced();
    while (docks.getCount() > 1) delete docks.pop();
    disableChanges(false);
    setActive(0);
}

// Which page is in front.

bool CDocker::inFront(const CWin* page) const {
    return dockOf(page) == active;
}

bool CDocker::isOpen(const CDock* dock) const {
    return std::any_of(places.begin(), places.end(),
                       [dock](const Place& p) { return p.dock == dock && p.win->visible; });
}

bool CDocker::hasTab(const CDock* dock) const {
    if (dock != docks.getFirst()) return isOpen(dock);
    if (firstStands) return true;
    for (const CDock* other : docks)
        if (isOpen(other)) return false;
    return true;
}

/// The first page itself only where no other one is open.
CDock* CDocker::firstTab() const {
    for (CDock* dock : docks)
        if (isOpen(dock)) return dock;
    return getDock(0);
}

int CDocker::tabCount() const {
    int count = 0;
    for (const CDock* dock : docks)
        if (hasTab(dock)) count++;
    return count == 1 && !tabAlwaysShow ? 0 : count;
}

void CDocker::setActive(int index) {
    CDock* wanted = index < 0 ? nullptr : getDock(index);
    active = wanted && hasTab(wanted) ? wanted : firstTab();
    updateDocks();
}

void CDocker::nextDock(int by) {
    const int count = docks.getCount();
    int at = activeIndex;
    do {
        at = (at + by + count) % count;
    } while (at != activeIndex && !hasTab(getDock(at)));
    setActive(at);
}

void CDocker::updateDocks() {
    if (!docks.contains(active) || !hasTab(active)) active = firstTab();
    activeIndex = docks.indexed(active);
    arrange();
    if (activeIndex > 0)
        show(false);
    else if (visible)
        hide();
    changed();
}

void CDocker::pageShown(CWin* page) {
    if (CDock* dock = dockOf(page)) active = dock;
    disableChanges(true);
    CMDI::pageShown(page);
    disableChanges(false);
    updateDocks();
}

void CDocker::pageHidden(CWin* page) {
    disableChanges(true);
    CMDI::pageHidden(page);
    disableChanges(false);
    updateDocks();
}

// Tabs.

CRect CDocker::tabRect(const CDock* dock, int tabHeight) const {
    if (tabCount() == 0) return CRect();
    int x = 0;
    for (const CDock* d : docks) {
        if (!hasTab(d)) continue;
        const int wanted = graphic->textWidth(d->name) + 2 * tabMargin;
        const int tabWidth = asMinMax(wanted, leastTabWidth, mostTabWidth);
        if (d == dock) return asRect(x, 0, x + tabWidth, tabHeight);
        x += tabWidth;
    }
    return CRect();
}

CDock* CDocker::dockAtPos(int x) const {
    for (CDock* dock : docks) {
        const CRect tab = tabRect(dock, 1);
        if (!tab.empty() && x >= tab.left && x < tab.right) return dock;
    }
    return nullptr;
}

// The menu.

void CDocker::addDockMenu(CPopup* popup, CWin* page) {
    constexpr int newPage = -1, unDock = -2;
    CPopup* sub = popup->addSub("Dock");
    const auto add = [&](const CStr& text, int where) {
        CMenuItem* item = sub->add(text, new _COnChange(this, &CDocker::dockClicked));
        item->tag = where;
        item->data = page;
    };
    if (dockOf(page)) add("Un-dock", unDock);
    add("New page", newPage);
    for (int i = 1; i < docks.getCount(); i++) {
        if (i == 1) sub->addSeparator();
        add(getDock(i)->name, i);
    }
}

void CDocker::dockClicked(CCtrl* item) {
    dockWin(static_cast<CWin*>(item->data), item->tag);
}

void CDocker::dockWin(CWin* page, int where) {
    if (where == -2) {
        const CPoint at = page->getPos(true), size = page->getSize();
        detach(page, asRect(at.x, at.y, size.x, size.y));
        return;
    }
    if (where == -1) {
        where = docks.getCount();
        docks.add(new CDock(this, page->id));
    }
    if (where < 1 || !getDock(where)) return;
    attach(page, getDock(where));
    setActive(where);
}
