#include "engine/CAAM.h"

#include "base/Delegates.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/DeviceMidi.h"

#include <cstdio>
#include <dlfcn.h>

CAAM* aam = nullptr;

namespace {

/// A block size to ask for: whatever the device has.
constexpr int deviceFrames = -1;

} // namespace

CStr CAAM::defaultPath() {
    return extractFilePath(asAppname()) + "libaam" + ".so";
}

CAAM::CAAM(AamCallback blockCallback, const CStr& path) : callback(blockCallback) {
    load(path);
    if (libaam) {
        call(aamInit, reinterpret_cast<intptr_t>(callback));
        numMidiIns = int(call(aamMidiInCount));
        numMidiOuts = int(call(aamMidiOutCount));
        loaded = true;
    }
    getAudioDeviceNames();
}

CAAM::~CAAM() {
    audioClose();
    if (loaded) call(aamShutdown);
    if (handle) dlclose(handle);
    deleteAll(audioDevs);
    delete onChange;
    if (qv && qv->aam == this) qv->aam = nullptr;
    if (aam == this) aam = nullptr;
}

void CAAM::load(const CStr& path) {
    handle = dlopen(path.asChar(), RTLD_LAZY);
    if (!handle) {
        std::printf("dlopen(): %s\n", dlerror());
        return;
    }
    libaam = reinterpret_cast<AamEntry>(dlsym(handle, "libaam"));
    if (!libaam) std::printf("dlsym(): %s\n", dlerror());
}

intptr_t CAAM::call(AamOp op, intptr_t a, intptr_t b) {
    return libaam ? libaam(op, a, b) : 0;
}

CStr CAAM::nameFrom(AamOp op, int i) {
    char name[aamNameBytes] = {};
    call(op, i, reinterpret_cast<intptr_t>(name));
    name[aamNameBytes - 1] = 0;
    return name;
}

void CAAM::getAudioDeviceNames() {
    deleteAll(audioDevs);
    const int count = int(call(aamDeviceCount));
    for (int i = 0; i < count; ++i) audioDevs.add(new CAudioDevice(nameFrom(aamDeviceName, i)));
}

void CAAM::setFrames(int wanted) {
    if (wanted < aamMinFrames || wanted > maxFrames) return;
    frames = wanted;
    framesChosen = true;
}

void CAAM::setRate(float wanted) {
    if (wanted > 0.0f && wanted <= maxRate) rate = wanted;
}

void CAAM::setDriverType(int newType) {
    audioClose();
    driverType = newType;
    getAudioDeviceNames();
    device = 0;
}

bool CAAM::takeGranted() {
    const auto grantedFrames = call(aamFrames);
    float grantedRate = 0.0f;
    call(aamRate, 0, reinterpret_cast<intptr_t>(&grantedRate));
    if (grantedFrames < aamMinFrames || grantedFrames > maxFrames) return false;
    if (!(grantedRate > 0.0f && grantedRate <= maxRate)) return false;
    frames = int(grantedFrames);
    rate = grantedRate;
    return true;
}

void CAAM::audioOpen(int index) {
    if (opened) return;
    if (audioName(index) != lostName) lostName = "";
    openWith(index, framesChosen ? frames : deviceFrames);
}

void CAAM::openWith(int index, int wantedFrames) {
    device = index;
    if (!libaam) return;
    call(aamRate, asRound(double(rate)));
    call(aamFrames, wantedFrames);
    if (call(aamOpen, device) == -1) return;
    if (!takeGranted()) {
        call(aamClose, device);
        return;
    }
    if (onChange) (*onChange)(this);
    numAudioIns = int(call(aamAudioInCount));
    numAudioOuts = int(call(aamAudioOutCount));
    call(aamStart);
    opened = true;
    lostName = "";
}

namespace {

/// Waits for `done`, but not longer than so many blocks and a little more: none may come any more.
template <class Done>
void waitBlocks(const CQV* host, int blocks, Done&& done) {
    constexpr int slackMs = 50;
    const double ms = blocks * 1000.0 * host->frames / double(host->rate) + slackMs;
    for (int waited = 0; !done() && waited < ms; ++waited) asSleep(1);
}

} // namespace

/// A driver sends what it is given up to a block later, so that two more have to follow.
void CAAM::endNotes() {
    CQV* const host = qv && qv->aam == this ? qv : nullptr;
    if (!host) return;
    DeviceMidi& midi = *host->deviceMidi;
    host->audioSuspended.fetchAdd(1);
    { const GraphHold settled(host); }
    if (midi.sounding()) {
        midi.askSilence();
        waitBlocks(host, 3, [&] { return !midi.sounding(); });
        const unsigned seen = midi.calls;
        waitBlocks(host, 3, [&] { return midi.calls - seen >= 2; });
    }
    host->audioSuspended.fetchAdd(-1);
}

void CAAM::audioClose() {
    if (!opened) return;
    endNotes();
    call(aamStop, device);
    call(aamClose, device);
    numAudioIns = numAudioOuts = 0;
    opened = false;
    if (qv && qv->aam == this) qv->tasks->audioStopped();
}

bool CAAM::needReload() {
    return call(aamNeedsReopen) == 1;
}

void CAAM::edit() {
    call(aamSettings);
}

void CAAM::idle() {
    if (needReload()) {
        lostName = audioName(device);
        audioClose();
        reopenLost();
    }
    const unsigned since = unsigned(asTimeInMS()) - unsigned(triedAt);
    if (!opened && !lostName.empty() && since >= unsigned(retryMs)) reopenLost();
    if (!needReopen) return;
    needReopen = false;
    audioClose();
    audioOpen(device);
}

void CAAM::reopenLost() {
    triedAt = asTimeInMS();
    const int index = findLost();
    if (index >= 0) openWith(index, deviceFrames);
}

/// The list may have been made anew without the device, or have it at another place.
int CAAM::findLost() {
    const auto place = [this] {
        if (audioName(device) == lostName) return device;
        int at = numAudioDevs() - 1;
        while (at >= 0 && audioName(at) != lostName) --at;
        return at;
    };
    if (place() < 0) getAudioDeviceNames();
    return place();
}

CStr CAAM::audioName(int i) {
    const auto* dev = audioDevs.items(i);
    return dev ? dev->name : CStr();
}

CStr CAAM::midiInName(int i) {
    return nameFrom(aamMidiInName, i);
}

CStr CAAM::midiOutName(int i) {
    return nameFrom(aamMidiOutName, i);
}

void CAAM::midiInEnable(int i, int on) {
    call(aamMidiInEnable, i, on);
}

void CAAM::midiOutEnable(int i, int on) {
    call(aamMidiOutEnable, i, on);
}

bool CAAM::midiInEnabled(int i) {
    return call(aamMidiInEnabled, i) != 0;
}

bool CAAM::midiOutEnabled(int i) {
    return call(aamMidiOutEnabled, i) != 0;
}

namespace {

CStr dawName(int i) {
    return "daw-" + asStr(i);
}

} // namespace

CStr CAAM::audioInName(int i) {
    return dawMode ? dawName(i) : nameFrom(aamAudioInName, i);
}

CStr CAAM::audioOutName(int i) {
    return dawMode ? dawName(i) : nameFrom(aamAudioOutName, i);
}

void CAAM::audioInEnable(int i, int on) {
    call(aamAudioInEnable, i, on);
}

void CAAM::audioOutEnable(int i, int on) {
    call(aamAudioOutEnable, i, on);
}

bool CAAM::audioInEnabled(int i) {
    return dawMode ? i < numAudioIns : call(aamAudioInEnabled, i) == 1;
}

bool CAAM::audioOutEnabled(int i) {
    return dawMode ? i < numAudioOuts : call(aamAudioOutEnabled, i) == 1;
}

void CAAM::askRealtime(int thread, int priority) {
    call(aamRealtime, thread, priority);
}

bool CAAM::sendExclusive(int out, const std::vector<unsigned char>& bytes) {
    std::vector<unsigned char> copy = bytes;
    const AamMessage message{out, 0, int32_t(copy.size()), 0, copy.data()};
    return call(aamMessageSend, reinterpret_cast<intptr_t>(&message)) == 1;
}

bool CAAM::takeExclusive(int& in, std::vector<unsigned char>& bytes) {
    bytes.resize(size_t(aamMostMessage));
    AamMessage message{0, 0, aamMostMessage, 0, bytes.data()};
    if (call(aamMessageTake, reinterpret_cast<intptr_t>(&message)) != 1) return false;
    in = message.device;
    bytes.resize(size_t(std::clamp(message.length, 0, aamMostMessage)));
    return true;
}
