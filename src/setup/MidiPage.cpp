#include "setup/MidiPage.h"

#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "engine/DeviceMidi.h"
#include "gui/controls/CDropdown.h"
#include "setup/PortList.h"
#include "ui/DeviceSettings.h"

namespace {

constexpr int listWidth = 240;

}

MidiPage::MidiPage(CSetupWin* window, CRect place) : SetupPage(window, place) {
    if (!qv->aam) return;
    const DeviceMidi& midi = *qv->deviceMidi;
    addHeading("Clock");
    clockOut = addPortList("Send clock to", "clock-out", midi.clockOut.device - noClockDevice,
                           qv->aam->getMIDIOutCount(), &CAAM::midiOutName, true);
    addNote("Start, stop, position and beats");
    clockIn = addPortList("Follow clock of", "clock-in", midi.clockIn.device - noClockDevice,
                          qv->aam->getMIDIInCount(), &CAAM::midiInName, true);
    addNote("It leads the song and its tempo");
    addHeading("Control surface with the Mackie protocol");
    controlIn = addPortList("Comes from", "control-in", midi.controlIn + 1,
                            qv->aam->getMIDIInCount(), &CAAM::midiInName);
    addNote("It plays no instrument");
    controlOut = addPortList("Goes to", "control-out", midi.controlOut + 1,
                             qv->aam->getMIDIOutCount(), &CAAM::midiOutName);
    wire(controlIn->onChange, new _COnChange<MidiPage>(this, &MidiPage::controlInChanged));
    wire(controlOut->onChange, new _COnChange<MidiPage>(this, &MidiPage::controlOutChanged));
    wire(clockOut->onChange, new _COnChange<MidiPage>(this, &MidiPage::clockOutChanged));
    wire(clockIn->onChange, new _COnChange<MidiPage>(this, &MidiPage::clockInChanged));
    ins = new PortList(win, "midi-inputs", qv->aam, midiInputs);
    outs = new PortList(win, "midi-outputs", qv->aam, midiOutputs);
    wire(ins->onChecked, new _COnChange<MidiPage>(this, &MidiPage::midiInChecked));
    wire(outs->onChecked, new _COnChange<MidiPage>(this, &MidiPage::midiOutChecked));
    addPair("MIDI inputs", ins, "MIDI outputs", outs);
}

/// None, with `all` then all that are switched on, or one of them.
CDropdown* MidiPage::addPortList(const char* label, const char* name, int chosen, int count,
                                 CStr (CAAM::*nameOf)(int), bool all) {
    auto* list = addField(label, new CDropdown(win, name, 0, 0, listWidth, fieldHeight));
    list->add("None");
    if (all) list->add("All that are switched on");
    for (int i = 0; i < count; i++) list->add((qv->aam->*nameOf)(i));
    list->setIndex(chosen);
    return list;
}

void MidiPage::clockOutChanged(CObject*) {
    saveClockOut(qv, clockOut->index + noClockDevice);
}

void MidiPage::clockInChanged(CObject*) {
    saveClockIn(qv, clockIn->index + noClockDevice);
}

void MidiPage::controlInChanged(CObject*) {
    saveControlIn(qv, controlIn->index - 1);
}

void MidiPage::controlOutChanged(CObject*) {
    saveControlOut(qv, controlOut->index - 1);
}

void MidiPage::midiInChecked(CObject*) {
    ins->apply();
    savePorts(qv->aam, midiInputs);
}

void MidiPage::midiOutChecked(CObject*) {
    outs->apply();
    savePorts(qv->aam, midiOutputs);
}
