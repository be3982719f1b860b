#include "setup/MidiPage.h"

#include "base/Numbers.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "engine/DeviceMidi.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CValue.h"
#include "setup/PortList.h"
#include "ui/DeviceSettings.h"

namespace {

constexpr int listWidth = 240, rateWidth = 128, lastHour = 23;

/// An hour in words: "from hour 1".
class CHourValue : public CValue {
public:
    using CValue::CValue;
    CStr getText() const override { return "from hour " + asStr(value); }
};

} // namespace

MidiPage::MidiPage(CSetupWin* window, CRect place) : SetupPage(window, place) {
    if (!qv->aam) return;
    const DeviceMidi& midi = *qv->deviceMidi;
    addHeading("Clock and time code");
    clockOut = addPortList("Send clock to", "clock-out", midi.clockOut.device - noClockDevice,
                           qv->aam->getMIDIOutCount(), &CAAM::midiOutName, true);
    addNote("Start, stop, position and beats");
    clockIn = addPortList("Follow clock of", "clock-in", midi.clockIn.device - noClockDevice,
                          qv->aam->getMIDIInCount(), &CAAM::midiInName, true);
    addNote("It leads the song and its tempo");
    addCode();
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

void MidiPage::addCode() {
    const DeviceMidi& midi = *qv->deviceMidi;
    codeOut = addPortList("Send time code to", "code-out", midi.codeOut.device - noClockDevice,
                          qv->aam->getMIDIOutCount(), &CAAM::midiOutName, true);
    codeRate = addBeside(new CDropdown(win, "code-rate", 0, 0, rateWidth, fieldHeight));
    for (const char* name : {"24 frames/s", "25 frames/s", "29.97 drop", "30 frames/s"})
        codeRate->add(name);
    codeRate->setIndex(midi.codeOut.rate);
    codeRate->spokenName = "Frames of the time code";
    codeRate->hint = "Pictures in a second of the time code that is sent";
    codeIn = addPortList("Follow time code of", "code-in", midi.codeIn.device - noClockDevice,
                         qv->aam->getMIDIInCount(), &CAAM::midiInName, true);
    codeHour = addBeside(new CHourValue(win, "code-hour", 0, 0, rateWidth, fieldHeight));
    codeHour->max = lastHour;
    codeHour->showValue(midi.codeOut.startHour);
    codeHour->resetValue = 0;
    codeHour->liveUpdate = false;
    codeHour->spokenName = "Hour of the song's start";
    codeHour->hint = "The hour of time code that the song begins at";
    wire(codeOut->onChange, new _COnChange<MidiPage>(this, &MidiPage::codeOutChanged));
    wire(codeIn->onChange, new _COnChange<MidiPage>(this, &MidiPage::codeInChanged));
    wire(codeRate->onChange, new _COnChange<MidiPage>(this, &MidiPage::codeRateChanged));
    wire(codeHour->onChange, new _COnChange<MidiPage>(this, &MidiPage::codeHourChanged));
    codeRate->tabStop = codeHour->tabStop = true;
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
    codeIn->setIndex(qv->deviceMidi->codeIn.device - noClockDevice);
}

void MidiPage::codeOutChanged(CObject*) {
    saveCodeOut(qv, codeOut->index + noClockDevice);
}

void MidiPage::codeInChanged(CObject*) {
    saveCodeIn(qv, codeIn->index + noClockDevice);
    clockIn->setIndex(qv->deviceMidi->clockIn.device - noClockDevice);
}

void MidiPage::codeRateChanged(CObject*) {
    saveCodeRate(qv, codeRate->index);
}

void MidiPage::codeHourChanged(CObject*) {
    saveCodeHour(qv, codeHour->value);
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
