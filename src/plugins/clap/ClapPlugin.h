#pragma once

#include "plugins/PluginTimers.h"
#include "plugins/PortPlugin.h"
#include "plugins/clap/ClapAbi.h"
#include "plugins/clap/ClapEvents.h"

#include <memory>
#include <vector>

/// A CLAP plug-in. Its state is what it stores itself or, where it stores nothing, the values of
/// its parameters. It has no programs.
class ClapPlugin final : public PortPlugin {
public:
    /// Null, with `why`, where that fails. `host` outlives it.
    static std::unique_ptr<ClapPlugin> load(const PluginFile& file, PluginHost& host, CStr& why);
    /// Names of those that a library holds; none, with `why`, where it is of no use.
    static std::vector<CStr> inside(const CStr& file, CStr& why);
    ~ClapPlugin() override;

    CStr vendor() override;
    CStr product() override;
    bool isInstrument() const override;
    bool sendsMidi() override { return notesOut; }
    CStr paramText(int index) override;
    Bytes chunk(bool whole) override;
    bool setChunk(const Bytes& data, bool whole) override;
    bool process(float** in, float** out, int frames) override;
    CPoint openEditor(unsigned long window) override;
    void closeEditor() override;
    void idle() override;

private:
    friend struct ClapOffers;

    explicit ClapPlugin(PluginHost& answers);

    template <class T>
    const T* extension(const char* name) const {
        return static_cast<const T*>(plugin->extension(plugin, name));
    }
    bool start(const PluginFile& file, CStr& why) override;
    void readPorts() override;
    void activate() override;
    void deactivate() override;
    void readParams();
    void readValues();
    void flush();
    void giveParams();
    void take(const clapabi::EventHeader* event);
    PluginTimers::Due onTimer();
    PluginTimers::Ready onFile();
    bool onAudio() const;
    void connect(std::vector<clapabi::AudioBuffer>& buffers, const std::vector<int>& ports,
                 float** pins);
    void fillTransport();

    clapabi::Host offered{};
    const clapabi::Plugin* plugin = nullptr; ///< owned
    const clapabi::PluginParams* paramsExt = nullptr;
    const clapabi::PluginState* stateExt = nullptr;
    const clapabi::PluginGui* guiExt = nullptr;
    const clapabi::PluginTimer* timerExt = nullptr;
    const clapabi::PluginFiles* filesExt = nullptr;
    bool notesMidi = false, notesOut = false; ///< it hears messages, and sends some
    bool shown = false;
    PluginTimers timers{onTimer(), onFile()};
    Shared<bool> callbackAsked{false}, restartAsked{false}, flushAsked{false}, paramsAsked{false};
    Shared<bool> valuesAsked{false};
    int64_t framesSeen = 0; ///< of `framesDone`, at the latest idle pass
    Shared<int64_t> framesDone{0};

    // Whoever renders.
    ClapEvents events;
    clapabi::OutEvents outEvents{};
    clapabi::TransportEvent transport{};
    std::vector<clapabi::AudioBuffer> buffersIn, buffersOut;
};
