#include "setup/AudioPage.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "engine/DeviceChannels.h"
#include "engine/plan/GraphWorkers.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CTabs.h"
#include "gui/controls/CValue.h"
#include "gui/dialogs/CFileWin.h"
#include "setup/CSetupWin.h"
#include "setup/PortList.h"
#include "ui/DeviceSettings.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {

constexpr const char *section = "audio", *noAudio = "<No audio>";
constexpr int listWidth = 280, numberWidth = 104, factsWidth = 480;
constexpr int maxLatency = 96000; // frames
constexpr int blockSizes[] = {64, 128, 256, 512, 1024, 2048, 4096};
constexpr int sampleRates[] = {22050, 44100, 48000, 96000, 192000};
constexpr int bitWidths[] = {16, 24, 32};

void write(const char* group, const char* key, int value) {
    CIniFile(inifile).writeInteger(group, key, value);
}

} // namespace

AudioPage::AudioPage(CSetupWin* window, CRect place) : SetupPage(window, place), bridge(qv->aam) {
    addHeading("Device");
    addDevice();
    if (bridge) addStream();
    addHelpers();
    addRecording();
    addTempFolder();
    if (bridge && bridge->opened) addChannels();
}

// The device. A list without a choice is left out.

CDropdown* AudioPage::addDeviceList(const char* label, const char* name) {
    return addField(label, new CDropdown(win, name, 0, 0, listWidth, fieldHeight));
}

void AudioPage::addDevice() {
    const int drivers = bridge ? bridge->mumDriverTypes() : 0;
    const bool all = advanced();
    if (drivers > (all ? 0 : 1)) {
        driver = addDeviceList("Driver", "driver");
        for (int i = 0; i < drivers; i++) driver->add(bridge->getDriverName(i));
        driver->setIndex(bridge->driverType);
        wire(driver->onChange, new _COnChange<AudioPage>(this, &AudioPage::driverChanged));
    }
    relist();
    device = addDeviceList("Device", "device");
    const int devices = bridge ? bridge->numAudioDevs() : 0;
    for (int i = 0; i < devices; i++) device->add(bridge->audioName(i));
    device->add(noAudio);
    const bool chosen = bridge && bridge->device >= 0 && bridge->device < devices;
    device->setIndex(chosen ? bridge->device : devices);
    wire(device->onChange, new _COnChange<AudioPage>(this, &AudioPage::deviceChanged));
    addNote(deviceState());
    const int recDevices = bridge ? bridge->numAudioRecDevs() : 0;
    if (bridge && (recDevices > 0 || all)) addRecDevices(recDevices);
    if (all) addField("", new CLabel(win, streamFacts(), 0, 0, factsWidth, fieldHeight));
    auto* box = new CCheckbox(win, "advanced", "Advanced", 0, 0, listWidth, fieldHeight);
    box->hint = "Shows every list, and what the device was opened with";
    box->checked = all;
    wire(box->onChange, new _COnChange(this, &AudioPage::advancedClicked));
    addField("", box);
}

void AudioPage::addRecDevices(int recDevices) {
    deviceRec = addDeviceList("Recording device", "deviceRec");
    for (int i = 0; i < recDevices; i++) deviceRec->add(bridge->audioRecName(i));
    deviceRec->add(noAudio);
    deviceRec->setIndex(bridge->deviceRec >= 0 ? bridge->deviceRec : recDevices);
    wire(deviceRec->onChange, new _COnChange<AudioPage>(this, &AudioPage::deviceRecChanged));
}

bool AudioPage::advanced() {
    return iniReadInt("options", "advanced-audio", 0) != 0;
}

void AudioPage::advancedClicked(CCheckbox* sender) {
    write("options", "advanced-audio", sender->checked);
    qv->hostNotices.raise(
        HostNotice::devices); // the page is made anew when no handler of its own is running
}

CStr AudioPage::streamFacts() const {
    if (!bridge || !bridge->opened) return "No device is open";
    constexpr double msPerSecond = 1000;
    char text[128];
    std::snprintf(text, sizeof text,
                  "%d inputs, %d outputs; %d frames at %.0f Hz; in and out %.1f ms",
                  bridge->numAudioIns, bridge->numAudioOuts, bridge->frames, double(bridge->rate),
                  2 * bridge->frames * msPerSecond / double(bridge->rate));
    return text;
}

/// Devices may have come and gone since the list was made. While one is open the list holds.
void AudioPage::relist() {
    if (!bridge || bridge->opened) return;
    const CStr chosen = bridge->audioName(bridge->device);
    bridge->getAudioDeviceNames();
    int at = bridge->numAudioDevs() - 1;
    while (at >= 0 && (chosen.empty() || bridge->audioName(at) != chosen)) at--;
    bridge->device = at;
}

CStr AudioPage::deviceState() const {
    if (!bridge) return "";
    if (bridge->device < 0) {
        CIniFile ini(inifile);
        const CStr missing = missingDevice(ini, bridge);
        return missing.empty() ? CStr() : missing + " is not there";
    }
    if (!bridge->opened) return "Could not be opened";
    constexpr double msPerSecond = 1000;
    char text[64];
    std::snprintf(text, sizeof(text), "Open, %.1f ms a block",
                  bridge->frames * msPerSecond / double(bridge->rate));
    return text;
}

/// A device that is not there stays the chosen one until the user chooses another.
void AudioPage::saveAudioOptions() {
    write(section, "driver", bridge->driverType);
    if (bridge->device >= 0) saveDevice(bridge);
    write(section, "deviceRec", bridge->deviceRec);
    if (bridge->framesChosen) write(section, "buffersize", bridge->frames);
    write(section, "samplerate", asRound(double(bridge->rate)));
    saveChannels();
}

/// Another device is open, or none: what the page shows has changed.
void AudioPage::reopened() {
    saveAudioOptions();
    qv->hostNotices.raise(HostNotice::devices);
}

void AudioPage::driverChanged(CObject*) {
    bridge->setDriverType(driver->index);
    bridge->audioOpen(bridge->device);
    reopened();
}

void AudioPage::deviceChanged(CObject* sender) {
    if (!bridge) return;
    if (device->index >= bridge->numAudioDevs()) return disableAudioClicked(sender);
    bridge->audioClose();
    bridge->audioOpen(device->index);
    reopened();
}

void AudioPage::disableAudioClicked(CObject*) {
    bridge->audioClose();
    bridge->audioOpen(-1);
    saveDevice(bridge);
    reopened();
}

void AudioPage::deviceRecChanged(CObject*) {
    bridge->deviceRec = deviceRec->index < bridge->numAudioRecDevs() ? deviceRec->index : -1;
    saveAudioOptions();
}

// Block and rate wait for the button.

CDropdown* AudioPage::addNumber(const char* label, const char* name, int value, const int* choices,
                                int count) {
    auto* field = addField(label, new CDropdown(win, name, 0, 0, numberWidth, fieldHeight));
    for (int i = 0; i < count; i++) field->add(asStr(choices[i]));
    field->editable = true;
    field->setText(asStr(value));
    wire(field->onChange, new _COnChange<AudioPage>(this, &AudioPage::onHasChanged));
    wire(field->onInput, new _COnKey<AudioPage>(this, &AudioPage::numberTyped));
    return field;
}

void AudioPage::addStream() {
    frames = addNumber("Buffer size", "buffersize", bridge->frames, blockSizes,
                       int(std::size(blockSizes)));
    addNote("Frames, 1 to 16384");
    rate = addNumber("Sample rate", "samplerate", asRound(double(bridge->rate)), sampleRates,
                     int(std::size(sampleRates)));
    applyButton = addBeside(
        newButton("Apply changes", new _COnChange<AudioPage>(this, &AudioPage::applyClicked)));
}

bool AudioPage::numberTyped(CObject* sender, int& key, int) {
    if (key < '0' || key > '9')
        key = 0;
    else
        onHasChanged(sender);
    return false;
}

void AudioPage::onHasChanged(CObject*) {
    applyButton->setLit(true);
}

void AudioPage::applyClicked(CObject*) {
    const int blockFrames = strAsIntDef(frames->text, bridge->frames);
    if (blockFrames != bridge->frames) bridge->setFrames(blockFrames);
    const int hz = strAsIntDef(rate->text, asRound(double(bridge->rate)));
    if (hz >= minRate) bridge->setRate(float(hz));
    bridge->needReopen = true;
    applyButton->setLit(false);
    reopened();
}

/// First as many as there are processors to help, then numbers from 0 on.
void AudioPage::addHelpers() {
    const int stored = std::min(iniReadInt(section, "workers", -1), GraphWorkers::most);
    helpers = addField("Helpers", new CDropdown(win, "workers", 0, 0, numberWidth, fieldHeight));
    helpers->add("Usual");
    for (int i = 0; i <= std::max(GraphWorkers::usual(), stored); i++) helpers->add(asStr(i));
    helpers->setIndex(std::max(stored, -1) + 1);
    wire(helpers->onChange, new _COnChange<AudioPage>(this, &AudioPage::helpersChanged));
    addNote("Threads beside the audio thread, usually " + asStr(GraphWorkers::usual()));
}

void AudioPage::helpersChanged(CObject*) {
    const int wanted = helpers->index - 1;
    write(section, "workers", wanted);
    qv->workers->setCount(wanted < 0 ? GraphWorkers::usual() : wanted);
}

// Takes.

void AudioPage::addRecording() {
    addHeading("Recording");
    bits = addField("Record", new CDropdown(win, "recbits", 0, 0, numberWidth, fieldHeight));
    for (const int width0 : bitWidths) {
        bits->add(asStr(width0) + "-bits");
        if (width0 == qv->recBits) bits->setIndex(bits->count() - 1);
    }
    wire(bits->onChange, new _COnChange<AudioPage>(this, &AudioPage::bitsChanged));
    latency = new CValue(win, "rec-latency", 0, 0, numberWidth, fieldHeight);
    latency->max = maxLatency;
    latency->resetValue = 0;
    latency->showValue(qv->recLatency);
    latency->liveUpdate = false;
    wire(latency->onChange, new _COnChange<AudioPage>(this, &AudioPage::latencyChanged));
    addField("Latency", latency);
    addNote("Frames by which takes are moved to an earlier place");
}

void AudioPage::bitsChanged(CObject*) {
    qv->recBits = bitWidths[bits->index];
    write(section, "recbits", qv->recBits);
}

void AudioPage::latencyChanged(CObject*) {
    qv->recLatency = latency->value;
    qv->settings.setInt("rec-latency", latency->value);
    write("options", "rec-latency", latency->value);
}

void AudioPage::addTempFolder() {
    addField("Temp Audio folder",
             newButton("Choose...",
                       new _COnChange<AudioPage>(this, &AudioPage::tempAudioFolderClicked)));
    tempFolder = addNote(qv->getTempAudioFolder());
}

void AudioPage::tempAudioFolderClicked(CObject*) {
    CFolderWin dialog(setup, "Temp Audio folder", qv->getTempAudioFolder());
    dialog.showModal();
    if (!dialog.result) return;
    qv->tempAudioFolder = dialog.path;
    CIniFile(inifile).writeString("options", "tempaudiofolder", dialog.path);
    tempFolder->setText(dialog.path);
}

// Channels.

void AudioPage::addChannels() {
    ins = new PortList(win, "audio-inputs", bridge, audioInputs);
    outs = new PortList(win, "audio-outputs", bridge, audioOutputs);
    wire(ins->onChecked, new _COnChange<AudioPage>(this, &AudioPage::audioInChecked));
    wire(outs->onChecked, new _COnChange<AudioPage>(this, &AudioPage::audioOutChecked));
    addPair("Audio inputs", ins, "Audio outputs", outs);
}

/// The graph follows the device with no block between.
void AudioPage::apply(PortList* list) {
    const GraphHold hold(qv);
    list->apply();
    followChannels(qv);
}

/// The settings know all channels or none.
void AudioPage::saveChannels() {
    savePorts(bridge, audioInputs);
    savePorts(bridge, audioOutputs);
}

void AudioPage::audioInChecked(CObject*) {
    apply(ins);
    saveChannels();
}

void AudioPage::audioOutChecked(CObject*) {
    apply(outs);
    saveChannels();
}
