#include "gui/controls/CMDI.h"

#include "gui/CApp.h"

CMDI::CMDI(CApp* application, CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CWin(application, owner, name, l, t, w, h, winChild | winNoBorder | winPages) {
    owner->mdi = this;
}

CMDI::~CMDI() {
    silent++;
    while (auto* page = pages.getFirst()) page->hide();
    auto* owner = outer();
    if (owner && owner->mdi == this) owner->mdi = nullptr;
}

void CMDI::changed() {
    if (!silent && onChange) (*onChange)(this);
}

bool CMDI::keyDown(int key, int mods) {
    return current && current->keyDown(key, mods);
}

bool CMDI::raiseLast() {
    for (int i = pages.getCount() - 1; i > 0; i--) {
        auto* page = pages.items(i);
        if (!inFront(page)) continue;
        page->raise(false);
        return true;
    }
    return false;
}

bool CMDI::keyUp(int key, int mods) {
    return current && current->keyUp(key, mods);
}

void CMDI::setFocus(bool) {
    if (parent) outer()->setKeyCtrl(nullptr);
}

void CMDI::ownerFocus(bool on) {
    if (!current) return;
    if (!on) current->setKeyCtrl(nullptr);
    current->redraw();
}

void CMDI::resized() {
    CWin::resized();
    for (CWin* page : shownPages())
        if (page->hasStyle(winMaximized)) page->fillOwner();
}

void CMDI::pageShown(CWin* page) {
    pages.remove(page);
    pages.insert(0, page);
    arrange();
    changed();
}

void CMDI::pageHidden(CWin* page) {
    pages.remove(page);
    if (current == page) current = nullptr;
    arrange();
    changed();
}

void CMDI::pageRaised(CWin* page) {
    if (page == current || !pages.contains(page)) return;
    pages.remove(page);
    pages.insert(0, page);
    arrange();
    changed();
}

void CMDI::arrange() {
    CWin* former = current;
    current = nullptr;
    for (CWin* page : pages)
        if (!current && inFront(page)) current = page;
    for (CWin* page : shownPages())
        if (pages.contains(page)) page->setMapped(inFront(page));
    if (former == current) return;
    if (former && pages.contains(former)) {
        former->setKeyCtrl(nullptr);
        former->redraw();
    }
    if (current) current->redraw();
}

std::vector<CWin*> CMDI::shownPages() const {
    std::vector<CWin*> shown;
    for (CWin* page : pages) shown.push_back(page);
    return shown;
}

void CMDI::pageGone(CWin* page) {
    pages.remove(page);
    if (current == page) current = nullptr;
}

void CMDI::describe(Description& d, int) const {
    d.role = Role::none;
}
