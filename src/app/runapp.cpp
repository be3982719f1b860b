#include "app/runapp.h"

#include "app/AppHooks.h"
#include "app/DeviceSettings.h"
#include "app/TextAndScale.h"
#include "app/main/CMainWin.h"
#include "app/main/ProjectFlows.h"
#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Paths.h"
#include "base/Process.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"
#include "gui/CApp.h"
#include "project/CompTable.h"

#include <memory>

namespace {

constexpr const char* settingsName = "Sondrava.ini";
constexpr const char* settingsFolder = ".Sondrava";
constexpr int heartbeatMs = 40;

/// Beside the program, or in the home folder when that cannot be written.
CStr findSettings() {
    const CStr beside = extractFilePath(asAppname()) + settingsName;
    if (!isReadOnly(beside)) return beside;
    const CStr folder = addSep(getHomeFolder()) + settingsFolder;
    if (!folderExists(folder)) createDir(folder);
    return folderExists(folder) ? addSep(folder) + settingsName : beside;
}

void readWindowPlace(CIniFile& ini, CEditorStruct& place) {
    place.maximized = ini.readInteger("editor", "maximized", 0);
    place.left = ini.readInteger("editor", "left", 100);
    place.top = ini.readInteger("editor", "top", 100);
    place.width = ini.readInteger("editor", "width", 960);
    place.height = ini.readInteger("editor", "height", 640);
}

/// What lives for the length of a run, and dies in the order that this needs: the bridge first, so
/// that no callback arrives any more, then the window, the host, the application.
struct Program {
    std::unique_ptr<CApp> app;
    std::unique_ptr<CQV> host;
    std::unique_ptr<AppHooks> hooks;
    std::unique_ptr<CMainWin> window;
    std::unique_ptr<CAAM> bridge;

    void tearDown() {
        app->killTimer(window.get());
        bridge.reset();
        host->aam = aam = nullptr;
        hooks.reset();
        window.reset();
        host.reset();
        qv = nullptr;
        app.reset();
    }
};

} // namespace

int runapp() {
    Program p;
    markInterfaceThread();
    raiseFileLimit();
    inifile = findSettings();
    auto ini = std::make_unique<CIniFile>(inifile);
    readTextAndScale(*ini);
    p.app = std::make_unique<CApp>();
    if (!p.app->open()) return 1;
    enterCompTypes();
    p.host = std::make_unique<CQV>();
    qv = p.host.get();
    qv->posX = 100;
    qv->posY = 300;
    p.bridge = std::make_unique<CAAM>(libio);
    qv->aam = aam = p.bridge.get();
    p.bridge->onChange = new _COnChange<CQV>(qv, &CQV::aamChanged);
    readWindowPlace(*ini, qv->editorStruct);
    p.window = std::make_unique<CMainWin>(p.app.get(), qv);
    p.hooks = std::make_unique<AppHooks>(p.app.get(), p.window.get());
    p.window->show(true);
    p.bridge->windowHandle = p.window->handle;
    openAudio(*ini, p.bridge.get());
    enableMidi(*ini, p.bridge.get());
    qv->aamChanged(nullptr);
    ini.reset();
    p.app->addTimer(p.window.get(), heartbeatMs, true);
    qv->init();
    p.window->init();
    p.window->flows->start();
    if (qv->editorStruct.maximized) p.window->maximize();
    p.app->run(p.window.get());
    p.tearDown();
    return 0;
}
