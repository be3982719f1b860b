#pragma once

#include "plugins/PortPlugin.h"
#include "plugins/vst3/Vst3Lists.h"
#include "plugins/vst3/Vst3Presets.h"

#include <array>
#include <memory>
#include <vector>

class Vst3Editor;
class Vst3Library;

/// A VST 3 plug-in: its component, which plays, and its controller, which knows the parameters. Its
/// state is that of both. Its programs are the state that it begins with and its preset files; none
/// where there is no file.
class Vst3Plugin final : public PortPlugin, private Vst3Owned<vst3::ComponentHandler> {
public:
    /// Null, with `why`, where that fails. `host` outlives it.
    static std::unique_ptr<Vst3Plugin> load(const PluginFile& file, PluginHost& host, CStr& why);
    /// Keys of those that a bundle holds; none, with `why`, where it is of no use.
    static std::vector<CStr> inside(const CStr& file, CStr& why);
    ~Vst3Plugin() override;

    CStr vendor() override { return maker; }
    CStr product() override { return name; }
    bool isInstrument() const override { return instrument; }
    bool sendsMidi() override { return eventsOut; }
    CStr paramText(int index) override;
    void setParam(int index, float share) override;
    int numPrograms() const override { return presets.empty() ? 0 : 1 + int(presets.size()); }
    int program() override { return current; }
    void setProgram(int index) override;
    CStr programName(int index) override;
    Bytes chunk(bool whole) override;
    bool setChunk(const Bytes& data, bool whole) override;
    bool process(float** in, float** out, int frames) override;
    CPoint openEditor(unsigned long window) override;
    void closeEditor() override;
    void idle() override;

private:
    /// What a block has told of a parameter, for the controller.
    struct Shown {
        vst3::ParamId id;
        double value;
    };
    static constexpr int midiChannels = 16, midiControls = 130;

    explicit Vst3Plugin(PluginHost& answers);

    // What the controller tells.
    vst3::Result beginEdit(vst3::ParamId param) override;
    vst3::Result performEdit(vst3::ParamId param, double share) override;
    vst3::Result endEdit(vst3::ParamId param) override;
    vst3::Result askRestart(int32_t flags) override;

    bool start(const PluginFile& file, CStr& why) override;
    void readPorts() override;
    void activate() override;
    void deactivate() override;
    bool makeController(const Vst3Library& library, const vst3::Uid& own);
    void joinHalves(bool on);
    Vst3PresetState presentState();
    bool giveState(const Vst3PresetState& state);
    void readParams();
    void readValues();
    void readControls();
    void showController();
    void fillIn(int frames);
    void fillContext();
    void takeOut();
    bool render(int frames);
    static void connect(std::vector<vst3::AudioBus>& made, const std::vector<int>& buses,
                        float** pins);

    Vst3Application application;
    vst3::Component* component = nullptr; ///< held, as the next two
    vst3::Processor* processor = nullptr;
    vst3::Controller* controller = nullptr;
    bool ownController = false; ///< it is an object of its own
    CStr name, maker, key;
    Vst3PresetState usual;     ///< that it begins with
    std::vector<CStr> presets; ///< files
    int current = 0;           ///< program
    bool instrument = false, eventsOut = false, hearsEvents = false;
    std::vector<double> shown; ///< what the controller shows
    Shared<bool> showsOld{false};
    /// The parameters that MIDI controllers stand for, -1 none.
    std::array<std::array<int64_t, midiControls>, midiChannels> controls{};
    Shared<bool> tellsAll{false}; ///< the next block tells all values
    Shared<int> restartAsked{0};  ///< flags
    std::unique_ptr<Vst3Editor> editor;

    // Whoever renders.
    vst3::Context context{};
    Vst3Changes changesIn, changesOut;
    Vst3Events eventListIn, eventListOut;
    std::vector<vst3::AudioBus> audioIn, audioOut;
    Ring<Shown, 1024> toShow;
};
