#include "engine/DeviceChannels.h"

#include "base/Numbers.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "engine/DeviceComps.h"

#include <algorithm>

namespace {

constexpr int left = 32 + 224, step = 16; // of the icons: beside those for MIDI

struct Direction {
    int type;
    const char* plainName;
    int top; ///< of the first icon
    CDeviceAudio* (*make)(CQV* host);
};

template <class Device>
CDeviceAudio* make(CQV* host) {
    return new Device(host);
}

constexpr Direction inputs = {compAudioIn, "Audio In", 32, make<CAudioIn>};
constexpr Direction outputs = {compAudioOut, "Audio Out", 32 + 256, make<CAudioOut>};

/// The first of them that `wanted` says yes to.
template <class F>
CDeviceAudio* find(CQV* host, const Direction& direction, F&& wanted) {
    for (CComp* c : host->comps) {
        auto* device = c->type == direction.type ? static_cast<CDeviceAudio*>(c) : nullptr;
        if (device && wanted(device)) return device;
    }
    return nullptr;
}

/// The component that stands for channel `k` or the one behind it, else one without any channel,
/// as there is while none is enabled.
CDeviceAudio* deviceOf(CQV* host, const Direction& direction, int k) {
    const auto stands = [k](const CDeviceAudio* c) {
        return c->channelUsed[k] || c->channelUsed[k + 1];
    };
    const auto free = [](const CDeviceAudio* c) {
        return std::ranges::none_of(c->channelUsed, [](const Shared<int>& used) { return used; });
    };
    CDeviceAudio* const found = find(host, direction, stands);
    return found ? found : find(host, direction, free);
}

CDeviceAudio* addDevice(CQV* host, const Direction& direction, int k) {
    CDeviceAudio* c = direction.make(host);
    c->posX = left + step * k;
    c->posY = direction.top + step * k;
    c->init();
    c->createBuffers(host->frames);
    const GraphHold hold(host);
    host->comps.add(c);
    return c;
}

/// Its name, unless the user has given it one. It tells the channels where there is a choice.
void nameDevice(CDeviceAudio* c, const CStr& plain, int k, bool choice) {
    const CStr numbered = "[" + asStr(k + 1) + "+" + asStr(k + 2) + "] " + plain;
    const CStr name = choice ? numbered : plain;
    if ((c->id == plain || c->id == numbered) && c->id != name) c->setId(name);
}

void follow(CQV* host, const Direction& direction, int channels) {
    for (int k = 0; k == 0 || k < channels; k += 2) {
        CDeviceAudio* c = deviceOf(host, direction, k);
        if (!c) c = addDevice(host, direction, k);
        nameDevice(c, direction.plainName, k, channels > 2);
        const GraphHold hold(host);
        for (int i = k; i < k + 2; ++i) c->channelUsed[i] = i < channels;
    }
}

} // namespace

void followChannels(CQV* host) {
    int ins = 0, outs = 0;
    for (int i = 0; host->aam && i < maxDeviceChannels; ++i) {
        if (host->aam->audioInEnabled(i)) ++ins;
        if (host->aam->audioOutEnabled(i)) ++outs;
    }
    follow(host, inputs, ins);
    follow(host, outputs, outs);
    host->hostNotices.raise(HostNotice::graph | HostNotice::delays);
}
