#pragma once

#include "engine/CComp.h"
#include "engine/plan/AheadWork.h"
#include "plugins/PinBuffers.h"
#include "plugins/Plugin.h"
#include "plugins/PluginClaim.h"
#include "plugins/PluginValues.h"

#include <memory>
#include <optional>

struct Setting;

/// A plug-in as a component of the graph: its pins are channels, its MIDI a port, its parameters
/// and programs those of the component. Without a plug-in it plays nothing, and as an insert passes
/// on what comes in.
///
/// The interface thread calls the plug-in when it pleases, but for calls that must not meet a
/// block: these take the claim, and blocks meanwhile do without the plug-in.
class PluginComp : public CComp, public AheadWork, private PluginHost {
public:
    Stored<int> mch{-1};            ///< MIDI channel that is heard, -1 all
    Shared<int> pendingProg{-1};    ///< program that the next `idle` sets, -1 none
    Shared<bool> editorOpen{false}; ///< it does not doze then
    Shared<int> silence{0};         ///< frames that an effect has been silent for
    Shared<float> workShare{0.0f};  ///< part of a block that the plug-in works on it, of late
    Shared<unsigned> faults{0};     ///< pieces of a block in which it threw, or gave no numbers

    explicit PluginComp(CQV* root) : CComp(root) {}
    ~PluginComp() override;

    bool opened() const { return plugin != nullptr; }
    bool isInstrument() const { return plugin && plugin->isInstrument(); }
    bool failed() const { return plugin && plugin->failed(); } ///< its process has ended
    /// For its editor and files; null when it is not opened. Interface thread.
    Plugin* loaded() const { return plugin.get(); }

    static const Setting& channelSetting(); ///< `mch`

    // Of CComp.
    void idle() override;
    void setFrames(int frames) override;
    void setRate(double rate) override;
    void clear() override; ///< closes the plug-in
    void process(int frames) override;
    bool worksElsewhere() const override { return elsewhere; }
    void beginAhead(int frames) override;
    /// On the interface thread the plug-in is told at once, else with the next `idle`.
    void enable(ToStore<int> on) override;
    void sleep(int on) override;
    int numParams() override;
    void setParam(int index, ToStore<float> value) override;
    void listParam(int index, std::vector<StoredValue>& parts) override;
    CStr paramName(int index) override;
    CStr paramText(int index) override;
    std::vector<CStr> paramTexts(); ///< of those of the plug-in
    const ParamUnit* paramUnit(int index) override;
    float param(int index) override;
    void setProg(ToStore<int> index) override;
    int numProgs() override;
    void init() override { createChannels(); }
    void createChannels() override;
    int freezed(COutputChannel* channel) override;
    CStr getProgName(int index) override;
    void setProgName(int index, const CStr& name) override;
    int getDelay() override;

    int getProg() const; ///< as the plug-in tells it
    /// Replaces all audio channels by those that the pins ask for.
    void setupIO();
    void fixChannels(); ///< adds those that are missing
    /// Forgets what still sounds in the plug-in. For whoever has the graph, on the interface
    /// thread.
    void resetSound();

    // The editor. Interface thread.
    bool hasEditor() const { return plugin && plugin->hasEditor(); }
    CPoint openEditor(unsigned long window); ///< its size in its own pixels; 0 where it tells none
    void closeEditor();
    void idleEditor() override;
    std::optional<CPoint> takeAskedSize(); ///< that the plug-in has asked for since

protected:
    /// Makes the plug-in ready for the graph, running as `enabled` says.
    void take(std::unique_ptr<Plugin> made);
    /// Puts another one of the same in its place, and gives it what that has.
    void replace(std::unique_ptr<Plugin> made);
    PluginHost& asHost() { return *this; }
    /// The plug-in is loaded, and does not run yet.
    virtual void readPrograms(Plugin&) {}
    virtual void leavesProgram(Plugin&) {} ///< for another one
    virtual void keepState() {} ///< the plug-in is to come back: it tells what was heard last
    virtual void giveState() {} ///< it is back, and knows nothing of what was kept
    /// A change of the plug-in as a whole, which no block may meet; what it tells meanwhile of its
    /// parameters is not the user's doing.
    template <class F>
    void changeWhole(F&& change) {
        {
            const PluginHold hold(claim);
            quiet = true;
            change(*plugin);
            quiet = false;
        }
        wholeChanged();
    }

    CStr folder; ///< of the library

private:
    // Of PluginHost.
    double sampleRate() const override;
    int blockFrames() const override;
    PluginLevel level() const override;
    PluginTime songTime() const override;
    CStr libraryFolder() const override { return folder; }
    void parameterMoved(int index, float share) override;
    void gestureBegins(int index) override;
    void gestureEnds(int index) override;
    void sendMidi(int frame, int data) override;
    void sizeEditor(CPoint logical) override;
    void parameterDrifted(int index, float share) override;
    unsigned blockNumber() const override;
    void betweenBlocks(const std::function<void()>& change) override;
    void pluginLost() override { notices.raise(CompNotice::program); }
    void pluginReturns() override { keepState(); }
    void pluginReturned() override;
    void channelsChanged() override { channelsAsked = true; }
    void displayChanged() override { displayAsked = true; }

    void wholeChanged();
    void put(std::unique_ptr<Plugin>& made);
    void makeBuffers();
    void setRunning();
    void tellMoved(int index, float share);
    void serveRequests();
    void followLatency();
    void rebuildChannels();
    void takeIn(int frames);
    void takePiece(int frames, int offset);
    double blockStart(int frames) const;
    void noteLoad(int frames);
    bool isEffect() const { return listKind == listSends || listKind == listInsert; }
    bool wakesUp();
    void doze(int frames);
    void foldInputs(int frames) const;
    void spreadOutputs(int frames) const;
    void renderPieces(int frames);
    void subProcess(int frames, int offset);
    bool runPlugin(int frames, int offset);
    void passThrough(int frames, int offset) const;
    void addNotes(int frames, int offset);
    void doMapping(const CMIDIBytes* event);

    std::unique_ptr<Plugin> plugin; ///< replaced under the claim
    PluginClaim claim;
    PluginValues values;
    PinBuffers pins;
    Shared<bool> elsewhere{false};  ///< it runs in a process of its own
    Shared<bool> playsNotes{false}; ///< and without it nothing is passed on
    Shared<bool> running{false};    ///< it has been told so
    Shared<bool> renewed{false};    ///< it comes back to the graph, and begins afresh
    Shared<bool> quiet{false};      ///< the host itself moves parameters
    Shared<bool> rendering{false};  ///< the thread that has the graph is inside the plug-in
    bool takenIn = false;           ///< of this block, ahead of `process`; graph holder
    bool begun = false;             ///< the plug-in is at work on it; graph holder
    bool mine = false;              ///< the claim, in this block; graph holder
    int64_t workNs = 0;             ///< of the plug-in, in the latest block; graph holder
    int pieceStart = 0;             ///< of the piece that is rendered; graph holder
    Shared<double> startTicks{0.0}; ///< of the block, in the song
    bool telling = false;           ///< a move of the plug-in goes through the door
    int gestures = 0;               ///< that the plug-in has begun and not ended
    int wasEnabled = 1;             ///< before it went to sleep
    int declaredDelay = 0;          ///< that the delay compensation was last asked for
    Shared<bool> channelsAsked{false}, displayAsked{false}, editorIdleAsked{false};
    Shared<int64_t> askedSize{-1}; ///< width and height that the editor asks for, -1 none
};
