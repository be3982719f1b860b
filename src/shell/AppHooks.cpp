#include "shell/AppHooks.h"

#include "base/Messages.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/dialogs/MessageBox.h"
#include "shell/CMainWin.h"
#include "shell/DialogPlaces.h"
#include "shell/Pages.h"
#include "surfaces/CMIDIMapWin.h"
#include "ui/LoopTick.h"

namespace {

// Hooks of base are plain functions, so what they act on stands here while the program runs.
CApp* hookApp = nullptr;
CMainWin* hookWin = nullptr;

void pump() {
    hookWin->pumping++;
    hookApp->dispatchEvents();
    hookApp->idle();
    hookWin->pumping--;
}

void showStatus(const CStr& text) {
    hookWin->setStatus(text, true);
}

} // namespace

AppHooks::AppHooks(CApp* app, CMainWin* window)
    : mainWin(window), places(std::make_unique<DialogPlaces>(app, static_cast<CQV*>(window->comp))),
      timers(std::make_unique<LoopTick>(app, window)) {
    hookApp = app;
    hookWin = window;
    installMessageBox(app);
    messageHooks().pumpIdle = pump;
    messageHooks().setStatus = showStatus;
    setEditorHooks(this);
}

AppHooks::~AppHooks() {
    setEditorHooks(nullptr);
    messageHooks() = MessageHooks();
    hookApp = nullptr;
    hookWin = nullptr;
}

void AppHooks::mainIdle() {
    mainWin->idle();
}

void AppHooks::showEditor(CComp* comp, bool show) {
    if (!show) return hideEditors(comp);
    if (mainWin->pages) mainWin->openEditor(comp);
}

void AppHooks::hideEditors(CComp* comp) {
    while (CCompEditor* editor = editorOf(comp)) editor->hide();
}

void AppHooks::deleteEditors(CComp* comp) {
    hideEditors(comp);
    mainWin->dropEditor(comp);
}

bool AppHooks::editorVisible(CComp* comp) {
    return editorOf(comp) != nullptr;
}

void AppHooks::editMap(CComp* host) {
    showEditor(host, !editorVisible(host));
}

void AppHooks::refreshMap(CComp* host) {
    if (auto* window = dynamic_cast<CMIDIMapWin*>(editorOf(host))) window->rebuild();
}

void AppHooks::idle(CComp* comp) {
    if (CCompEditor* editor = editorOf(comp)) editor->idle();
}

CCompEditor* AppHooks::editorOf(const CComp* comp) const {
    return mainWin->pages ? mainWin->pages->editorOf(comp) : nullptr;
}
