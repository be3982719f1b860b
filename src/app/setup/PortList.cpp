#include "app/setup/PortList.h"

#include "app/DeviceSettings.h"
#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "engine/CAAM.h"

namespace {

constexpr int rowHeight = 20;

} // namespace

const PortKind audioInputs = {"Audio inputs",      "channel",
                              keptChannels,        [](const CAAM* b) { return b->numAudioIns; },
                              &CAAM::audioInName,  &CAAM::audioInEnabled,
                              &CAAM::audioInEnable};
const PortKind audioOutputs = {"Audio outputs",      "channel",
                               keptChannels,         [](const CAAM* b) { return b->numAudioOuts; },
                               &CAAM::audioOutName,  &CAAM::audioOutEnabled,
                               &CAAM::audioOutEnable};
const PortKind midiInputs = {"MIDI inputs",      "device",
                             keptMidiPorts,      [](const CAAM* b) { return b->numMidiIns; },
                             &CAAM::midiInName,  &CAAM::midiInEnabled,
                             &CAAM::midiInEnable};
const PortKind midiOutputs = {"MIDI outputs",      "device",
                              keptMidiPorts,       [](const CAAM* b) { return b->numMidiOuts; },
                              &CAAM::midiOutName,  &CAAM::midiOutEnabled,
                              &CAAM::midiOutEnable};

void savePorts(CAAM* bridge, const PortKind& kind) {
    CIniFile ini(inifile);
    for (int i = 0; i < asMin(kind.count(bridge), kind.kept); i++) {
        const CStr key = kind.key + asStr(i);
        const int on = (bridge->*kind.enabled)(i);
        if (ini.readInteger(kind.section, key, -1) != on) ini.writeInteger(kind.section, key, on);
    }
}

PortList::PortList(CWin* owner, const char* name, CAAM* deviceBridge, const PortKind& portKind)
    : CListbox(owner, name, 0, 0, 0, 0), bridge(deviceBridge), kind(portKind) {
    itemHeight = rowHeight;
    for (int i = 0; i < kind.count(bridge); i++)
        add((bridge->*kind.name)(i))->checked = (bridge->*kind.enabled)(i);
    checkable = !items.empty();
    if (!checkable) add("<None found>");
    wire(onDoubleClick, new _COnChange<PortList>(this, &PortList::toggled));
}

void PortList::toggled(CObject*) {
    if (!checkable) return;
    row(index)->checked = !row(index)->checked;
    redraw();
    if (onChecked) (*onChecked)(this);
}

void PortList::apply() {
    int i = 0;
    for (const CListRow* at : each<CListRow>(items)) {
        if ((bridge->*kind.enabled)(i) != at->checked) (bridge->*kind.enable)(i, at->checked);
        i++;
    }
    savePorts(bridge, kind);
}
