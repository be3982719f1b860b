#include "shell/MainMenu.h"

#include "base/Paths.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "shell/CMainWin.h"
#include "shell/MainRibbon.h"
#include "shell/Pages.h"
#include "shell/ProjectFlows.h"
#include "ui/ActionItems.h"
#include "ui/MenuTags.h"
#include "ui/Song.h"

#include <iterator>

MainMenu::MainMenu(CMainWin* mainWin, CQV* host)
    : window(mainWin), qv(host), bar(new CMenu(mainWin, "menu")) {
    rebuild();
    window->addMenu(bar);
    ribbon = std::make_unique<MainRibbon>(window, bar);
}

MainMenu::~MainMenu() = default;

void MainMenu::rebuild() {
    bar->clear();
    const auto entry = [&](const char* text, int entryTag) {
        bar->add(text, new _COnChange<MainMenu>(this, &MainMenu::menuClicked), entryTag);
    };
    entry("File", menuFile);
    entry("Edit", menuEdit);
    entry("View", menuView);
    CCompEditor* page = window->pages ? window->pages->current() : nullptr;
    if (page) page->mergeMenu(bar);
    entry("Help", menuHelp);
    bar->redraw();
    if (ribbon) ribbon->rebuild();
}

void MainMenu::focus() {
    window->setKeyCtrl(bar);
}

void MainMenu::refresh() {
    ribbon->refresh();
}

void MainMenu::menuClicked(CObject* sender) {
    static constexpr struct {
        int tag;
        void (MainMenu::*fill)(CPopup* popup);
    } menus[] = {{menuFile, &MainMenu::fillFile},
                 {menuEdit, &MainMenu::fillEdit},
                 {menuView, &MainMenu::fillView},
                 {menuHelp, &MainMenu::fillHelp}};
    auto* popup = static_cast<CPopup*>(sender);
    for (const auto& menu : menus)
        if (menu.tag == popup->tag) (this->*menu.fill)(popup);
}

// Entries.

CMenuItem* MainMenu::add(CPopup* popup, const CStr& text, void (MainMenu::*chosen)(CObject*),
                         int entryTag) {
    CMenuItem* item = popup->add(text, new _COnChange<MainMenu>(this, chosen));
    item->tag = entryTag;
    return item;
}

void MainMenu::addAction(CPopup* popup, const char* name, const CStr& text) {
    addActionItem(popup, *window, name, text);
}

void MainMenu::addGroups(CPopup* popup,
                         std::initializer_list<std::initializer_list<const char*>> groups) {
    for (const auto& group : groups) {
        popup->addSeparator();
        for (const char* name : group) addAction(popup, name);
    }
}

// File.

void MainMenu::fillFile(CPopup* popup) {
    fillNew(popup->addSub("New..."));
    addAction(popup, "open");
    addAction(popup, "openlast");
    addGroups(popup, {{"save", "saveas", "setdefault"}});
    popup->addSeparator();
    addAction(popup, "render", "Export Project (wav, aif, mp3)...");
    for (const char* name : {"exportmidi", "exportdaw", "collect"}) addAction(popup, name);
    addGroups(popup, {{"importaudio", "importmidi", "importdaw", "importsound"}});
    popup->addSeparator();
    addAction(popup, "setup", "Setup...");
    popup->addSeparator();
    fillRecent(popup);
    addGroups(popup, {{"exit"}});
}

void MainMenu::fillNew(CPopup* popup) {
    addAction(popup, "new", "Welcome...");
    popup->addSeparator();
    for (int kind = 0; kind < offeredKinds; kind++)
        add(popup, projectKindName(kind), &MainMenu::kindClicked, kind);
    popup->addSeparator();
    fillDemos(popup);
}

void MainMenu::fillDemos(CPopup* popup) {
    add(popup, "Demo song", &MainMenu::kindClicked, kindDemo);
    add(popup, "Second demo song: Waltz", &MainMenu::kindClicked, kindWaltz);
}

void MainMenu::fillRecent(CPopup* popup) {
    const CStringList& paths = window->flows->recent.paths;
    for (int i = 0; i < paths.count(); i++) {
        const CStr path = paths.get(i);
        add(popup, changeFileExt(extractFileName(path), ""), &MainMenu::recentClicked, i)->checked =
            sameText(path, qv->projectFile);
    }
}

void MainMenu::showRecent(int x, int y) {
    auto* popup = new CPopup(window->app, window);
    popup->autoDelete = true;
    fillRecent(popup);
    if (popup->items.empty()) popup->add("No recent projects", nullptr)->enabled = false;
    popup->popup(x, y);
}

void MainMenu::kindClicked(CObject* sender) {
    window->flows->newProject(tagOf(sender), "");
}

void MainMenu::recentClicked(CObject* sender) {
    const int index = tagOf(sender);
    window->flows->newProject(kindFile, window->flows->recent.paths.get(index));
}

// The others.

/// Tells what is undone.
void MainMenu::addUndo(CPopup* popup, const char* name, const CStr& what) {
    const CStr text = window->getAction(name)->label;
    addAction(popup, name, what.empty() ? text : text + " " + what);
}

void MainMenu::fillEdit(CPopup* popup) {
    addUndo(popup, "undo", qv->undoText());
    addUndo(popup, "redo", qv->redoText());
    if (songOf(qv) || window->pages->firstInFront())
        addGroups(popup, {{"cut", "copy", "paste", "duplicate", "delete"}, {"selectAll"}});
}

void MainMenu::fillView(CPopup* popup) {
    for (const char* page : {"modular", "arrangement", "browser", "searchall", "mixer", "maps",
                             "surface", "playlist", "priorpage", "nextpage"})
        addAction(popup, page);
    if (CCompEditor* page = window->pages->current()) {
        page->fillCaptionMenu(popup->addSub("Page"));
        addAction(popup, "closeall");
    }
    if (window->pages->firstInFront())
        addGroups(popup, {{"tidygraph", "fitgraph", "zoomin", "zoomout", "find"},
                          {"graphside", "midicables", "audiocables", "othercables"}});
    else
        addGroups(popup, {{"zoomin", "zoomout", "zoomselection", "zoomsong", "zoomback"},
                          {"rowshigher", "rowslower"},
                          {"autoscroll", "glide"}});
    addGroups(popup, {{"spectrum", "hints", "ribbon"}});
}

void MainMenu::fillHelp(CPopup* popup) {
    fillDemos(popup);
    popup->addSeparator();
    addAction(popup, "checkupdates");
    addAction(popup, "about");
}
