#include "app/AppHooks.h"

#include "app/main/CMainWin.h"
#include "base/Messages.h"
#include "gui/CApp.h"
#include "gui/dialogs/MessageBox.h"

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

AppHooks::AppHooks(CApp* app, CMainWin* window) : mainWin(window) {
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
