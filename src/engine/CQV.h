#pragma once

#include "base/Atomic.h"
#include "base/CSettings.h"
#include "engine/CComp.h"
#include "engine/CTasks.h"
#include "engine/GraphClock.h"
#include "engine/GraphHold.h"
#include "engine/SamplePool.h"
#include "engine/Transport.h"
#include "engine/UndoHost.h"

#include <memory>

class CElastiqueRender;
class CAAM;
class CClick;
class CDFT;
class CDiskThread;
class CFileMapperBase;
class CPeakThread;
class COnChange;
class CPreviewBase;
class CStringList;
class CThread;
class DeviceMidi;
class GraphPlans;
class GraphWorkers;
class SongClock;
class SpectrumTap;
class ValueDoor;
struct GraphScratch;

/// The host: root of the graph, owner of everything that lives for the length of a run. One object,
/// reached through `qv`.
class CQV : public CComp, public GraphClock, public Transport, public UndoHost, public SamplePool {
public:
    Shared<bool> renderPending{false};
    bool settingsEnabled = true;
    COnChange* renderCallback = nullptr; ///< owned until called
    Shared<float> midiActivity{0.0f};
    Shared<int> audioSuspended{0}; ///< counts suspensions; the callback then only plays silence
    Shared<int> renderMode{0};     ///< 1: the graph belongs to an offline operation
    bool renderDry = false, renderFreeze = false;
    bool damaged = false;            ///< the project's file has more than could be read of it
    Shared<unsigned> changes{0};     ///< counts what may have to be saved, undo and redo included
    Notices<HostNotice> hostNotices; ///< to the interface; `delays` to the cycle
    Shared<int> changedFolders{0};   ///< mode of the list that HostNotice `folders` is about
    static constexpr int stretcherCount = 8;
    ListOf<CElastiqueRender> stretchers; ///< owned: all that can sound at one time
    Shared<CComp*> masterSeq{nullptr};   ///< first sequencer; found in `prepare`
    CAAM* aam = nullptr;                 ///< not owned
    Shared<unsigned char> spectrumOn{1}; ///< 1: what reaches the audio out goes into `dft`
    CDFT* dft;                           ///< owned; interface thread
    Shared<int> ctrlStart{-1}, ctrlStop{-1}, ctrlRewind{-1}, ctrlRecord{-1}, ctrlTempo{-1};
    Shared<int> lastCC{0}, learned{0};
    CTasks* tasks;                           ///< owned
    const std::unique_ptr<ValueDoor> values; ///< what the user sets goes through it
    ListOf<CComp> sends;                     ///< owned
    CStr presetFolder, clipFolder, sampleFolder;
    CClick* click;                          ///< owned
    Shared<CPreviewBase*> preview{nullptr}; ///< owned
    CFileMapperBase* fileMapper = nullptr;  ///< not owned
    bool idling = false;
    Shared<float> listenVolume{1.0f}; ///< squared at the device outputs
    CSettings settings;
    ListOf<CThread> threads;          ///< owned
    CMIDIQ* inQueue;                  ///< owned; the tempo map
    int mapLearn = 0;                 ///< 1: `addMap` makes maps
    int recBits = 16;                 ///< of recorded files
    int recLatency = 0;               ///< frames
    Shared<int> requestedProgram{-1}; ///< program change on its way to the file mapper, -1 none
    const std::unique_ptr<DeviceMidi> deviceMidi; ///< for the driver's callback
    const std::unique_ptr<SongClock> clock;       ///< what rates of control count from

    CQV();
    ~CQV() override;
    CQV(const CQV&) = delete;
    CQV& operator=(const CQV&) = delete;

    // Of CComp.
    void idle() override;
    void start() override;
    void stop() override;
    void setPos(double ticks) override;
    void prepare(int frames) override;
    void setFrames(int frames) override;
    void setRate(double rate) override;
    /// Empties the project, history included; what is still queued is carried out before. Interface
    /// thread.
    void clear() override;
    void process(int frames) override;
    CStr getName(CObject* io) override;
    // What the host's own steps change of a song, takes among them, is its sequencer's business.
    void perform(CUndoItem* item, int op) override;
    bool takesWhole(const CUndoItem* item) override;
    void planStep(UndoPlan& plan, CUndo* step) override;
    void performPlan() override;
    void read(CStream*, int) override {}
    void write(CStream*) override {}
    /// The device components of a new project, from the enabled channels.
    void init() override;
    double getSync(int) override { return sync; }
    void setLoop(ToStore<int> on) override;
    int getLoop() override { return loop; }

    // Transport.
    using CComp::rec;
    /// Recording on or off; stopped, begins with the count-in if there is one.
    void rec();
    /// Ends a take at once and closes its step. Interface thread.
    void endTake();
    /// Ticks of a frame, as playback counts them; see `SongClock::exact`. Graph holder.
    double ticksPerFrame() const;
    void createTempoMap();

    // Deferred and exclusive work.
    /// Takes the delegate; false, and it is deleted, when too much waits. Interface thread.
    bool addTask(COnChange* delegate, CObject* arg);
    /// Asks for the graph for as long as the callback runs; ignored while one is registered.
    void setRenderCallback(COnChange* callback);
    void addThread(CThread* thread);

    // Looking up. Null where there is none.
    CComp* getAudioOut();
    CComp* getAudioIn();
    CComp* getMIDIIn();
    CComp* getMIDIOut();
    CComp* getMasterSeq() { return masterSeq; } ///< as of the latest block or start
    CComp* firstOfType(int type);
    CStr autoNameComp(const CStr& name);

    // Edits.
    /// A parameter of a component, strip or send was moved past the history, as a plug-in moves its
    /// own: the project is modified, and `paramMoved`. Views go through `values` instead.
    void addMap(CObject* target, int param, float value);
    /// The user moved a parameter: while recording the sequencer takes it down, with `mapLearn` it
    /// gets a controller map instead, that learns the next controller. Interface thread.
    void paramMoved(CObject* target, int param, float value);
    /// A send bus, cabled to the audio out; at most 32, else "Too many sends".
    void addSendClicked(CObject* = nullptr);
    void addGroupClicked(CObject* = nullptr);

    // Settings.
    void readSettings();
    void writeSettings();
    int storeInt(const CStr& key, int def);
    /// Entries of a folder section, "name=path" each; without any, the folder that is found.
    void getFolders(const CStr& section, CStringList* names, CStringList* paths);

    /// Makes one more stretcher; false when there are all. Interface thread.
    bool makeStretcher();

    /// Something changed past the history, and stays a change until the next save: by a controller
    /// in the user's hands, not by automation that plays. Any thread.
    void setModified() {
        past.fetchAdd(1);
        countChange();
    }
    /// The project is not as it was. Any thread.
    void countChange() { changes.fetchAdd(1); }
    /// Wakes the thread that computes peak images. Interface thread.
    void updatePeaks();
    /// The device was opened: takes on its block size and rate.
    void aamChanged(CObject*);

    const std::unique_ptr<GraphPlans> plans;     ///< how a block is worked out
    const std::unique_ptr<GraphWorkers> workers; ///< who helps with it
    GraphScratch& scratch() const; ///< of the calling thread, which runs a step; graph holder

    // For the cycle (Cycle.cpp). Graph holder.
    void handleMIDIIn();
    /// Offers a controller to the maps of one component; true when it is consumed.
    bool midiMapped(CComp* c, CMIDIQ* queue, CMIDIBytes* e);

    // The hold on the graph: for GraphHold and the driver's callback.
    bool tryHold(GraphOwner who);
    /// For the interface thread that has tried in vain: blocks stay off until it succeeds.
    void insistOnHold() { interfaceInsists = true; }
    void releaseHold();

    // Workers.
    /// Has every worker stand still while content that it may be using is freed.
    void parkWorkers();
    void unparkWorkers();

private:
    std::atomic<GraphOwner> owner{GraphOwner::free};
    Shared<bool> interfaceInsists{false}; ///< the next block leaves the graph to the interface
    SpectrumTap* spectrum;                ///< owned
    CDiskThread* diskThread;              ///< owned
    CPeakThread* peakThread;              ///< owned

    void runBlock(int frames);
    void serveMaps(CMIDIBytes* e);
    void runPreview(int frames);

    void emptyProject();
    void addDevice(CComp* c, int x, int y);

    void idleTake();
    void finishTake();
    void idleRender();
    void idleProgramChange();
    void idleMessages();
};

extern CQV* qv;
