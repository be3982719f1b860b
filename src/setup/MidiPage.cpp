#include "setup/MidiPage.h"

#include "engine/CQV.h"
#include "setup/PortList.h"
#include "ui/DeviceSettings.h"

MidiPage::MidiPage(CSetupWin* window, CRect place) : SetupPage(window, place) {
    if (!qv->aam) return;
    ins = new PortList(win, "midi-inputs", qv->aam, midiInputs);
    outs = new PortList(win, "midi-outputs", qv->aam, midiOutputs);
    wire(ins->onChecked, new _COnChange<MidiPage>(this, &MidiPage::midiInChecked));
    wire(outs->onChecked, new _COnChange<MidiPage>(this, &MidiPage::midiOutChecked));
    addPair("MIDI inputs", ins, "MIDI outputs", outs);
}

void MidiPage::midiInChecked(CObject*) {
    ins->apply();
    savePorts(qv->aam, midiInputs);
}

void MidiPage::midiOutChecked(CObject*) {
    outs->apply();
    savePorts(qv->aam, midiOutputs);
}
