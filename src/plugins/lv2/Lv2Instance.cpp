#include "plugins/lv2/Lv2Instance.h"

#include "base/Messages.h"
#include "plugins/ForeignCall.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <lv2/atom/atom.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/core/lv2.h>
#include <lv2/parameters/parameters.h>
#include <lv2/state/state.h>
#include <lv2/ui/ui.h>

namespace {

/// Those that say something of the host, with no data to them.
constexpr const char* plainFeatures[] = {LV2_BUF_SIZE__boundedBlockLength,
                                         LV2_STATE__loadDefaultState, LV2_CORE__isLive,
                                         LV2_CORE__inPlaceBroken, LV2_CORE__hardRTCapable};
constexpr const char* otherFeatures[] = {
    LV2_URID__map,        LV2_URID__unmap,    LV2_OPTIONS__options, LV2_LOG__log,
    LV2_WORKER__schedule, LV2_STATE__mapPath, LV2_STATE__freePath};

bool isOneOf(const char* uri, auto& list) {
    return std::ranges::any_of(list, [uri](const char* one) { return !std::strcmp(one, uri); });
}

/// Errors are told, but for those of a block; `of` is the number of that kind.
int printLogList(LV2_Log_Handle of, LV2_URID kind, const char* format, va_list values) {
    char text[512];
    const int size = std::vsnprintf(text, sizeof text, format, values);
    if (kind == *static_cast<const LV2_URID*>(of) && isInterfaceThread()) showStr(text);
    return size;
}

int printLog(LV2_Log_Handle of, LV2_URID kind, const char* format, ...) {
    va_list values;
    va_start(values, format);
    const int size = printLogList(of, kind, format, values);
    va_end(values);
    return size;
}

} // namespace

bool Lv2Instance::offers(const char* feature) {
    return isOneOf(feature, plainFeatures) || isOneOf(feature, otherFeatures);
}

std::unique_ptr<Lv2Instance> Lv2Instance::make(Lv2World& world, const LilvPlugin* plugin,
                                               const Lv2Ports& ports, double rate, int frames,
                                               CStr& why) {
    std::unique_ptr<Lv2Instance> made(new Lv2Instance(world, ports, rate, frames));
    contained([&] {
        made->instance.reset(lilv_plugin_instantiate(plugin, rate, made->features.data()));
    });
    if (!made->instance) {
        why = "The plug-in does not start.";
        return nullptr;
    }
    const auto* interface = static_cast<const LV2_Worker_Interface*>(
        lilv_instance_get_extension_data(made->get(), LV2_WORKER__interface));
    made->worker.start(lilv_instance_get_handle(made->get()), interface);
    made->connect(ports);
    return made;
}

Lv2Instance::Lv2Instance(Lv2World& world, const Lv2Ports& ports, double rate, int frames)
    : hz(rate), longest(frames), rateAsked(float(rate)), controls(ports.count, 0.0f) {
    for (const auto& [list, buffers] :
         {std::pair{&ports.eventsIn, &inputs}, std::pair{&ports.eventsOut, &outputs}})
        for (const Lv2Ports::Events& port : *list) {
            buffers->emplace_back(port, world.urids);
            sequenceBytes = std::max(sequenceBytes, int32_t(port.bytes));
        }
    for (size_t i = 0; i < ports.carriers.size(); i++)
        idleSignals.emplace_back(size_t(frames), 0.0f);
    for (const Lv2Ports::Param& p : ports.params)
        if (p.port != Lv2Ports::Param::noPort) controls[p.port] = p.usual;
    fillFeatures(world);
}

Lv2Instance::~Lv2Instance() {
    contained([this] { setRunning(false); });
}

void Lv2Instance::fillFeatures(Lv2World& world) {
    UridMap& urids = world.urids;
    const LV2_URID number = urids.number(LV2_ATOM__Int), real = urids.number(LV2_ATOM__Float);
    const auto option = [&](const char* key, LV2_URID type, const void* value) {
        told.push_back({LV2_OPTIONS_INSTANCE, 0, urids.number(key), 4, type, value});
    };
    option(LV2_BUF_SIZE__minBlockLength, number, &shortest);
    option(LV2_BUF_SIZE__maxBlockLength, number, &longest);
    option(LV2_BUF_SIZE__nominalBlockLength, number, &longest);
    option(LV2_BUF_SIZE__sequenceSize, number, &sequenceBytes);
    option(LV2_PARAMETERS__sampleRate, real, &rateAsked);
    option(LV2_UI__updateRate, real, &updates);
    option(LV2_UI__scaleFactor, real, &scale);
    told.push_back({});
    errorKind = urids.number(LV2_LOG__Error);
    log = {&errorKind, printLog, printLogList};
    offered = {{LV2_URID__map, &urids.map},
               {LV2_URID__unmap, &urids.unmap},
               {LV2_OPTIONS__options, told.data()},
               {LV2_LOG__log, &log}};
    for (const char* uri : plainFeatures) offered.push_back({uri, nullptr});
    offered.push_back({LV2_WORKER__schedule, &worker.later});
    offered.push_back({LV2_WORKER__schedule, &worker.now});
    for (const LV2_Feature& feature : offered) {
        if (feature.data != &worker.now) features.push_back(&feature);
        if (feature.data != &worker.later) stateFeatures.push_back(&feature);
    }
    features.push_back(nullptr);
    stateFeatures.push_back(nullptr);
}

void Lv2Instance::connect(const Lv2Ports& ports) {
    for (uint32_t i = 0; i < ports.count; i++) lilv_instance_connect_port(get(), i, nullptr);
    for (const Lv2Ports::Param& p : ports.params)
        if (p.port != Lv2Ports::Param::noPort)
            lilv_instance_connect_port(get(), p.port, &controls[p.port]);
    for (const uint32_t port : ports.shown)
        lilv_instance_connect_port(get(), port, &controls[port]);
    for (size_t i = 0; i < ports.carriers.size(); i++)
        lilv_instance_connect_port(get(), ports.carriers[i], idleSignals[i].data());
    for (auto* buffers : {&inputs, &outputs})
        for (EventBuffer& events : *buffers)
            lilv_instance_connect_port(get(), events.port.port, events.sequence());
}

void Lv2Instance::setRunning(bool on) {
    if (on == running || !instance) return;
    running = on;
    on ? lilv_instance_activate(get()) : lilv_instance_deactivate(get());
}

void Lv2Instance::run(const Lv2Ports& ports, float** in, float** out, int frames, bool offline) {
    for (size_t i = 0; i < ports.audioIn.size(); i++)
        lilv_instance_connect_port(get(), ports.audioIn[i].port, in[i]);
    for (size_t i = 0; i < ports.audioOut.size(); i++)
        lilv_instance_connect_port(get(), ports.audioOut[i].port, out[i]);
    for (EventBuffer& events : outputs) events.vacate();
    worker.beginBlock(offline);
    lilv_instance_run(get(), uint32_t(frames));
    worker.endBlock();
}
