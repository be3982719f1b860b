#include "driver/AlsaBackend.h"

#include "driver/AlsaDevice.h"

#include <algorithm>
#include <alsa/asoundlib.h>
#include <array>
#include <cstdarg>
#include <cstdlib>
#include <string_view>

namespace {

void ignore(const char*, int, const char*, int, const char*, ...) {
}

/// What a hint says about `key`, empty if nothing.
std::string hintText(const void* hint, const char* key) {
    char* text = snd_device_name_get_hint(hint, key);
    std::string result = text ? text : "";
    std::free(text);
    return result;
}

/// Converters and routes to servers that are reached without ALSA.
bool isDetour(std::string_view name) {
    constexpr std::array<std::string_view, 10> detours = {
        "null",     "samplerate", "speexrate", "lavrate", "upmix",
        "vdownmix", "oss",        "pulse",     "jack",    "speex"};
    return std::find(detours.begin(), detours.end(), name) != detours.end();
}

/// Whether a name that is no hardware leads anywhere. A device in use does.
bool opens(const std::string& name) {
    snd_pcm_t* pcm = nullptr;
    const int result = snd_pcm_open(&pcm, name.c_str(), SND_PCM_STREAM_PLAYBACK, SND_PCM_NONBLOCK);
    if (result == 0) snd_pcm_close(pcm);
    return result == 0 || result == -EBUSY;
}

bool isWanted(const std::string& name) {
    if (name.starts_with("hw:")) return true;
    return name.find(':') == std::string::npos && !isDetour(name) && opens(name);
}

} // namespace

AlsaBackend::AlsaBackend() {
    snd_lib_error_set_handler(ignore);
}

std::vector<DeviceInfo> AlsaBackend::devices() {
    std::vector<DeviceInfo> list;
    void** hints = nullptr;
    if (snd_device_name_hint(-1, "pcm", &hints) < 0) return list;
    for (void** hint = hints; *hint; ++hint) {
        const std::string name = hintText(*hint, "NAME");
        if (hintText(*hint, "IOID") == "Input" || !isWanted(name)) continue;
        const std::string description = hintText(*hint, "DESC");
        const std::string first = description.substr(0, description.find('\n'));
        const std::string shown = first.empty() || first == name ? name : name + ", " + first;
        list.push_back({"ALSA: " + shown, name, name});
    }
    snd_device_name_free_hint(hints);
    std::stable_partition(list.begin(), list.end(),
                          [](const DeviceInfo& info) { return info.playback == "default"; });
    return list;
}

std::unique_ptr<Device> AlsaBackend::open(const DeviceInfo& info, const DeviceWish& wish,
                                          BlockCycle& cycle) {
    auto device = std::make_unique<AlsaDevice>(cycle);
    return device->open(info, wish) ? std::move(device) : nullptr;
}
