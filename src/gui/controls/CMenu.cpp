#include "gui/controls/CMenu.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/controls/CPopup.h"

namespace {
constexpr int textMargin = 8;
} // namespace

/// One word of the bar. Its `onChange` is the builder of the menu.
class CMenu::Entry : public CCtrl {
public:
    Entry(CMenu* owner, const CStr& name)
        : CCtrl(owner->win, name, 0, 0, 0, owner->height), bar(owner) {
        hooverable = true;
    }
    void paint(CGraphic* g, CRect rect) override {
        const CGuiItem2& look =
            bar->current() == this || isHovered() ? clMenuBarSelected : clMenuBar;
        drawGuiItem(g, rect, &look);
        g->drawText(look.textCol, id, rect, 0);
    }
    void mouseDown(int x, int y, int btn) override {
        CCtrl::mouseDown(x, y, btn);
        if (btn & modLeft) bar->dropMenu(this, false);
    }
    /// With a menu open, it moves to the entry under the pointer.
    void mouseMove(int x, int y, int btn) override {
        CCtrl::mouseMove(x, y, btn);
        if (!bar->isOpen() || y < 0 || y >= height) return;
        for (auto* entry : bar->controls)
            if (entry != bar->current() && entry->inside(left + x - entry->left, y))
                bar->dropMenu(entry, false);
    }

    void describe(Description& d, int) const override {
        d.role = Role::menu;
        d.name = id.asChar();
        d.action = "open";
        d.set(stateExpandable, true);
        d.set(stateExpanded, bar->isOpen() && bar->current() == this);
    }
    bool pressPart(int) override {
        bar->dropMenu(this, true);
        return true;
    }

private:
    CMenu* bar;
};

CMenu::CMenu(CWin* owner, const CStr& name)
    : CGroup(owner, name, 0, 0, owner->width, menuHeight),
      popup(std::make_unique<CPopup>(owner->app, owner)) {
    tabStop = true;
    popup->onKeyDown = new _COnKey<CMenu>(this, &CMenu::popupKey);
}

CMenu::~CMenu() = default;

CCtrl* CMenu::add(const CStr& text, COnChange* builder, int entryTag) {
    auto* entry = new Entry(this, text);
    entry->onChange = builder;
    entry->tag = entryTag;
    const auto* before = controls.last();
    entry->left = before ? before->left + before->width : 0;
    entry->width = win->graphic->textWidth(text) + 2 * textMargin;
    addControl(entry);
    return entry;
}

void CMenu::clear() {
    mark(nullptr);
    CGroup::clear();
}

bool CMenu::isOpen() const {
    return popup->visible;
}

void CMenu::mark(CCtrl* item) {
    if (marked == item) return;
    marked = item;
    redraw();
}

void CMenu::dropMenu(CCtrl* item, bool fromKeys) {
    const bool inPlace = isOpen();
    if (inPlace) win->app->killMenu(popup.get());
    popup->clearItems();
    popup->tag = item->tag;
    if (item->onChange) (*item->onChange)(popup.get());
    if (popup->items.empty()) popup->add("Empty", nullptr)->enabled = false;
    mark(item);
    const CPoint corner = win->getPos(true), at = win->controlPos(item);
    popup->popup(corner.x + at.x, corner.y + at.y + height, fromKeys);
    if (!inPlace) mark(hasKeyFocus() ? marked : nullptr);
}

void CMenu::step(int by) {
    const int count = controls.getCount();
    if (count < 1) return;
    const int at = controls.indexed(marked);
    auto* next = controls.items(((at < 0 ? 0 : at + by) + count) % count);
    if (isOpen())
        dropMenu(next, true);
    else
        mark(next);
}

/// What the popup has no use for.
bool CMenu::popupKey(CObject*, int& key, int) {
    if (key != keyLeft && key != keyRight) return false;
    step(key == keyLeft ? -1 : 1);
    return true;
}

bool CMenu::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (key == keyEscape) {
        win->setKeyCtrl(nullptr);
    } else if (key == keyLeft || key == keyRight) {
        step(key == keyLeft ? -1 : 1);
    } else if ((key == keyReturn || key == ::keyDown) && marked) {
        dropMenu(marked, true);
    } else {
        return false;
    }
    return true;
}

void CMenu::setFocus(bool on) {
    mark(on ? controls.first() : nullptr);
}

void CMenu::paint(CGraphic* g, CRect rect) {
    drawGuiItem(g, rect, &clMenuBar);
    if (clMenuBar.sep)
        g->fillLine(clMenuBar.sepCol, asRect(0, rect.bottom - 1, rect.right, rect.bottom));
    CGroup::paint(g, rect);
}

void CMenu::describe(Description& d, int) const {
    d.role = Role::menuBar;
    d.name = "Menu";
}
