#include "plugins/MadeEditor.h"
#include "plugins/MadeWays.h"
#include "plugins/clap/ClapAbi.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>

// The CLAP plug-in of the tests, as that of LV2: parameters 10 "gain", 20 "latency", 30 "trigger";
// it plays its input times the gain plus the velocity of the note that is held. It counts where it
// is called on the wrong thread, and stores its state, unless its file is called "bare". A file
// that begins with "two" holds two of them.

using namespace clapabi;

namespace {

struct Made {
    Plugin plugin{};
    const Host* host = nullptr;
    double values[3] = {1.0, 0.0, 0.0};
    float level = 0.0f;
    double marked = 0.0; ///< the gain as it was stored last
    uint32_t latency = 0;
    Id timer = 0;
    int clicks = 0;
    std::unique_ptr<MadeEditor> editor;
    int sendsGesture = 0; ///< frames of the user's hand, for the next block
};

Made& of(const Plugin* plugin) {
    return *static_cast<Made*>(plugin->data);
}

template <class T>
const T* offered(const Made& m, const char* id) {
    return static_cast<const T*>(m.host->extension(m.host, id));
}

void checkThread(const Made& m, bool audio) {
    const auto* threads = offered<HostThreads>(m, threadsId);
    const bool right = audio ? threads->isAudio(m.host) : threads->isMain(m.host);
    if (!right) std::fprintf(stderr, "made plug-in: called on the wrong thread\n"), std::abort();
}

void setValue(Made& m, Id id, double value) {
    if (id >= 10 && id <= 30) std::atomic_ref(m.values[id / 10 - 1]) = value;
    if (id == 20 && uint32_t(value) != m.latency) m.host->requestRestart(m.host);
}

void takeEvents(Made& m, const InEvents* in) {
    uint32_t last = 0;
    for (uint32_t i = 0; i < in->size(in); i++) {
        const EventHeader* event = in->get(in, i);
        if (event->time < last) std::abort();
        last = event->time;
        if (event->type == eventParamValue) {
            const auto* moved = reinterpret_cast<const ParamEvent*>(event);
            setValue(m, moved->param, moved->value);
        }
        if (event->type == eventMidi) {
            const auto* midi = reinterpret_cast<const MidiEvent*>(event);
            m.level = (midi->data[0] & 0xf0) == 0x90 ? float(midi->data[2]) / 127.0f : 0.0f;
        }
    }
}

/// The user has clicked at its window: the gain goes to 0.25.
void tellClick(Made& m, const OutEvents* out) {
    if (m.sendsGesture == 0) return;
    m.sendsGesture = 0;
    m.values[0] = 0.25;
    GestureEvent gesture{{sizeof gesture, 0, 0, eventGestureBegin, 0}, 10};
    out->push(out, &gesture.header);
    ParamEvent moved{{sizeof moved, 0, 0, eventParamValue, 0}, 10, nullptr, -1, -1, -1, -1, 0.25};
    out->push(out, &moved.header);
    gesture.header.type = eventGestureEnd;
    out->push(out, &gesture.header);
}

int32_t process(const Plugin* plugin, const Process* block) {
    Made& m = of(plugin);
    checkThread(m, true);
    takeEvents(m, block->inEvents);
    tellClick(m, block->outEvents);
    misbehave(m.values[2] >= 0.5);
    for (uint32_t side = 0; side < 2; side++) {
        float* out = block->outputs[0].data32[side];
        const float* in = block->inputs[0].data32[side];
        for (uint32_t i = 0; i < block->frames; i++) out[i] = in[i] * float(m.values[0]) + m.level;
        spoil(out, block->frames);
    }
    return processContinue;
}

// Extensions.

uint32_t channelsOf() {
    if (bad("channels0")) return 0;
    return bad("channels129") ? 129 : 2;
}

const PluginAudioPorts audioPorts = {[](const Plugin*, bool) -> uint32_t { return 1; },
                                     [](const Plugin*, uint32_t, bool, AudioPortInfo* info) {
                                         *info = {1, "Main", 0, channelsOf(), nullptr, 0};
                                         return true;
                                     }};

const PluginNotePorts notePorts = {
    [](const Plugin*, bool input) -> uint32_t { return input ? 1 : 0; },
    [](const Plugin*, uint32_t, bool, NotePortInfo* info) {
        *info = {1, dialectMidi, dialectMidi, "Notes"};
        return true;
    }};

const PluginParams params = {
    [](const Plugin*) -> uint32_t { return 3; },
    [](const Plugin*, uint32_t index, ParamInfo* info) {
        static const char* const names[] = {"gain", "latency", "trigger"};
        *info = {};
        info->id = (index + 1) * 10;
        std::snprintf(info->name, sizeof info->name, "%s", names[index]);
        if (bad("long-texts")) std::memset(info->name, 'x', sizeof info->name);
        info->high = index == 1 ? 4096.0 : index == 0 ? 2.0 : 1.0;
        info->usual = index == 0 ? 1.0 : 0.0;
        return true;
    },
    [](const Plugin* plugin, Id id, double* value) {
        *value = bad("nan") ? double(NAN) : std::atomic_ref(of(plugin).values[id / 10 - 1]).load();
        return true;
    },
    [](const Plugin*, Id, double value, char* text, uint32_t room) {
        while (bad("hangs-text")) sleep(1);
        if (bad("throws-text")) fail();
        if (bad("long-texts"))
            std::memset(text, 'x', 1024);
        else
            std::snprintf(text, room, "%.2f x", value);
        return true;
    },
    nullptr,
    [](const Plugin* plugin, const InEvents* in, const OutEvents* out) {
        takeEvents(of(plugin), in);
        tellClick(of(plugin), out);
    }};

const PluginState state = {
    [](const Plugin* plugin, const OutStream* to) {
        Made& m = of(plugin);
        checkThread(m, false);
        if (bad("crashes-state")) crash();
        if (bad("throws-state")) fail();
        double present[3];
        for (int i = 0; i < 3; i++) present[i] = std::atomic_ref(m.values[i]);
        return to->write(to, present, sizeof present) == int64_t(sizeof present);
    },
    [](const Plugin* plugin, const InStream* from) {
        Made& m = of(plugin);
        checkThread(m, false);
        return from->read(from, m.values, sizeof m.values) == int64_t(sizeof m.values);
    }};

const PluginLatency latency = {[](const Plugin* plugin) { return of(plugin).latency; }};

const PluginTimer timers = {[](const Plugin* plugin, Id id) {
    Made& m = of(plugin);
    if (id != m.timer || !m.editor) return;
    m.editor->idle();
    m.sendsGesture += m.editor->clicks - m.clicks;
    m.clicks = m.editor->clicks;
}};

bool openGui(const Plugin* plugin, const Window* window) {
    Made& m = of(plugin);
    checkThread(m, false);
    if (bad("crashes-editor")) crash();
    m.editor = std::make_unique<MadeEditor>(window->x11);
    return offered<HostTimer>(m, timerId)->add(m.host, 20, &m.timer);
}

const PluginGui gui = {[](const Plugin*, const char* api, bool floating) {
                           return !floating && std::strcmp(api, x11Api) == 0;
                       },
                       nullptr,
                       [](const Plugin*, const char*, bool) { return true; },
                       [](const Plugin* plugin) {
                           Made& m = of(plugin);
                           offered<HostTimer>(m, timerId)->remove(m.host, m.timer);
                           m.editor = nullptr;
                       },
                       nullptr,
                       [](const Plugin*, uint32_t* width, uint32_t* height) {
                           *width = 300;
                           *height = 200;
                           return true;
                       },
                       nullptr,
                       nullptr,
                       nullptr,
                       nullptr,
                       openGui,
                       nullptr,
                       nullptr,
                       [](const Plugin*) { return true; },
                       [](const Plugin*) { return true; }};

const void* extension(const Plugin*, const char* id) {
    const struct {
        const char* name;
        const void* table;
    } all[] = {{audioPortsId, &audioPorts},
               {notePortsId, &notePorts},
               {paramsId, &params},
               {stateId, ownName() == "bare" ? nullptr : &state},
               {latencyId, &latency},
               {timerId, &timers},
               {guiId, &gui}};
    for (const auto& one : all)
        if (!std::strcmp(id, one.name)) return one.table;
    return nullptr;
}

const Descriptor* descriptorAt(uint32_t index) {
    static const std::string name = ownName(), ids[] = {"made." + name, "made.second." + name},
                             names[] = {name, name + " second"};
    static const char* const features[] = {"audio-effect", nullptr};
    static Descriptor made[2];
    for (size_t i = 0; i < 2; i++)
        made[i] = {version, ids[i].c_str(), names[i].c_str(), "Test makers", "", "", "", "1",
                   "",      features};
    return &made[index];
}

const Plugin* create(const Factory*, const Host* host, const char* id) {
    if (bad("null")) return nullptr;
    if (bad("crashes-open")) crashAtOnce();
    auto* m = new Made;
    m->host = host;
    m->plugin = {descriptorAt(std::strncmp(id, "made.second.", 12) ? 0 : 1),
                 m,
                 [](const Plugin* p) {
                     checkThread(of(p), false);
                     return true;
                 },
                 [](const Plugin* p) {
                     if (bad("crashes-close")) crash();
                     delete &of(p);
                 },
                 [](const Plugin* p, double, uint32_t, uint32_t) {
                     checkThread(of(p), false);
                     if (bad("renews-slowly")) waitWhileHeld();
                     of(p).latency = uint32_t(of(p).values[1]);
                     return true;
                 },
                 [](const Plugin* p) { checkThread(of(p), false); },
                 [](const Plugin* p) {
                     checkThread(of(p), true);
                     return true;
                 },
                 [](const Plugin* p) { checkThread(of(p), true); },
                 [](const Plugin*) {},
                 process,
                 extension,
                 [](const Plugin*) {}};
    return &m->plugin;
}

const Factory factory = {
    [](const Factory*) -> uint32_t { return ownName().starts_with("two") ? 2 : 1; },
    [](const Factory*, uint32_t index) { return descriptorAt(index); }, create};

} // namespace

extern "C" __attribute__((visibility("default"))) const Entry clap_entry = {
    version,
    [](const char*) {
        if (bad("crashes-load")) crashAtOnce();
        while (bad("hangs-load")) sleep(1);
        return true;
    },
    [] {},
    [](const char* id) -> const void* {
        return std::strcmp(id, factoryId) ? nullptr : static_cast<const void*>(&factory);
    }};
