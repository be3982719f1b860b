#include "surfaces/SurfacesRoom.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "engine/DeviceMidi.h"
#include "gui/CApp.h"
#include "surfaces/CConfigWin.h"
#include "surfaces/CMIDIMapWin.h"
#include "surfaces/Mackie.h"
#include "surfaces/SurfaceTarget.h"
#include "ui/Commands.h"
#include "ui/EditorTable.h"
#include "ui/Workspace.h"

namespace {

constexpr const char *section = "options", *surfaceKey = "surface", *oscPortKey = "oscport",
                     *oscTargetKey = "oscto";

} // namespace

SurfacesRoom::SurfacesRoom(Workspace& space, EditorTable& editors, std::function<CComp*()> front)
    : surface(space.host()), workspace(space),
      osc(space.host(), {front, [&space](const std::string& name) {
                             const bool busy = space.pumping || space.mainWindow()->app->modalWin;
                             CAction* action = space.commands().getAction(name.c_str());
                             if (action && !busy && space.canRun(action)) space.runAction(action);
                         }}) {
    CQV* host = space.host();
    editors.enter(*host, [host](Workspace& around, CComp&) {
        return std::make_unique<CMIDIMapWin>(around, *host);
    });
    space.commands().bind(
        "maps", [&space, host] { space.openEditor(host); }, {},
        [&space, host] { return space.isOpen(host); });
    space.commands().bind(
        "surface", [this] { showConfig(); }, {}, [this] { return window && window->visible; });
    surface.target = [host, front](int index) { return surfaceParamOf(host, front(), index); };
    surface.stepTrack = [host](int by) { stepSelectedTrack(host, by); };
    surface.open(iniReadString(section, surfaceKey, ""));
    surface.sysexOut = [this, host](const MidiBytes& bytes) {
        return surface.feedback >= 0 && host->aam &&
               host->aam->sendExclusive(surface.feedback, bytes);
    };
    host->deviceMidi->onExclusive = [this](int, std::span<const unsigned char> bytes) {
        surface.handleSysex(bytes);
    };
    feedbackName = iniReadString(section, "surfaceout", "");
    openOsc();
}

SurfacesRoom::~SurfacesRoom() {
    workspace.host()->deviceMidi->onExclusive = nullptr;
}

bool SurfacesRoom::openFile(const CStr& path) {
    if (!sameText(extractFileExt(path), ".qcs") || !surface.open(path)) return false;
    if (window) window->rebuild();
    workspace.setStatus("Control surface: " + extractFileName(path));
    return true;
}

void SurfacesRoom::showConfig() {
    if (window && window->visible) return window->hide();
    if (!window) window = std::make_unique<CConfigWin>(workspace, *this);
    window->rebuild();
    window->show(true);
}

/// Outputs are known by their names, once the driver has told them.
void SurfacesRoom::findFeedback() {
    CAAM* driver = workspace.host()->aam;
    for (int i = 0; driver && i < driver->getMIDIOutCount(); i++)
        if (driver->midiOutName(i) == feedbackName) surface.feedback = i;
    if (surface.feedback >= 0) feedbackName = "";
}

void SurfacesRoom::idle() {
    if (!feedbackName.empty()) findFeedback();
    surface.idle();
    serveControl();
    serveOsc();
    if (window && window->visible) window->idle();
}

/// The surface with a protocol of its own, on the ports that the setup tells.
void SurfacesRoom::serveControl() {
    CQV* host = workspace.host();
    DeviceMidi& midi = *host->deviceMidi;
    if (midi.controlIn < 0 || !host->aam) return control.reset();
    if (!control)
        control = std::make_unique<Mackie>(
            host,
            [&midi](int message) {
                if (midi.controlOut >= 0)
                    midi.outside.push({message, int8_t(int(midi.controlOut)), {}, 0});
            },
            [&midi, host](const std::vector<unsigned char>& bytes) {
                if (midi.controlOut >= 0) host->aam->sendExclusive(midi.controlOut, bytes);
            });
    for (AamEvent event{}; midi.control.pop(event);) control->receive(event.data);
    control->idle();
}

// Open Sound Control.

void SurfacesRoom::openOsc() {
    oscPort.listen(iniReadInt(section, oscPortKey, 0));
    oscPort.sendTo(iniReadString(section, oscTargetKey, ""));
}

CStr SurfacesRoom::setOscPort(int port) {
    CIniFile(inifile).writeInteger(section, oscPortKey, port);
    return oscPort.listen(port) ? CStr() : "Port " + asStr(port) + " is taken by another program";
}

CStr SurfacesRoom::setOscTarget(const CStr& address) {
    CIniFile(inifile).writeString(section, oscTargetKey, address);
    osc.forgetTold();
    return oscPort.sendTo(address) ? CStr() : CStr("An address is written as 192.168.1.20:9000");
}

void SurfacesRoom::serveOsc() {
    oscPort.serve([this](const std::string& path, const std::vector<double>& numbers) {
        osc.receive(path, numbers);
    });
    if (oscPort.sends())
        osc.idle(
            [this](const std::string& path, const OscValue& value) { oscPort.send(path, value); });
}

/// What is in no file yet is kept beside the settings.
void SurfacesRoom::writeSettings() {
    if (surface.changed) surface.save(extractFilePath(inifile) + "surface.qcs");
    CIniFile(inifile).writeString(section, surfaceKey, surface.path);
}
