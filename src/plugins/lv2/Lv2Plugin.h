#pragma once

#include "base/Atomic.h"
#include "plugins/Plugin.h"
#include "plugins/PluginFile.h"
#include "plugins/lv2/Lv2Instance.h"
#include "plugins/lv2/PositionAtom.h"
#include "plugins/lv2/PropertyAtoms.h"

#include <functional>
#include <memory>

class Lv2Editor;
struct PluginFacts;
struct StateText;

/// An LV2 plug-in. Its programs are the one that it begins with and its presets; its state is the
/// values of its controls and what it stores itself.
class Lv2Plugin final : public Plugin {
public:
    /// Null, with `why`, where that fails. `host` outlives it.
    static std::unique_ptr<Lv2Plugin> load(const PluginFile& file, PluginHost& host, CStr& why);
    ~Lv2Plugin() override;

    CStr vendor() override;
    CStr product() override;
    int32_t uniqueId() const override { return id; }
    bool isInstrument() const override;
    bool sendsMidi() override { return ports.sendsMidi(); }
    int inputs() const override { return int(ports.audioIn.size()); }
    int outputs() const override { return int(ports.audioOut.size()); }
    bool stereoPair(bool input, int index) override;
    int latency() const override { return delay; }
    int numParams() const override { return int(ports.params.size()); }
    CStr paramName(int index) override;
    CStr paramText(int index) override;
    void setParam(int index, float share) override;
    float param(int index) override;
    int numPrograms() const override { return 1 + int(presets.size()); }
    int program() override { return current; }
    void setProgram(int index) override;
    CStr programName(int index) override;
    bool hasChunks() const override { return true; }
    Bytes chunk(bool whole) override;
    bool setChunk(const Bytes& data, bool whole) override;
    std::vector<File> files() override;
    void setFile(int index, const CStr& path) override;
    void setRate(double rate) override;
    void setBlock(int frames) override;
    void setRunning(bool on) override;
    void addMidi(int frame, int data) override;
    bool process(float** in, float** out, int frames) override;
    bool hasEditor() const override { return drawn; }
    CPoint openEditor(unsigned long window) override;
    void closeEditor() override;
    void idleEditor() override {} ///< it has a timer
    void idle() override {}

private:
    friend class Lv2Editor;
    struct Note {
        int frame, data;
    };
    struct GivenFile {
        std::string path;        ///< written on the interface thread, and not while it is `due`
        Shared<bool> due{false}; ///< the plug-in is to be told
        bool toldNow = false;    ///< with this block; whoever renders
    };
    static constexpr size_t mostNotes = 1024;

    Lv2Plugin(std::shared_ptr<Lv2World> of, const LilvPlugin* plugin, PluginHost& answers);

    float valueOf(int index) const { return wanted[size_t(index)]; }
    void setValue(const char* symbol, const void* value, uint32_t size, uint32_t type);
    void setUsual();
    bool make(double rate, int frames, CStr& why);
    void remake(double rate, int frames);
    template <class F>
    void renew(double rate, int frames, F&& prepare);
    bool leavesFiles(const StateText& text);
    Lilv<LilvState> ownState();
    void give(const LilvState* state);
    void takeProperty(int index, float before, float now);
    void give(size_t file, const std::string& path);
    void hearOfFiles();
    void takePatch(const LV2_Atom* atom);
    void fillProperties();
    void fillEvents(int frames);
    void takeEvents();

    const std::shared_ptr<Lv2World> world;
    const LilvPlugin* const plugin; ///< the world's
    PluginHost& host;
    const int32_t id; ///< made of the URI
    Lv2Ports ports;
    std::vector<std::string> presets; ///< URIs
    bool drawn = false, keepsOwn = false, running = false;
    int current = 0;
    std::vector<Shared<float>> wanted; ///< of the parameters
    std::vector<Shared<float>> meters; ///< of what the plug-in shows, after the latest block
    std::vector<GivenFile> given;      ///< of the files
    MessageRing toldFiles;             ///< paths; the number of a message is that of the file
    Shared<int> delay{0};
    std::unique_ptr<Lv2Instance> instance;
    std::unique_ptr<Lv2Editor> editor; ///< while it is open
    unsigned long window = 0;

    // Between a block and the editor. The number of a message is that of its port.
    MessageRing toPlugin, toEditor;
    Shared<bool> watched{false}; ///< somebody reads `toEditor`
    std::vector<char> messageRoom = MessageRing::buffer();

    // Whoever renders.
    std::vector<Note> notes;
    LV2_URID midiEvent, eventTransfer;
    PositionAtom position;
    PropertyAtoms properties;
};

/// Tells of the plug-ins in a bundle without starting any; their libraries have to load. False,
/// with `why`, where one does not.
bool lookIntoBundle(const CStr& bundle, const std::function<void(const PluginFacts&)>& found,
                    CStr& why);
