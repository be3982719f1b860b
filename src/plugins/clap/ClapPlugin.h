#pragma once

#include "base/Atomic.h"
#include "plugins/ParamRange.h"
#include "plugins/Plugin.h"
#include "plugins/PluginFile.h"
#include "plugins/PluginTimers.h"
#include "plugins/SentValues.h"
#include "plugins/clap/ClapAbi.h"
#include "plugins/clap/ClapEvents.h"

#include <memory>
#include <vector>

/// A CLAP plug-in. Its state is what it stores itself or, where it stores nothing, the values of
/// its parameters. It has no programs.
class ClapPlugin final : public Plugin {
public:
    /// Null, with `why`, where that fails. `host` outlives it.
    static std::unique_ptr<ClapPlugin> load(const PluginFile& file, PluginHost& host, CStr& why);
    /// Names of those that a library holds; none, with `why`, where it is of no use.
    static std::vector<CStr> inside(const CStr& file, CStr& why);
    ~ClapPlugin() override;

    CStr vendor() override;
    CStr product() override;
    int32_t uniqueId() const override { return id; }
    bool isInstrument() const override;
    bool sendsMidi() override { return notesOut; }
    int inputs() const override { return pinsOf(portsIn); }
    int outputs() const override { return pinsOf(portsOut); }
    bool stereoPair(bool input, int index) override;
    int latency() const override { return delay; }
    int numParams() const override { return int(params.size()); }
    CStr paramName(int index) override;
    CStr paramText(int index) override;
    void setParam(int index, float share) override;
    float param(int index) override;
    int numPrograms() const override { return 0; }
    int program() override { return 0; }
    void setProgram(int) override {}
    CStr programName(int) override { return ""; }
    CStr currentProgramName() override { return ""; }
    void renameProgram(const CStr&) override {}
    bool hasChunks() const override { return true; }
    Bytes chunk(bool whole) override;
    bool setChunk(const Bytes& data, bool whole) override;
    void setRate(double rate) override;
    void setBlock(int frames) override;
    void setRunning(bool on) override;
    void addMidi(int frame, int data) override;
    bool process(float** in, float** out, int frames) override;
    bool hasEditor() const override { return drawn; }
    CPoint openEditor(unsigned long window) override;
    void closeEditor() override;
    void idleEditor() override { idle(); }
    void idle() override;

private:
    friend struct ClapOffers;
    struct Param {
        clapabi::Id id = 0;
        void* cookie = nullptr;
        CStr name;
        ParamRange range;
        double usual = 0.0;
    };

    explicit ClapPlugin(PluginHost& answers);

    template <class T>
    const T* extension(const char* name) const {
        return static_cast<const T*>(plugin->extension(plugin, name));
    }
    static int pinsOf(const std::vector<int>& ports);
    bool pinsFit() const { return inputs() <= mostPins && outputs() <= mostPins; }
    bool isParam(int index) const { return index >= 0 && index < numParams(); }
    int paramOf(clapabi::Id wanted) const;
    bool start(const PluginFile& file, CStr& why);
    void readPorts();
    void readParams();
    void readValues();
    void activate();
    void deactivate();
    void restart();
    void flush();
    void giveParams();
    void take(const clapabi::EventHeader* event);
    void serveTimers();
    bool onAudio() const;
    void connect(std::vector<clapabi::AudioBuffer>& buffers, const std::vector<int>& ports,
                 float** pins);
    void fillTransport();

    PluginHost& host;
    clapabi::Host offered{};
    const clapabi::Plugin* plugin = nullptr; ///< owned
    int32_t id = 1;                          ///< made of its name
    const clapabi::PluginParams* paramsExt = nullptr;
    const clapabi::PluginState* stateExt = nullptr;
    const clapabi::PluginGui* guiExt = nullptr;
    const clapabi::PluginTimer* timerExt = nullptr;
    const clapabi::PluginFiles* filesExt = nullptr;
    std::vector<int> portsIn, portsOut;       ///< channels of each
    bool notesMidi = false, notesOut = false; ///< it hears messages, and sends some
    bool drawn = false, shown = false;
    std::vector<Param> params;
    SentValues values;
    Shared<int> delay{0};
    double rate = 0.0;
    int block = 0;
    bool active = false, wantsRunning = false;
    PluginTimers timers;
    Shared<bool> callbackAsked{false}, restartAsked{false}, flushAsked{false}, paramsAsked{false};
    Shared<bool> valuesAsked{false};
    int64_t framesSeen = 0; ///< of `framesDone`, at the latest idle pass
    Shared<int64_t> framesDone{0};

    // Whoever renders.
    struct Note {
        int frame, data;
    };
    std::vector<Note> notes;
    bool processing = false;
    ClapEvents events;
    clapabi::OutEvents outEvents{};
    clapabi::TransportEvent transport{};
    std::vector<clapabi::AudioBuffer> buffersIn, buffersOut;
};
