#pragma once

#include "plugins/Plugin.h"
#include "plugins/PluginFile.h"
#include "plugins/SentValues.h"
#include "plugins/vst3/Vst3Lists.h"

#include <array>
#include <memory>
#include <vector>

class Vst3Editor;
class Vst3Library;

/// A VST 3 plug-in: its component, which plays, and its controller, which knows the parameters. Its
/// state is that of both. It has no programs.
class Vst3Plugin final : public Plugin, private Vst3Owned<vst3::ComponentHandler> {
public:
    /// Null, with `why`, where that fails. `host` outlives it.
    static std::unique_ptr<Vst3Plugin> load(const PluginFile& file, PluginHost& host, CStr& why);
    /// Keys of those that a bundle holds; none, with `why`, where it is of no use.
    static std::vector<CStr> inside(const CStr& file, CStr& why);
    ~Vst3Plugin() override;

    CStr vendor() override { return maker; }
    CStr product() override { return name; }
    int32_t uniqueId() const override { return id; }
    bool isInstrument() const override { return instrument; }
    bool sendsMidi() override { return eventsOut; }
    int inputs() const override { return pinsOf(busesIn); }
    int outputs() const override { return pinsOf(busesOut); }
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
    struct Param {
        vst3::ParamId id = 0;
        CStr name, unit;
        bool program = false; ///< it changes all others
    };
    struct Note {
        int frame, data;
    };
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

    static int pinsOf(const std::vector<int>& buses);
    bool pinsFit() const { return inputs() <= mostPins && outputs() <= mostPins; }
    bool isParam(int index) const { return index >= 0 && index < numParams(); }
    int paramOf(vst3::ParamId wanted) const;
    bool start(const PluginFile& file, CStr& why);
    bool makeController(const Vst3Library& library, const vst3::Uid& own);
    void joinHalves(bool on);
    void readBuses();
    void readParams();
    void readValues();
    void readControls();
    void activate();
    void deactivate();
    void renew();
    void showController();
    void fillIn(int frames);
    void fillContext();
    void takeOut();
    bool render(int frames);
    static void connect(std::vector<vst3::AudioBus>& made, const std::vector<int>& buses,
                        float** pins);

    PluginHost& host;
    Vst3Application application;
    vst3::Component* component = nullptr; ///< held, as the next two
    vst3::Processor* processor = nullptr;
    vst3::Controller* controller = nullptr;
    bool ownController = false; ///< it is an object of its own
    CStr name, maker;
    int32_t id = 1; ///< made of its key
    bool instrument = false, drawn = false, eventsOut = false, hearsEvents = false;
    std::vector<int> busesIn, busesOut; ///< channels of each
    std::vector<Param> params;
    SentValues values;
    std::vector<double> shown; ///< what the controller shows
    Shared<bool> showsOld{false};
    /// The parameters that MIDI controllers stand for, -1 none.
    std::array<std::array<int64_t, midiControls>, midiChannels> controls{};
    Shared<int> delay{0};
    double rate = 0.0;
    int block = 0;
    bool active = false, wantsRunning = false;
    Shared<bool> tellsAll{false}; ///< the next block tells all values
    Shared<int> restartAsked{0};  ///< flags
    std::unique_ptr<Vst3Editor> editor;

    // Whoever renders.
    std::vector<Note> notes;
    bool processing = false;
    vst3::Context context{};
    Vst3Changes changesIn, changesOut;
    Vst3Events eventListIn, eventListOut;
    std::vector<vst3::AudioBus> audioIn, audioOut;
    Ring<Shown, 1024> toShow;
};
