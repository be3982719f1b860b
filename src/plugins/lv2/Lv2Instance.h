#pragma once

#include "plugins/lv2/EventBuffer.h"
#include "plugins/lv2/Lv2Worker.h"

#include <lv2/log/log.h>
#include <lv2/options/options.h>
#include <memory>
#include <vector>

/// An LV2 plug-in at work, for one rate and one length of blocks: its own part, what the host
/// offers it, and the memory of its ports. Interface thread, but where told.
class Lv2Instance {
public:
    static constexpr float updatesPerSecond = 30.0f; ///< of its window

    /// Null, with `why`, where that fails.
    static std::unique_ptr<Lv2Instance> make(Lv2World& world, const LilvPlugin* plugin,
                                             const Lv2Ports& ports, double rate, int frames,
                                             CStr& why);
    ~Lv2Instance();
    Lv2Instance(const Lv2Instance&) = delete;
    Lv2Instance& operator=(const Lv2Instance&) = delete;

    LilvInstance* get() const { return instance.get(); }
    /// Whether the host offers a feature that a plug-in cannot do without.
    static bool offers(const char* feature);
    /// What it offers to a plug-in that gives or takes its state.
    const LV2_Feature* const* forState() const { return stateFeatures.data(); }
    const LV2_Options_Option* options() const { return told.data(); }

    double rate() const { return hz; }
    int frames() const { return int(longest); }
    void setRunning(bool on);

    // Whoever renders.
    float& control(uint32_t port) { return controls[port]; }
    std::vector<EventBuffer>& eventsIn() { return inputs; }
    std::vector<EventBuffer>& eventsOut() { return outputs; }
    void run(const Lv2Ports& ports, float** in, float** out, int frames, bool offline);

private:
    Lv2Instance(Lv2World& world, const Lv2Ports& ports, double rate, int frames);
    void fillFeatures(Lv2World& world);
    void connect(const Lv2Ports& ports);

    const double hz;
    const int32_t longest, shortest = 1;
    int32_t sequenceBytes = 0;
    float rateAsked, updates = updatesPerSecond, scale = 1.0f;
    std::vector<LV2_Options_Option> told;
    LV2_Log_Log log{};
    LV2_URID errorKind = 0;
    Lv2Worker worker;
    std::vector<LV2_Feature> offered;
    std::vector<const LV2_Feature*> features, stateFeatures;
    std::vector<float> controls; ///< a place for each port
    std::vector<std::vector<float>> idleSignals;
    std::vector<EventBuffer> inputs, outputs;
    Lilv<LilvInstance> instance; ///< ends first
    bool running = false;
};
