#pragma once

#include "base/Atomic.h"
#include "plugins/Plugin.h"
#include "plugins/vst2/Vst2Abi.h"

#include <memory>

/// A VST 2 plug-in.
class Vst2Plugin final : public Plugin {
public:
    /// Loads a library and makes its effect; null, with `why`, where that fails. `host` outlives
    /// it.
    static std::unique_ptr<Vst2Plugin> load(const CStr& path, PluginHost& host, CStr& why);
    ~Vst2Plugin() override;

    CStr vendor() override;
    CStr product() override;
    int32_t uniqueId() const override { return effect->uniqueID; }
    bool isInstrument() const override;
    bool sendsMidi() override;
    int inputs() const override { return effect->numInputs; }
    int outputs() const override { return effect->numOutputs; }
    bool stereoPair(bool input, int index) override;
    int latency() const override { return effect->initialDelay; }
    int numParams() const override { return effect->numParams; }
    CStr paramName(int index) override;
    CStr paramText(int index) override;
    void setParam(int index, float share) override;
    float param(int index) override;
    int numPrograms() const override { return effect->numPrograms; }
    int program() override;
    void setProgram(int index) override;
    CStr programName(int index) override;
    CStr currentProgramName() override;
    void renameProgram(const CStr& name) override;
    bool hasChunks() const override { return has(vst2::programChunks); }
    Bytes chunk(bool whole) override;
    bool setChunk(const Bytes& data, bool whole) override;
    void setRate(double rate) override;
    void setBlock(int frames) override;
    void setRunning(bool on) override;
    void addMidi(int frame, int data) override;
    bool process(float** in, float** out, int frames) override;
    bool hasEditor() const override { return has(vst2::hasEditor); }
    CPoint openEditor(unsigned long window) override;
    void closeEditor() override;
    void idleEditor() override;
    void idle() override;

    /// Whether an address is code of a library that is loaded and holds a plug-in.
    static bool isCode(const void* address);
    /// What the host answers an effect, or the library of one that is not ready yet.
    static intptr_t answer(vst2::Effect* effect, int32_t opcode, int32_t index, intptr_t value,
                           void* data, float number);

private:
    static constexpr int mostEvents = 1024;

    Vst2Plugin(vst2::Effect* made, PluginHost& answers);

    bool has(int32_t flag) const { return (effect->flags & flag) != 0; }
    intptr_t call(int32_t opcode, int32_t index = 0, intptr_t value = 0, void* data = nullptr,
                  float number = 0.0f);
    CStr text(int32_t opcode, int32_t index = 0);
    intptr_t answer(int32_t opcode, int32_t index, intptr_t value, void* data, float number);
    vst2::TimeInfo* time(int32_t mask);
    void takeEvents(const vst2::Events& sent);

    vst2::Effect* const effect; ///< the library's, until it is closed
    PluginHost& host;
    Shared<bool> rendering{false};
    vst2::TimeInfo renderTime{}, otherTime{}; ///< told in blocks, and elsewhere
    CStr folder;
    struct EventRoom;
    std::unique_ptr<EventRoom> events;
};
