#include "app/main/MainMenu.h"

#include "app/CAction.h"
#include "app/main/CMainWin.h"
#include "app/main/Displays.h"
#include "app/main/MainActions.h"
#include "app/main/MainRibbon.h"
#include "app/main/MidiFiles.h"
#include "app/main/Pages.h"
#include "app/main/ProjectFlows.h"
#include "app/main/SongActions.h"
#include "app/main/SongImports.h"
#include "app/render/CRenderWin.h"
#include "app/render/RenderActions.h"
#include "base/Messages.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/controls/CPopup.h"
#include "sequencer/CTrack.h"
#include "sequencer/Freezing.h"

#include <iterator>

namespace {

constexpr const char* aboutText =
    "Sondrava 2.0 - alpha\n\nA digital audio workstation for Linux.\n\n"
    "Free software under the GNU General Public License, version 3 or later.";

enum ImportTag : int { audioFiles, midiFiles, soundFiles };

struct TrackChoice {
    int kind;
    const char* text;
};
constexpr TrackChoice trackChoices[] = {{trackMIDI, "Instrument track"},
                                        {trackAudio, "Audio track"},
                                        {trackDrum, "Drum track"},
                                        {trackFolder, "Folder"}};

} // namespace

MainMenu::MainMenu(CMainWin* mainWin, CQV* host)
    : window(mainWin), qv(host), bar(new CMenu(mainWin, "menu")) {
    rebuild();
    window->addMenu(bar);
    ribbon = std::make_unique<MainRibbon>(window, qv, bar);
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
    if (page) {
        page->mergeMenu(bar);
    } else if (songOf(qv)) {
        entry("Song", menuSong);
        entry("Track", menuTrack);
        entry("Part", menuPart);
    }
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
    } menus[] = {{menuFile, &MainMenu::fillFile}, {menuEdit, &MainMenu::fillEdit},
                 {menuView, &MainMenu::fillView}, {menuTrack, &MainMenu::fillTrack},
                 {menuSong, &MainMenu::fillSong}, {menuPart, &MainMenu::fillPart},
                 {menuHelp, &MainMenu::fillHelp}};
    auto* popup = static_cast<CPopup*>(static_cast<CCtrl*>(sender));
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

/// An action with its shortcut; nothing when it has no effect at present.
CMenuItem* MainMenu::addAction(CPopup* popup, const char* name, const CStr& text) {
    CAction* action = window->getAction(name);
    if (!action || !window->knows(action)) return nullptr;
    CStr line = text.empty() ? action->label : text;
    const CStr shortcut = window->shortcutOf(action);
    if (!shortcut.empty()) line += "\t" + shortcut;
    auto* clicked = new _COnChange<CMainWin>(window, &CMainWin::actionClicked);
    CMenuItem* item = popup->add(line, clicked);
    item->userPtr = action;
    item->enabled = window->songActions->ready(action);
    item->checked = window->mainActions->isOn(action) || window->songActions->isOn(action);
    return item;
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
    popup->addSeparator();
    addAction(popup, "save");
    addAction(popup, "saveas");
    add(popup, "Set as Default Project", &MainMenu::defaultClicked);
    popup->addSeparator();
    addAction(popup, "render", "Export Project (wav, aif, mp3)...");
    if (songOf(qv)) {
        add(popup, "Export to MIDI file...", &MainMenu::exportClicked);
        popup->addSeparator();
        add(popup, "Import audio...", &MainMenu::importClicked, audioFiles);
        add(popup, "Import MIDI file...", &MainMenu::importClicked, midiFiles);
        add(popup, "Import sound or clip...", &MainMenu::importClicked, soundFiles);
        popup->addSeparator();
    }
    addAction(popup, "setup", "Setup...");
    popup->addSeparator();
    fillRecent(popup);
    popup->addSeparator();
    add(popup, "Exit", &MainMenu::exitClicked);
}

void MainMenu::fillNew(CPopup* popup) {
    addAction(popup, "new", "Welcome...");
    popup->addSeparator();
    for (int kind = 0; kind < offeredKinds; kind++)
        add(popup, projectKindName(kind), &MainMenu::kindClicked, kind);
    add(popup, "Demo song", &MainMenu::kindClicked, kindDemo);
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
    window->flows->newProject(static_cast<CMenuItem*>(sender)->tag, "");
}

void MainMenu::recentClicked(CObject* sender) {
    const int index = static_cast<CMenuItem*>(sender)->tag;
    window->flows->newProject(kindFile, window->flows->recent.paths.get(index));
}

void MainMenu::defaultClicked(CObject*) {
    window->flows->setDefaultClicked();
}

void MainMenu::importClicked(CObject* sender) {
    SongImports* imports = window->imports.get();
    switch (static_cast<CMenuItem*>(sender)->tag) {
    case audioFiles:
        return imports->audioClicked();
    case midiFiles:
        return imports->midiClicked();
    case soundFiles:
        return imports->soundClicked();
    }
}

void MainMenu::exportClicked(CObject*) {
    exportMIDIClicked(window, songOf(qv));
}

void MainMenu::exitClicked(CObject*) {
    window->hide();
}

// The others.

void MainMenu::addUndo(CPopup* popup, const char* name, const CStr& what) {
    CStr text = window->getAction(name)->label;
    if (!what.empty()) text += " " + what;
    CMenuItem* item = addAction(popup, name, text);
    item->enabled = !what.empty();
}

void MainMenu::fillEdit(CPopup* popup) {
    addUndo(popup, "undo", qv->undoText());
    addUndo(popup, "redo", qv->redoText());
    if (songOf(qv))
        addGroups(popup, {{"cut", "copy", "paste", "duplicate", "delete"}, {"selectAll"}});
}

void MainMenu::fillView(CPopup* popup) {
    for (const char* page : {"browser", "mixer", "priorpage", "nextpage"}) addAction(popup, page);
    if (CCompEditor* page = window->pages->current()) {
        page->fillCaptionMenu(popup->addSub("Page"));
        add(popup, "Close all", &MainMenu::closeAllClicked);
    }
    popup->addSeparator();
    add(popup, "Spectrum", &MainMenu::spectrumClicked)->checked =
        qv->settings.getInt("dft", 1) != 0;
    add(popup, "Hints", &MainMenu::hintsClicked)->checked = window->hintsShown();
    add(popup, "Ribbon", &MainMenu::ribbonClicked)->checked = ribbon->shown();
}

void MainMenu::spectrumClicked(CObject*) {
    qv->settings.setInt("dft", !qv->settings.getInt("dft", 1));
}

void MainMenu::hintsClicked(CObject*) {
    window->setHints(!window->hintsShown());
}

void MainMenu::ribbonClicked(CObject*) {
    ribbon->toggle();
}

void MainMenu::closeAllClicked(CObject*) {
    window->pages->closeDocked();
}

void MainMenu::fillSong(CPopup* popup) {
    addGroups(popup,
              {{"play", "record", "stop", "loop", "metronome"},
               {"rewind", "rewindToPlay", "priorbeat", "nextbeat", "leftlocator", "rightlocator"},
               {"playselection", "loopselection"},
               {"addmarker", "deletemarker", "priormarker", "nextmarker", "timesig-add"},
               {"insertbars", "removebars"},
               {"priorprog", "nextprog"}});
}

void MainMenu::fillPart(CPopup* popup) {
    addGroups(popup, {{"quantize", "splitatcursor", "glue", "crossfade"},
                      {"mutepart", "unghost"},
                      {"snap", "snapPrior", "snapNext"}});
}

void MainMenu::fillTrack(CPopup* popup) {
    CPopup* kinds = popup->addSub("Add track");
    for (const TrackChoice& choice : trackChoices)
        add(kinds, choice.text, &MainMenu::trackClicked, choice.kind);
    popup->addSeparator();
    for (const char* name : {"mute", "solo"}) addAction(popup, name);
    popup->addSeparator();
    if (CMenuItem* freeze = addAction(popup, "freeze"))
        freeze->checked = window->renderActions->frozen();
    addAction(popup, "bounce");
    fillBounce(popup->addSub("Bounce range"));
}

void MainMenu::fillBounce(CPopup* popup) {
    const int present = readBounceRange(qv);
    for (int range = rangeSong; range <= rangeSelected; range++)
        add(popup, renderRangeName(range), &MainMenu::bounceClicked, range)->checked =
            range == present;
}

void MainMenu::bounceClicked(CObject* sender) {
    writeBounceRange(qv, static_cast<CMenuItem*>(sender)->tag);
}

void MainMenu::trackClicked(CObject* sender) {
    window->songActions->addTrack(static_cast<CMenuItem*>(sender)->tag);
}

void MainMenu::fillHelp(CPopup* popup) {
    add(popup, "About...", &MainMenu::aboutClicked);
}

void MainMenu::aboutClicked(CObject*) {
    showMsg(window, "About", aboutText);
}
