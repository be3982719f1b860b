#include "plugins/clap/ClapOffers.h"

#include "base/Messages.h"
#include "plugins/clap/ClapPlugin.h"

#include <cstring>
#include <utility>

using namespace clapabi;

void ClapOffers::fill(Host& host, ClapPlugin* plugin) {
    host = {version,
            plugin,
            "Sondrava",
            "Sondrava",
            "",
            "2.0",
            &ClapOffers::extension,
            [](const Host* h) { of(h).restartAsked = true; },
            [](const Host*) {}, // it is called in every block while it runs
            [](const Host* h) { of(h).callbackAsked = true; }};
}

const void* ClapOffers::extension(const Host*, const char* id) {
    static constexpr HostParams params = {
        [](const Host* h, uint32_t flags) {
            constexpr uint32_t valuesOrTexts = 1 | 2;
            (flags & ~valuesOrTexts ? of(h).paramsAsked : of(h).valuesAsked) = true;
        },
        [](const Host*, Id, uint32_t) {}, [](const Host* h) { of(h).flushAsked = true; }};
    static constexpr HostState state = {[](const Host*) {}}; // it is asked for when it is needed
    static constexpr HostLatency latency = {[](const Host* h) { of(h).restartAsked = true; }};
    static constexpr HostAudioPorts audioPorts = {
        [](const Host*, uint32_t) { return true; },
        [](const Host* h, uint32_t) { of(h).restartAsked = true; }};
    static constexpr HostNotePorts notePorts = {
        [](const Host*) { return uint32_t(dialectClap | dialectMidi); },
        [](const Host* h, uint32_t) { of(h).restartAsked = true; }};
    static constexpr HostGui gui = {[](const Host*) {},
                                    [](const Host* h, uint32_t width, uint32_t height) {
                                        of(h).host.sizeEditor(asPoint(int(width), int(height)));
                                        return true;
                                    },
                                    [](const Host*) { return true; },
                                    [](const Host*) { return false; }, [](const Host*, bool) {}};
    static constexpr HostTimer timers = {
        [](const Host* h, uint32_t periodMs, Id* number) {
            *number = of(h).timers.add(periodMs);
            return *number != 0;
        },
        [](const Host* h, Id number) { return of(h).timers.remove(number); }};
    static constexpr HostFiles files = {
        [](const Host* h, int file, uint32_t flags) { return of(h).timers.watch(file, flags); },
        [](const Host* h, int file, uint32_t flags) { return of(h).timers.watch(file, flags); },
        [](const Host* h, int file) { return of(h).timers.unwatch(file); }};
    static constexpr HostThreads threads = {
        [](const Host* h) { return isInterfaceThread() && !of(h).onAudio(); },
        [](const Host* h) { return of(h).onAudio(); }};
    static constexpr HostLog log = {[](const Host* h, int32_t severity, const char* text) {
        if (severity >= logError && text && isInterfaceThread() && !of(h).onAudio()) showStr(text);
    }};
    static constexpr std::pair<const char*, const void*> offers[] = {
        {paramsId, &params},       {stateId, &state},
        {latencyId, &latency},     {audioPortsId, &audioPorts},
        {notePortsId, &notePorts}, {guiId, &gui},
        {timerId, &timers},        {filesId, &files},
        {threadsId, &threads},     {logId, &log}};
    for (const auto& [name, table] : offers)
        if (id && std::strcmp(id, name) == 0) return table;
    return nullptr;
}
