#include "shell/CMainWin.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/Keys.h"
#include "gui/Selections.h"
#include "gui/XConnection.h"
#include "modular/ModularPage.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "setup/CSetupWin.h"
#include "shell/BrowserSide.h"
#include "shell/MainCommands.h"
#include "shell/MainMenu.h"
#include "shell/Pages.h"
#include "shell/ProjectFlows.h"
#include "shell/Rooms.h"
#include "shell/StartFiles.h"
#include "shell/StatusLine.h"
#include "shell/Toolbar.h"
#include "ui/Shortcuts.h"
#include "ui/Song.h"

namespace {

constexpr const char* windowTitle = "Sondrava2.0 - alpha";
constexpr int mainStyle =
    winManaged | winCaption | winSizable | winMinButton | winMaxButton | winMain;
constexpr int leastSide = 64, mostSide = 16384; ///< of a place from a file
constexpr int keyF10 = keyF1 - 9;

/// What a key does in every window, whatever the shortcuts; null for nothing.
const char* fixedAction(int key) {
    constexpr struct {
        int key;
        const char* action;
    } fixed[] = {{keyHome, "rewind"},
                 {keyMediaStop, "stop"},
                 {keyMediaPrior, "rewind"},
                 {keyMediaNext, "nextmarker"},
                 {keyMediaRecord, "record"}};
    for (const auto& f : fixed)
        if (f.key == key) return f.action;
    return nullptr;
}

} // namespace

CMainWin::CMainWin(CApp* application, CQV* host)
    : ProgramTables(host), CCompEditor(application, nullptr, windowTitle, host->editorStruct.left,
                                       host->editorStruct.top, host->editorStruct.width,
                                       host->editorStruct.height, mainStyle, host, &table),
      flows(std::make_unique<ProjectFlows>(this, host)),
      rooms(std::make_unique<Rooms>(
          *this, flows->mixer, [this](const CStr& path) { flows->newProject(kindFile, path); },
          [this] { return frontComp(); })),
      theme(application, host), mainCommands(std::make_unique<MainCommands>(this)) {
    minWidth = asMin(smallestWidth, screenWidth());
    minHeight = smallestHeight;
    table.readShortcuts();
    choices.hints.onChange = [this] {
        if (!choices.hints.on()) setStatus("");
    };
    const auto secondAlt = [this] { setSecondAlt(SecondAlt(choices.altKey.get())); };
    choices.altKey.onChange = secondAlt;
    secondAlt();
    choices.outlineParts.onChange = [this] {
        for (auto* editor : editors) editor->redraw();
    };
    choices.tabsAlways.onChange = [this] { pages->showTabs(choices.tabsAlways.on()); };
    app->follow(this);
    app->inputHeld = [this] {
        if (!qv->stepOnItsWay()) return false;
        qv->tasks->pump();
        qv->undoIdle();
        return qv->stepOnItsWay();
    };
    wire(app->onKey, new _COnKey(this, &CMainWin::handleKeyDown));
    wire(app->onHint, new _COnChange(this, &CMainWin::appHint));
    wire(app->onStrayDrop, new _COnChange<CMainWin>(this, &CMainWin::mainDrop));
}

CMainWin::~CMainWin() {
    app->inputHeld = nullptr;
    wire(app->onKey, nullptr);
    wire(app->onHint, nullptr);
    wire(app->onStrayDrop, nullptr);
}

void CMainWin::init() {
    mainMenu = std::make_unique<MainMenu>(this, qv);
    const int w = clientGroup->width, h = clientGroup->height;
    bar = new Toolbar(this, qv, w);
    addControl(bar);
    status = new StatusLine(this, qv, h - StatusLine::lineHeight, w,
                            new _COnChange<CMainWin>(this, &CMainWin::deviceClicked));
    addControl(status);
    const int below = Toolbar::barHeight;
    addGraph();
    pages = std::make_unique<Pages>(this, qv, graph, below, int(StatusLine::lineHeight));
    browser = std::make_unique<BrowserSide>(this, graph);
    resized();
    followNotices();
    idle();
    redraw();
    rooms->playlist.begin();
}

void CMainWin::begin(const std::vector<CStr>& files) {
    startFiles = std::make_unique<StartFiles>(this, files);
    startFiles->start();
}

void CMainWin::addGraph() {
    graph = new ModularPage(this, *this);
    addControl(graph);
    graph->menus().windowMenu = [this](CPopup* popup, CComp* edited) {
        if (CCompEditor* editor = pages->editorOf(edited)) editor->fillCaptionMenu(popup);
    };
    table.bind(
        "modular",
        [this] {
            pages->showFirst();
            graph->takeKeys();
        },
        {}, [this] { return pages->firstInFront(); });
}

void CMainWin::onTimer() {
    if (!flows->loading()) qv->idle();
    if (!pumping) flows->tick();
    if (!flows->loading()) rooms->arrange.imports.serve();
    if (pumping || flows->coming()) return;
    if (startFiles) startFiles->serve();
    rooms->exchange.serve();
    rooms->playlist.serve();
    mainCommands->serve();
}

void CMainWin::followNotices() {
    links = {router.on({.host = HostNotice::graph}, [this] { resized(); }),
             router.on({.host = HostNotice::devices}, [this] { status->devicesChanged(); }),
             router.on({.host = HostNotice::pages}, [this] { updateDocker(); }),
             router.on({.host = HostNotice::transport}, [this] { redraw(); })};
}

PluginShelf& CMainWin::pluginShelf() {
    return rooms->plugins;
}

void CMainWin::idle() {
    if (!pages || flows->loading()) return;
    router.serve();
    flows->mixer.idle();
    rooms->plugins.idle();
    setCaptionText();
    graph->idle();
    bar->refresh();
    mainMenu->refresh();
    status->refresh();
    pages->followNames();
    browser->idle();
    rooms->surfaces.idle();
}

/// What the displays follow may be gone once the graph has changed, which the next tick tells them.
bool CMainWin::onFrame() {
    if (!pages || flows->loading() || qv->hostNotices.raised(HostNotice::graph | HostNotice::step))
        return false;
    return bar->followSound();
}

void CMainWin::hide() {
    if (visible) {
        if (pumping || flows->loading() || !flows->mayLeave()) return;
        flows->close();
        if (pages) pages->closeDocked();
        writeSettings();
    }
    CWin::hide();
}

void CMainWin::resized() {
    CCompEditor::resized();
    if (!pages) return;
    if (browser) pages->leaveRoom(browser->layout(Toolbar::barHeight, StatusLine::lineHeight));
    pages->layout();
}

// Pages.

void CMainWin::dockWin(CCompEditor* editor, int where, bool maximize, CUndo* undo) {
    pages->dockWin(editor, where, maximize, undo);
}

void CMainWin::updateDocker() {
    pages->update();
}

// Keys and actions.

bool CMainWin::keyDown(int key, int mods) {
    if (CCompEditor::keyDown(key, mods)) return true;
    if (key != keyF10 || mods != 0 || !mainMenu) return false;
    mainMenu->focus();
    return true;
}

bool CMainWin::handleKeyDown(CWin* from, int& key, int mods) {
    if (key == keyEscape && qv->values->dragging()) {
        qv->values->cancel();
        return true;
    }
    if (app->keyHookCtrl) {
        if (key == keyEscape) qv->mapLearn = 0;
        return key == keyEscape;
    }
    const CCtrl* target = from->keyTarget();
    const bool media = key <= keyMediaPlay && key >= keyMediaRecord;
    const bool typing = target && target->type == ctrlEdit && !media;
    if (mods != 0 || typing || app->modalWin || !app->menus.empty() || flows->loading())
        return false;
    if (key == ' ' || key == keyMediaPlay) return playOrStop();
    if (key == keyHome && target && from->keyTarget()->keyDown(key, mods)) return true;
    if (const char* name = fixedAction(key)) return onAction(getAction(name));
    if (key != keyEscape || from != this || !keyCtrl) return false;
    if (keyCtrl->keyDown(key, mods)) return true;
    setKeyCtrl(nullptr);
    return true;
}

/// While nothing else plays, a page may have something of its own to be heard.
bool CMainWin::playOrStop() {
    CAction* own = getAction("playrange");
    CCompEditor* page = pages ? pages->current() : nullptr;
    if (!qv->playing && page && page->canRun(own)) return page->onAction(own);
    return table.run(getAction(qv->playing ? "stop" : "play"));
}

/// The window that menus and buttons are about: one on the screen that has the keys, or the page in
/// front; null without any.
CCompEditor* CMainWin::asked() const {
    for (auto* editor : editors)
        if (!editor->isPage() && editor->hasFocus()) return editor;
    return pages ? pages->current() : nullptr;
}

/// That the window is about which has the keys, or the page in front; null without any.
CComp* CMainWin::frontComp() const {
    const CCompEditor* editor = asked();
    return editor && editor->comp != qv ? editor->comp : nullptr;
}

/// The first page is in front, and no window on the screen has the keys.
bool CMainWin::graphAsked() const {
    return graph && pages && pages->firstInFront() && !asked();
}

bool CMainWin::onAction(CAction* action) {
    if (flows->loading()) return false;
    CCompEditor* editor = asked();
    if (graphAsked() && graph->ownActions().run(action)) return true;
    return (editor && editor->onAction(action)) || table.run(action);
}

bool CMainWin::canRun(const CAction* action) const {
    const CCompEditor* editor = asked();
    if (graphAsked() && graph->ownActions().has(action)) return graph->ownActions().isReady(action);
    return (editor && editor->canRun(action)) || action->isReady();
}

bool CMainWin::isOn(const CAction* action) const {
    const CCompEditor* editor = asked();
    if (graphAsked() && graph->ownActions().isOn(action)) return true;
    return (editor && editor->isOn(action)) || action->isOn();
}

CStr CMainWin::shortcutOf(const CAction* action) const {
    const CCompEditor* editor = asked();
    const int asking = editor ? editor->editorType : editorType;
    const char* fixed = action->key == ' ' ? "play" : fixedAction(action->key);
    const bool mine = action->mods == 0 && fixed
                          ? action->name == fixed
                          : actions->find(action->key, action->mods, asking) == action;
    return mine ? shortcutToStr(action->key, action->mods) : CStr();
}

void CMainWin::actionClicked(CCtrl* sender) {
    onAction(static_cast<CAction*>(sender->userPtr));
}

/// What belongs to no song is opened, wherever it is dropped, and nothing is taken beside a dialog;
/// false for all else.
bool CMainWin::takesDrop() {
    if (app->modalWin) return true;
    for (auto* item : *app->dragList) {
        if (item->type == dropFile && opensFile(item->path)) return true;
    }
    return false;
}

bool CMainWin::opensFile(const CStr& path) {
    const CStr ext = extractFileExt(path);
    if (sameText(ext, ".qv"))
        flows->newProject(kindFile, path);
    else if (sameText(ext, ".qvl"))
        openTheme(app, qv, path);
    else
        return rooms->surfaces.openFile(path) || rooms->exchange.openFile(path);
    return true;
}

void CMainWin::mainDrop(CObject*) {
    if (!takesDrop()) rooms->arrange.imports.comeBeside(filesAmong(*app->dragList));
}

// What is shown.

void CMainWin::setStatus(const CStr& text, bool atOnce) {
    if (!status) return;
    hintShown = false;
    status->setText(text);
    if (atOnce) app->drawNow(this, status);
}

void CMainWin::appHint(CCtrl* ctrl) {
    if (!choices.hints.on()) return;
    CStr text = ctrl ? ctrl->hint : CStr();
    if (ctrl && !text.empty() && ctrl->userPtr) {
        const auto* action = static_cast<const CAction*>(ctrl->userPtr);
        const CStr shortcut = shortcutOf(action);
        if (!shortcut.empty()) text += "  (" + shortcut + ")";
    }
    if (text.empty() && !hintShown) return;
    setStatus(text);
    hintShown = !text.empty();
}

CStr CMainWin::dialogFolder() const {
    if (!projectFolder.empty()) return projectFolder;
    const CStr path = qv->projectFile.empty() ? RecentFiles::lastProject() : qv->projectFile;
    return path.empty() ? getHomeFolder() : extractFilePath(path);
}

void CMainWin::projectChanged() {
    if (!qv->projectFile.empty()) qv->updatePeaks();
    qv->hostNotices.raise(HostNotice::graph | HostNotice::pages | HostNotice::pool);
    setCaptionText();
    if (rooms->setup) rooms->setup->projectChanged();
    graph->opened();
    reopenEditor();
    resized();
    redraw();
}

/// The note editor is no node of the graph, whose windows open as the graph is read.
void CMainWin::reopenEditor() {
    CSeq* seq = songOf(qv);
    CEditorComp* editor = seq && pages ? seq->editorComp.get() : nullptr;
    if (editor && editor->part() && editor->editorStruct.visible && !pages->editorOf(editor))
        openEditor(editor);
}

void CMainWin::showSong() {
    CSeq* seq = songOf(qv);
    if (!seq || !pages) return;
    const CEditorStruct& record = seq->editorStruct;
    const bool placed = record.page > 0 || record.visible;
    const bool otherFront = placed && pages->waits();
    updateDocker();
    if (!otherFront || (!pages->current() && !pages->firstInFront())) openEditor(seq);
}

void CMainWin::forgetSong() {
    made.clear();
    if (graph) graph->forget();
    if (bar) bar->forgetSong();
}

void CMainWin::mdiChanged() {
    editorType = pages && pages->firstInFront() ? groupModular : groupGlobal;
    if (mainMenu) mainMenu->rebuild();
}

void CMainWin::showRecent(int x, int y) {
    mainMenu->showRecent(x, y);
}

void CMainWin::deviceClicked(CObject*) {
    onAction(getAction("setup"));
}

void CMainWin::setCaptionText() {
    const bool modified = qv->modified();
    if (modified == captionModified && captionFile == qv->projectFile) return;
    captionModified = modified;
    captionFile = qv->projectFile;
    CStr text = windowTitle;
    if (!captionFile.empty()) text += " - " + changeFileExt(extractFileName(captionFile), "");
    if (modified) text += " *";
    setCaption(text);
}

bool CMainWin::hasEditor(const CComp* edited) const {
    return edited && rooms->editors.has(*edited);
}

void CMainWin::openEditor(CComp* edited) {
    CCompEditor* editor = pages->editorOf(edited);
    if (editor) return pages->bringToFront(editor);
    for (const auto& known : made)
        if (known->comp == edited) return pages->open(known.get());
    if (!hasEditor(edited)) return;
    made.push_back(rooms->editors.make(*this, *edited));
    const CEditorStruct& place = *made.back()->dock;
    if (place.page < 0 && !place.visible) pages->addPage(made.back().get());
    pages->open(made.back().get());
}

bool CMainWin::isOpen(const CComp* edited) const {
    return pages && pages->editorOf(edited);
}

bool CMainWin::inFront(const CComp* edited) const {
    const CCompEditor* page = pages ? pages->current() : nullptr;
    return page && page->comp == edited;
}

bool CMainWin::canOpen(const CPart* part) const {
    const CSeq* seq = songOf(qv);
    const bool known =
        part && (part->type == partMIDI || part->type == partDrum || part->type == partAudio);
    return seq && known && hasEditor(seq->editorComp.get());
}

void CMainWin::openPart(CPart* part) {
    if (!canOpen(part)) return;
    CEditorComp* editor = songOf(qv)->editorComp.get();
    editor->setPart(part);
    openEditor(editor);
}

void CMainWin::dropEditor(const CComp* edited) {
    std::erase_if(made, [edited](const auto& editor) { return editor->comp == edited; });
}

// The place of the window.

void CMainWin::readPlace(CEditorStruct& place) {
    const bool large = hasStyle(winMaximized);
    const CPoint at = large ? asPoint(restoreRect.left, restoreRect.top) : getPos(true);
    const CPoint extent = large ? asPoint(restoreRect.right, restoreRect.bottom) : getSize();
    place.maximized = large;
    place.left = at.x;
    place.top = at.y;
    place.width = extent.x;
    place.height = extent.y;
}

void CMainWin::moveTo(const CEditorStruct& place) {
    const CRect screen = getDesktopBounds();
    const int roomX = screen.right - screen.left, roomY = screen.bottom - screen.top;
    const int w = asMinMax(place.width, leastSide, asMin(mostSide, roomX));
    const int h = asMinMax(place.height, leastSide, asMin(mostSide, roomY));
    if (hasStyle(winMaximized)) restore();
    move(asMinMax(place.left, screen.left, screen.right - w),
         asMinMax(place.top, screen.top, screen.bottom - h), w, h);
    if (place.maximized) maximize();
}

void CMainWin::writeSettings() {
    if (!qv->settingsEnabled) return;
    CEditorStruct place;
    readPlace(place);
    const CIniBatch batch(inifile);
    CIniFile ini(inifile);
    ini.writeInteger("editor", "maximized", place.maximized);
    ini.writeInteger("editor", "left", place.left);
    ini.writeInteger("editor", "top", place.top);
    ini.writeInteger("editor", "width", place.width);
    ini.writeInteger("editor", "height", place.height);
    if (bar) bar->writeSettings(ini);
    if (browser) browser->writeSettings();
    rooms->playlist.writeSettings();
    rooms->surfaces.writeSettings();
}
