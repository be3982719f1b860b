#include "setup/CSetupWin.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/controls/CEdit.h"
#include "gui/controls/CListbox.h"
#include "setup/AudioPage.h"
#include "setup/FolderPage.h"
#include "setup/GlobalPage.h"
#include "setup/LooksPanel.h"
#include "setup/MidiPage.h"
#include "setup/PluginPage.h"
#include "setup/ProjectPage.h"
#include "setup/ShortcutPage.h"
#include "ui/Workspace.h"

#include <iterator>

namespace {

constexpr int contentWidth = 752, contentHeight = 544;
constexpr int tallestTab = 34, tabsWidth = 112;
constexpr int markWidth = 3, tabTextLeft = 16; // in a tab
constexpr double hoverShare = 0.5;
constexpr int defaultTab = 2;
constexpr const char *section = "options", *pageKey = "page";

struct Tab {
    const char* name;
    CGroup* (*make)(CSetupWin* window, CRect place);
};

template <class Page>
CGroup* make(CSetupWin* window, CRect place) {
    return new Page(window, place);
}

CGroup* makeLooks(CSetupWin* window, CRect place) {
    const CRect inner = sizeRect(place, SetupPage::margin, SetupPage::margin, -SetupPage::margin,
                                 -SetupPage::margin);
    return new LooksPanel(window, window->host, inner.left, inner.top, inner.width(),
                          inner.height());
}

constexpr Tab tabNames[] = {
    {"Project", make<ProjectPage>}, {"Global", make<GlobalPage>},
    {"Audio", make<AudioPage>},     {"MIDI", make<MidiPage>},
    {"Browser", make<FolderPage>},  {"Plug-ins", make<PluginPage>},
    {"Looks", makeLooks},           {"Shortcuts", make<ShortcutPage>},
};

CCtrl* findField(CGroup* group, const CStr& name) {
    for (CCtrl* c : group->controls) {
        if (c->tabStop && c->id == name) return c;
        if (c->category != catGroup && c->category != catGroupLike) continue;
        if (CCtrl* found = findField(static_cast<CGroup*>(c), name)) return found;
    }
    return nullptr;
}

} // namespace

/// The column of tabs as a screen reader is told of it; the window paints it.
class CSetupWin::Tabs : public CCtrl {
public:
    explicit Tabs(CSetupWin* window)
        : CCtrl(window, "tabs", 0, 0, tabsWidth, window->clientGroup->height), owner(window) {}
    int accessParts() const override { return tabCount(); }
    int focusedPart() const override { return owner->tab; }
    void describe(Description& d, int part) const override {
        d.role = part == wholeCtrl ? Role::tabs : Role::tab;
        d.name = part == wholeCtrl ? "Pages" : tabName(part);
        if (part == wholeCtrl) return;
        d.action = "switch";
        d.bounds = owner->tabRect(part);
        d.set(stateSelected, part == owner->tab);
    }
    bool pressPart(int part) override {
        owner->setTab(part);
        return true;
    }

private:
    CSetupWin* owner;
};

CSetupWin::CSetupWin(Workspace& space)
    : CDialogWin(space.mainWindow(), "Setup", contentWidth, contentHeight), workspace(space),
      host(space.host()),
      tab(asMinMax(iniReadInt(section, pageKey, defaultTab), 0, tabCount() - 1)),
      tabs(new Tabs(this)), devices(space.notices().on({.host = HostNotice::devices}, [this] {
          if (visible) tabChanged();
      })) {
    buttons->visible = false;
    tabs->tabStop = true;
    tabs->hooverable = true;
    tabs->setAlign(alignHeight, 0, 0);
    wire(tabs->onPaint, new _COnPaint<CSetupWin>(this, &CSetupWin::tabsPaint));
    wire(tabs->onMouseMove, new _COnMouse<CSetupWin>(this, &CSetupWin::tabsMouseMove));
    wire(tabs->onMouseUp, new _COnMouse<CSetupWin>(this, &CSetupWin::tabsMouseUp));
    wire(tabs->onKeyDown, new _COnKey<CSetupWin>(this, &CSetupWin::tabsKeyDown));
    addControl(tabs);
    startCtrl = tabs;
}

CSetupWin::~CSetupWin() {
    if (host->settingsEnabled) CIniFile(inifile).writeInteger(section, pageKey, tab);
}

int CSetupWin::tabCount() {
    return int(std::size(tabNames));
}

const char* CSetupWin::tabName(int index) {
    return tabNames[index].name;
}

void CSetupWin::open() {
    if (!visible) {
        tabChanged();
        show(true);
    }
    raise(true);
}

void CSetupWin::hide() {
    const bool hadFocus = visible && hasFocus();
    if (visible) setKeyCtrl(nullptr);
    CDialogWin::hide();
    CWin* main = workspace.mainWindow();
    if (hadFocus && main->visible) main->setFocus(true);
}

// The page.

void CSetupWin::setTab(int index) {
    if (index < 0 || index >= tabCount() || index == tab) return;
    tab = index;
    tabChanged();
}

void CSetupWin::tabChanged() {
    const CStr focused = keyCtrl ? keyCtrl->id : CStr();
    const bool onPage = keyCtrl && keyCtrl != tabs;
    startCtrl = tabs;
    makePage();
    if (CCtrl* field = onPage ? findField(page, focused) : nullptr) setKeyCtrl(field);
    redraw();
}

void CSetupWin::projectChanged() {
    if (visible && tabNames[tab].make == make<ProjectPage>) tabChanged();
}

void CSetupWin::makePage() {
    if (page) {
        clientGroup->controls.remove(page);
        app->deleteLater(page);
    }
    const int w = clientGroup->width, h = clientGroup->height;
    scroll = nullptr;
    if (w < contentWidth || h < contentHeight)
        page = scroll = newScroll(asRect(tabsWidth, 0, w, h));
    else
        page = tabNames[tab].make(this, asRect(tabsWidth, 0, w, h));
    page->setAlign(alignWidth | alignHeight, w - page->left - page->width,
                   h - page->top - page->height);
    addControl(page);
    page->resized();
}

/// The page in its usual size on a panel that shows a part of it, for want of room.
CScrollPanel* CSetupWin::newScroll(CRect place) {
    auto* panel =
        new CScrollPanel(this, "scroll", place.left, place.top, place.width(), place.height());
    panel->inner->addControl(
        tabNames[tab].make(this, asRect(0, 0, contentWidth - tabsWidth, contentHeight)));
    return panel;
}

// The column of tabs.

int CSetupWin::tabHeight() const {
    return asMinMax(tabs->height / tabCount(), 1, tallestTab);
}

CRect CSetupWin::tabRect(int index) const {
    return asRect(0, index * tabHeight(), tabsWidth - 1, (index + 1) * tabHeight());
}

void CSetupWin::tabsPaint(CObject*, CGraphic* g, CRect rect) {
    const CPalette& colours = app->gui->palette;
    g->fillRect(colours.panel, rect);
    g->fillLine(colours.frame, asRect(rect.right - 1, 0, rect.right, rect.bottom));
    for (int i = 0; i < tabCount(); i++) {
        const CRect place = tabRect(i);
        const bool chosen = i == tab, hovered = i == hoverTab && tabs->isHovered();
        if (chosen || hovered)
            g->fillRect(chosen ? colours.raised
                               : fadeCol(colours.panel, colours.raised, hoverShare),
                        place);
        if (chosen) g->fillRect(colours.accent, asRect(0, place.top, markWidth, place.bottom));
        if (chosen && tabs->hasKeyFocus()) g->frameRect(colours.accent, place);
        g->drawText(chosen ? colours.text : colours.dimText, tabName(i),
                    sizeRect(place, tabTextLeft, 0, 0, 0), textLeft);
    }
}

void CSetupWin::tabsMouseMove(CObject*, int, int y, int) {
    const int over = y / tabHeight();
    if (over == hoverTab) return;
    hoverTab = over;
    tabs->redraw();
}

void CSetupWin::tabsMouseUp(CObject*, int x, int y, int btn) {
    if (!(btn & modLeft) || !tabs->inside(x, y)) return;
    setKeyCtrl(tabs);
    setTab(y / tabHeight());
}

bool CSetupWin::tabsKeyDown(CObject*, int& key, int mods) {
    if (mods || (key != ::keyUp && key != ::keyDown)) return false;
    setTab(tab + (key == ::keyUp ? -1 : 1));
    return true;
}

// Mouse and keys of the window.

void CSetupWin::mouseDown(int x, int y, int btn) {
    if (keyCtrl && keyCtrl->type == ctrlEdit && controlAtPos(x, y) != keyCtrl)
        setKeyCtrl(nullptr); // what was typed counts before the press acts
    CDialogWin::mouseDown(x, y, btn);
}

/// Gives back the former text of a field, which keeps the focus; false when nothing was typed.
bool CSetupWin::cancelTyping() {
    if (!keyCtrl || keyCtrl->type != ctrlEdit) return false;
    auto* edit = static_cast<CEdit*>(keyCtrl);
    if (edit->text == edit->oldText || !edit->keyDown(keyEscape, 0)) return false;
    setKeyCtrl(edit);
    return true;
}

bool CSetupWin::keyDown(int key, int mods) {
    constexpr int keyF4 = keyF1 - 3;
    if (key == keyTab && (mods & modControl)) {
        app->nextWin(this, mods);
        return true;
    }
    if (key == keyTab) return nextCtrl(mods & modShift ? -1 : 1);
    if (key == keyEscape && cancelTyping()) return true;
    if (key == keyEscape || (key == keyF4 && (mods & modAlt))) {
        hide();
        return true;
    }
    CCtrl* const field = keyCtrl;
    const CGroup* const shownPage = page;
    if (offerFocus(key, mods)) {
        // A field that Return has ended keeps the focus, unless it is gone with its page.
        if (visible && !keyCtrl && field && page == shownPage) setKeyCtrl(field);
        return true;
    }
    return (app->onKey && (*app->onKey)(this, key, mods)) || ownKey(key, mods);
}
