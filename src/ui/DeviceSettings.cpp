#include "ui/DeviceSettings.h"

#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "engine/DeviceMidi.h"

#include <algorithm>
#include <vector>

namespace {

constexpr int framesWithoutDevice = 2048;
constexpr int keptChannels = 32, keptMidiPorts = 16;
constexpr int noDevice = -1;
constexpr const char *audio = "audio", *deviceKey = "device", *deviceNameKey = "devicename";

CStr numbered(const char* key, int i) {
    return CStr(key) + asStr(i);
}

/// Enables the audio channels of the settings, or the first two of each direction.
void enableChannels(CIniFile& ini, CAAM* bridge) {
    bool any = false;
    for (int i = 0; i < keptChannels; i++) {
        const int in = ini.readInteger("Audio inputs", numbered("channel", i), 0);
        const int out = ini.readInteger("Audio outputs", numbered("channel", i), 0);
        if (in) bridge->audioInEnable(i, 1);
        if (out) bridge->audioOutEnable(i, 1);
        any = any || in || out;
    }
    for (int i = 0; i < 2 && !any; i++) {
        bridge->audioInEnable(i, 1);
        bridge->audioOutEnable(i, 1);
    }
}

/// Where the name stands among `count`, at `index` if it does there; without a name the index
/// itself. -1: nowhere.
template <class NameOf>
int placeOf(const CStr& name, int index, int count, NameOf&& nameOf) {
    if (name.empty()) return index;
    if (index >= 0 && index < count && nameOf(index) == name) return index;
    for (int i = 0; i < count; i++)
        if (nameOf(i) == name) return i;
    return noDevice;
}

int chosenDevice(CIniFile& ini, CAAM* bridge) {
    return placeOf(ini.readString(audio, deviceNameKey, ""), ini.readInteger(audio, deviceKey, 0),
                   bridge->numAudioDevs(), [bridge](int i) { return bridge->audioName(i); });
}

int placeOfPort(const PortKind& kind, CAAM* bridge, const CStr& name, int index) {
    return placeOf(name, index, kind.count(bridge), [&](int i) { return (bridge->*kind.name)(i); });
}

/// What the settings hold of a port.
struct KeptPort {
    bool on = false;
    CStr name;
};

KeptPort readPort(CIniFile& ini, const PortKind& kind, int i) {
    return {ini.readInteger(kind.section, numbered(kind.key, i), 0) != 0,
            kind.nameKey ? ini.readString(kind.section, numbered(kind.nameKey, i), "") : CStr()};
}

void enablePorts(CIniFile& ini, CAAM* bridge, const PortKind& kind) {
    for (int i = 0; i < kind.kept; i++) {
        const KeptPort port = readPort(ini, kind, i);
        const int at = port.on ? placeOfPort(kind, bridge, port.name, i) : -1;
        if (at >= 0) (bridge->*kind.enable)(at, 1);
    }
}

/// The enabled ports of the settings that are not there now, in the places behind those that are.
void keepAbsent(CIniFile& ini, CAAM* bridge, const PortKind& kind, std::vector<KeptPort>& ports) {
    const size_t present = size_t(asMin(kind.count(bridge), kind.kept));
    for (int i = 0; i < kind.kept; i++) {
        const KeptPort port = readPort(ini, kind, i);
        const int at = placeOfPort(kind, bridge, port.name, i);
        if (!port.on || (at >= 0 && size_t(at) < present)) continue;
        size_t slot = size_t(i);
        if (slot < present || ports[slot].on) slot = present;
        while (slot < ports.size() && ports[slot].on) slot++;
        if (slot < ports.size()) ports[slot] = port;
    }
}

} // namespace

const PortKind audioInputs = {"Audio inputs",
                              "channel",
                              nullptr,
                              keptChannels,
                              [](const CAAM* b) { return b->numAudioIns; },
                              &CAAM::audioInName,
                              &CAAM::audioInEnabled,
                              &CAAM::audioInEnable};
const PortKind audioOutputs = {"Audio outputs",
                               "channel",
                               nullptr,
                               keptChannels,
                               [](const CAAM* b) { return b->numAudioOuts; },
                               &CAAM::audioOutName,
                               &CAAM::audioOutEnabled,
                               &CAAM::audioOutEnable};
const PortKind midiInputs = {"MIDI inputs",
                             "device",
                             "name",
                             keptMidiPorts,
                             [](const CAAM* b) { return b->numMidiIns; },
                             &CAAM::midiInName,
                             &CAAM::midiInEnabled,
                             &CAAM::midiInEnable};
const PortKind midiOutputs = {"MIDI outputs",
                              "device",
                              "name",
                              keptMidiPorts,
                              [](const CAAM* b) { return b->numMidiOuts; },
                              &CAAM::midiOutName,
                              &CAAM::midiOutEnabled,
                              &CAAM::midiOutEnable};

void openAudio(CIniFile& ini, CAAM* bridge) {
    bridge->setDriverType(ini.readInteger(audio, "driver", bridge->driverType));
    if (bridge->numAudioDevs() == 0) {
        bridge->frames = framesWithoutDevice;
        showMsg(nullptr, "Audio driver not found", "No Audio drivers found on your system?", mbOk);
        return;
    }
    bridge->setFrames(ini.readInteger(audio, "buffersize", bridge->frames));
    bridge->framesChosen = !ini.readString(audio, "buffersize", "").empty();
    bridge->setRate(float(ini.readInteger(audio, "samplerate", 44100)));
    enableChannels(ini, bridge);
    bridge->deviceRec = ini.readInteger(audio, "deviceRec", -1);
    bridge->audioOpen(chosenDevice(ini, bridge));
}

void enableMidi(CIniFile& ini, CAAM* bridge) {
    enablePorts(ini, bridge, midiInputs);
    enablePorts(ini, bridge, midiOutputs);
}

void saveDevice(CAAM* bridge) {
    const CIniBatch batch(inifile);
    CIniFile ini(inifile);
    ini.writeInteger(audio, deviceKey, bridge->device);
    ini.writeString(audio, deviceNameKey, bridge->audioName(bridge->device));
}

void savePorts(CAAM* bridge, const PortKind& kind) {
    const CIniBatch batch(inifile);
    CIniFile ini(inifile);
    std::vector<KeptPort> ports;
    ports.resize(size_t(kind.kept));
    keepAbsent(ini, bridge, kind, ports);
    const int present = asMin(kind.count(bridge), kind.kept);
    for (int i = 0; i < present; i++)
        ports[size_t(i)] = {(bridge->*kind.enabled)(i), (bridge->*kind.name)(i)};
    for (int i = 0; i < kind.kept; i++) {
        const KeptPort& port = ports[size_t(i)];
        const KeptPort before = readPort(ini, kind, i);
        const bool known = i < present || port.on || before.on;
        const CStr key = numbered(kind.key, i);
        if (known && ini.readInteger(kind.section, key, -1) != int(port.on))
            ini.writeInteger(kind.section, key, port.on);
        if (known && kind.nameKey && before.name != port.name)
            ini.writeString(kind.section, numbered(kind.nameKey, i), port.name);
    }
}

CStr missingDevice(CIniFile& ini, CAAM* bridge) {
    const CStr name = ini.readString(audio, deviceNameKey, "");
    return chosenDevice(ini, bridge) == noDevice ? name : CStr();
}

namespace {

constexpr const char *clockSection = "MIDI clock", *controlSection = "control surface";
constexpr const char* allPorts = "*";

/// The place of a port by name.
int portOf(CAAM* bridge, const PortKind& kind, const CStr& name) {
    if (name == allPorts) return anyClockDevice;
    for (int i = 0; !name.empty() && i < kind.count(bridge); i++)
        if ((bridge->*kind.name)(i) == name) return i;
    return noClockDevice;
}

constexpr const char *codeTo = "code to", *codeFrom = "code from", *codeRateKey = "code rate",
                     *codeHourKey = "code hour";

void followChosen(CQV* host) {
    const DeviceMidi& midi = *host->deviceMidi;
    host->sync = midi.clockIn.device != noClockDevice || midi.codeIn.device != noClockDevice;
}

void setCodeHour(DeviceMidi& midi, int hour) {
    constexpr int last = 23;
    midi.codeIn.startHour = midi.codeOut.startHour = asMinMax(hour, 0, last);
}

void saveRole(CAAM* bridge, const PortKind& kind, const char* section, const char* key,
              int device) {
    const CStr name = device == anyClockDevice ? CStr(allPorts)
                      : device >= 0            ? (bridge->*kind.name)(device)
                                               : CStr();
    CIniFile(inifile).writeString(section, key, name);
}

} // namespace

void chooseMidiRoles(CIniFile& ini, CQV* host) {
    DeviceMidi& midi = *host->deviceMidi;
    midi.clockOut.device = portOf(host->aam, midiOutputs, ini.readString(clockSection, "to", ""));
    midi.clockIn.device = portOf(host->aam, midiInputs, ini.readString(clockSection, "from", ""));
    midi.codeOut.device = portOf(host->aam, midiOutputs, ini.readString(clockSection, codeTo, ""));
    midi.codeIn.device = portOf(host->aam, midiInputs, ini.readString(clockSection, codeFrom, ""));
    midi.codeOut.rate = asMinMax(ini.readInteger(clockSection, codeRateKey, int(CodeRate::fps25)),
                                 0, codeRates - 1);
    setCodeHour(midi, ini.readInteger(clockSection, codeHourKey, 0));
    followChosen(host);
    const auto control = [&](const PortKind& kind, const char* key) {
        return std::max(portOf(host->aam, kind, ini.readString(controlSection, key, "")), -1);
    };
    midi.controlIn = control(midiInputs, "from");
    midi.controlOut = control(midiOutputs, "to");
}

void saveControlIn(CQV* host, int device) {
    host->deviceMidi->controlIn = device;
    saveRole(host->aam, midiInputs, controlSection, "from", device < 0 ? noClockDevice : device);
}

void saveControlOut(CQV* host, int device) {
    host->deviceMidi->controlOut = device;
    saveRole(host->aam, midiOutputs, controlSection, "to", device < 0 ? noClockDevice : device);
}

void saveClockOut(CQV* host, int device) {
    host->deviceMidi->clockOut.device = device;
    saveRole(host->aam, midiOutputs, clockSection, "to", device);
}

void saveCodeOut(CQV* host, int device) {
    host->deviceMidi->codeOut.device = device;
    saveRole(host->aam, midiOutputs, clockSection, codeTo, device);
}

namespace {

/// The song follows one machine at a time.
void saveLeader(CQV* host, int clock, int code) {
    const CIniBatch batch(inifile);
    host->deviceMidi->clockIn.device = clock;
    host->deviceMidi->codeIn.device = code;
    followChosen(host);
    saveRole(host->aam, midiInputs, clockSection, "from", clock);
    saveRole(host->aam, midiInputs, clockSection, codeFrom, code);
}

} // namespace

void saveClockIn(CQV* host, int device) {
    const int code = host->deviceMidi->codeIn.device;
    saveLeader(host, device, device == noClockDevice ? code : noClockDevice);
}

void saveCodeIn(CQV* host, int device) {
    const int clock = host->deviceMidi->clockIn.device;
    saveLeader(host, device == noClockDevice ? clock : noClockDevice, device);
}

void saveCodeRate(CQV* host, int rate) {
    host->deviceMidi->codeOut.rate = rate;
    CIniFile(inifile).writeInteger(clockSection, codeRateKey, rate);
}

void saveCodeHour(CQV* host, int hour) {
    setCodeHour(*host->deviceMidi, hour);
    CIniFile(inifile).writeInteger(clockSection, codeHourKey, hour);
}
