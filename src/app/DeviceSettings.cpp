#include "app/DeviceSettings.h"

#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CAAM.h"

namespace {

constexpr int framesWithoutDevice = 2048;

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

} // namespace

void openAudio(CIniFile& ini, CAAM* bridge) {
    bridge->setDriverType(ini.readInteger("audio", "driver", bridge->driverType));
    if (bridge->numAudioDevs() == 0) {
        bridge->frames = framesWithoutDevice;
        showMsg(nullptr, "Audio driver not found", "No Audio drivers found on your system?", mbOk);
        return;
    }
    bridge->setFrames(ini.readInteger("audio", "buffersize", bridge->frames));
    bridge->setRate(float(ini.readInteger("audio", "samplerate", 44100)));
    enableChannels(ini, bridge);
    bridge->deviceRec = ini.readInteger("audio", "deviceRec", -1);
    bridge->audioOpen(ini.readInteger("audio", "device", 0));
}

void enableMidi(CIniFile& ini, CAAM* bridge) {
    for (int i = 0; i < keptMidiPorts; i++) {
        if (ini.readInteger("MIDI inputs", numbered("device", i), 0)) bridge->midiInEnable(i, 1);
        if (ini.readInteger("MIDI outputs", numbered("device", i), 0)) bridge->midiOutEnable(i, 1);
    }
}
