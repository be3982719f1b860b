#include "shell/runapp.h"

#include "access/AccessLoader.h"
#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "base/Process.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"
#include "gui/CApp.h"
#include "gui/Monitors.h"
#include "plugins/vst2/Vst2Plugin.h"
#include "project/CompTable.h"
#include "sequencer/song/Templates.h"
#include "shell/AppHooks.h"
#include "shell/AppIcon.h"
#include "shell/CMainWin.h"
#include "shell/CommandLine.h"
#include "shell/Rooms.h"
#include "shell/TextAndScale.h"
#include "ui/DeviceSettings.h"

#include <cstdio>
#include <memory>

namespace {

constexpr const char* settingsName = "Sondrava.ini";
constexpr const char* programName = "Sondrava";
constexpr int heartbeatMs = 40;

/// In the middle of the monitor with the pointer.
CRect firstPlace() {
    constexpr int percent = 80;
    const CRect room = monitorOf(nullptr);
    const int w = asMinMax(CMainWin::smallestWidth, room.width() * percent / 100, room.width());
    const int h = asMinMax(CMainWin::smallestHeight, room.height() * percent / 100, room.height());
    const CPoint at = centredIn(room, w, h, room);
    return asRect(at.x, at.y, at.x + w, at.y + h);
}

void readWindowPlace(CIniFile& ini, CEditorStruct& place) {
    place.maximized = ini.readInteger("editor", "maximized", 0);
    const CRect first = firstPlace();
    place.left = ini.readInteger("editor", "left", first.left);
    place.top = ini.readInteger("editor", "top", first.top);
    place.width = ini.readInteger("editor", "width", first.width());
    place.height = ini.readInteger("editor", "height", first.height());
}

/// A scale, or another display, may leave less room than there was.
void keepOnScreen(CEditorStruct& place) {
    const CRect room =
        monitorAt(asPoint(place.left + place.width / 2, place.top + place.height / 2));
    place.width = asMin(place.width, room.width());
    place.height = asMin(place.height, room.height());
    place.left = asMinMax(place.left, room.left, room.right - place.width);
    place.top = asMinMax(place.top, room.top, room.bottom - place.height);
}

} // namespace

ProgramRun::ProgramRun() = default;

ProgramRun::~ProgramRun() {
    if (!host) return;
    app->killTimer(window.get());
    access.reset();
    bridge.reset();
    host->aam = aam = nullptr;
    hooks.reset();
    window.reset();
    host.reset();
    qv = nullptr;
}

bool ProgramRun::open() {
    markInterfaceThread();
    raiseFileLimit();
    inifile = ownFile(extractFilePath(asAppname()), settingsName);
    CIniFile ini(inifile);
    readTextAndScale(ini);
    app = std::make_unique<CApp>();
    if (!app->open()) return false;
    app->icon = appIcon();
    app->isPluginCode = &Vst2Plugin::isCode;
    enterCompTypes();
    host = std::make_unique<CQV>();
    qv = host.get();
    qv->posX = 100;
    qv->posY = 300;
    bridge = std::make_unique<CAAM>(libio);
    qv->aam = aam = bridge.get();
    bridge->onChange = new _COnChange<CQV>(qv, &CQV::aamChanged);
    readWindowPlace(ini, qv->editorStruct);
    keepOnScreen(qv->editorStruct);
    window = std::make_unique<CMainWin>(app.get(), qv);
    hooks = std::make_unique<AppHooks>(app.get(), window.get());
    window->show(true);
    access = std::make_unique<AccessLoader>(app.get(), window.get(), programName);
    bridge->windowHandle = window->handle;
    openAudio(ini, bridge.get());
    enableMidi(ini, bridge.get());
    chooseMidiRoles(ini, qv);
    qv->aamChanged(nullptr);
    return true;
}

void ProgramRun::run(const std::vector<CStr>& files) {
    app->addTimer(window.get(), heartbeatMs, true);
    qv->init();
    startUnlooped(qv);
    window->init();
    window->begin(files);
    qv->idle(); // the first paint shows all as it is
    window->rooms->plugins.refreshSoon();
    if (qv->editorStruct.maximized) window->maximize();
    app->run(window.get());
}

int runapp(int argc, char** argv) {
    const CommandLine line = readCommandLine({argv + 1, argv + argc});
    std::fputs(line.mistake.asChar(), stderr);
    if (!line.mistake.empty()) return 1;
    std::fputs(line.answer.asChar(), stdout);
    if (!line.answer.empty()) return 0;
    ProgramRun program;
    if (!program.open()) return 1;
    program.run(line.files);
    return 0;
}
