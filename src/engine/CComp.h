#pragma once

#include "base/Atomic.h"
#include "base/CList.h"
#include "base/CObject.h"
#include "base/CStr.h"
#include "base/GraphMark.h"
#include "base/Stored.h"
#include "engine/CIO.h"
#include "engine/CMIDIQ.h"
#include "engine/COutputChannel.h"
#include "engine/CProgram.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "engine/Notices.h"

#include <cassert>
#include <vector>

class CAudioCable;
class CInputChannel;
class CMIDICable;
class CMapProg;
class CGraphic;
class CMouseEdit;
class CQV;
class CStream;
class CUndo;
class CUndoItem;
class CWin;
class PlanBuilder;
class PlanNode;
class UndoPlan;
struct CRect;
struct ParamUnit;
struct StoredValue;

/// Where a component hangs; it also selects the pass of the traversal.
enum ListKind : int {
    listNone = 0, ///< the host itself, or nowhere yet
    listComps = 1,
    listSends = 3,
    listInsert = 4,
};

/// Parameters that an effect has beside those that `numParams` counts.
enum EffectParam : int { paramPower = -1, paramWet = -2 };

/// Geometry and state of an editor window; the first eight are saved.
struct CEditorStruct {
    int left = 200, top = 200, width = 300, height = 300;
    int visible = 0, maximized = 0;
    int page = -1, pageItem = 0;
    int extra[3] = {0, 0, 0};
};

/// A node of the processing graph. It owns its children, programs, channels, ports and the cables
/// that arrive at it. Lists are changed only by whoever holds the graph (see `CUndo`), but for a
/// component that is not linked yet.
///
/// A component comes to life in four steps: construction, `init`, `createBuffers`, linking.
class CComp : public CObject {
public:
    CQV* host; ///< the root; for the host itself, the host
    CComp* parent = nullptr;
    Shared<COutputChannel*> ownerChannel{nullptr}; ///< of an insert: the channel that holds it
    Shared<int> listKind{listNone};
    int idleState = 2;
    ListOf<CComp> comps; ///< owned children
    Stored<int> curProg{0};
    ListOf<CProgram> progs; ///< owned
    Stored<int> enabled{1};
    Shared<int> sleeping{0}; ///< 1 while an undo step holds the component off the graph
    int posX = 32, posY = 32, iconW = 32, iconH = 32;
    Notices<CompNotice> notices; ///< to the interface
    int hideChs = 0;
    /// The sequencer whose MIDI arrives here, found in `prepare`; for an insert that of its owner.
    Shared<CComp*> sourceSeq{nullptr};
    CEditorStruct editorStruct;
    CEditorStruct mapStruct;
    ListOf<COutputChannel> outputs; ///< owned
    ListOf<CInputChannel> inputs;   ///< owned
    int curOutput = 0;
    ListOf<CMIDIQ> outPorts; ///< owned: of COutputPort, but the keyboard's
    ListOf<CMIDIQ> inPorts;  ///< owned
    bool processed = false, mixed = false, fxDone = false; ///< of this block; graph holder
    Shared<bool> busy{false};                              ///< inside `process`
    ListOf<CAudioCable> audioCables;                       ///< owned in-edges
    ListOf<CMIDICable> midiCables;                         ///< owned in-edges
    Stored<float> wet{1.0f};                               ///< wet share of an insert, 0 to 1
    ListOf<CMapProg> maps;                                 ///< owned; host only
    Shared<int> curMap{0};
    Shared<unsigned char> allNotesOff{0}; ///< the next `mergeMIDI` silences every channel
    Shared<int> sync{0};
    static constexpr int macroCount = 8;
    int macroParams[macroCount] = {-1, -1, -1, -1, -1, -1, -1, -1}; ///< parameter index, -1 unused
    PlanNode* planned = nullptr; ///< its place in the plan, while a step of it runs; graph holder

    explicit CComp(CQV* root);
    ~CComp() override;
    CComp(const CComp&) = delete;
    CComp& operator=(const CComp&) = delete;

    virtual void edit(bool show);
    /// Interface tick.
    virtual void idle();
    /// Decay of the meters and activity lights, after all `idle`.
    virtual void afteridle();
    virtual void start() {}
    virtual void rec(int) {}
    /// A take is asked for at a position, in ticks, where the song stands or runs. Gives where a
    /// song that stands begins to play: there, or earlier, to record from later on. Graph holder.
    virtual double planTake(double ticks, bool /*running*/) { return ticks; }
    /// Whether the song plays a while from where it is before the planned take begins.
    virtual bool leadsIntoTake() { return false; }
    virtual void beforeRec() {}
    virtual void afterRec() {}
    virtual void stop() {}
    virtual void setPos(double) {}
    /// Start of a block: clears guards, buffers and queues. Graph holder, as all down to `fx`.
    virtual void prepare(int frames);
    /// Rebuilds all buffers for another block size. Interface thread, with the graph.
    virtual void setFrames(int frames);
    virtual void setRate(double rate);
    virtual void clear() {}
    /// Tells what has to be worked out before this component, and what it does then: by default
    /// the sources of its cables, MIDI first, then `process`.
    virtual void planRender(PlanBuilder& plan);
    /// The same for its strips.
    virtual void planStrip(PlanBuilder& plan);
    /// Takes in the MIDI of the cables that arrive.
    virtual void mergeMIDI(int frames);
    virtual void process(int) {}
    virtual void sound(int) {} ///< of a part, in a step of its own behind the whole
    virtual void mix(int frames);
    virtual void fx(int frames);
    /// Adds what a part sends to bus number `bus` from before its strips.
    virtual void sendParts(int /*bus*/, CInputChannel* /*to*/, int /*frames*/) {}
    virtual void enable(ToStore<int> on); ///< also has the delay compensation renewed. Any thread
    virtual void sleep(int on) { sleeping = on; }
    virtual CStr getName(CObject* io);
    /// False leaves this source out of `mergeAudio`.
    virtual int canProcess() { return 1; }
    virtual int numParams() { return 0; }
    /// All parameters run from 0 to 1.
    virtual void setParam(int, ToStore<float>) {}
    /// Appends what a parameter moves, where its own number would not bring that back.
    virtual void listParam(int, std::vector<StoredValue>&) {}
    virtual CStr paramName(int) { return "noname"; }
    virtual CStr paramText(int) { return ""; }
    virtual const ParamUnit* paramUnit(int) { return nullptr; } ///< null: percent
    virtual float param(int) { return 0.0f; }
    virtual void doUpdate(int) {}
    static constexpr int updateSong = 32; ///< code of `doUpdate`: a step has changed the song
    /// Notices of a sequencer; others have none. Any thread.
    virtual void raiseSong(NoticeSet<SeqNotice>) {}
    /// Carries out the component's share of a recorded edit. `op`: 1 done, 2 undone, 4 redone.
    virtual void perform(CUndoItem*, int) {}
    /// Whether an item of a step about this component, one that moves an object or swaps content,
    /// may be carried out together with others, without a `perform` of its own. Interface thread.
    virtual bool takesWhole(const CUndoItem*) { return false; }
    /// Such a step is prepared: the component notes what it will have to do, and may order lists.
    /// Interface thread; again, if the lists change before the step is carried out.
    virtual void planStep(UndoPlan&, CUndo*) {}
    /// The step has been carried out. Graph holder.
    virtual void performPlan() {}
    virtual void setProg(ToStore<int> index);
    virtual int numProgs() { return progs.getCount(); }
    /// Reads its own content, which ends at stream position `end`.
    virtual void read(CStream* stream, int end);
    virtual void write(CStream*) {}
    virtual void saving();
    /// Makes the channels and ports of a new component.
    virtual void init() {}
    virtual void createChannels() {}
    virtual int renderDuration() { return 0; }
    /// A duplicate, owned by the caller; null, with a message, where a class cannot be duplicated.
    virtual CComp* copy();
    virtual double getSync(int) { return 0.0; }
    virtual void setLoop(ToStore<int>) {}
    virtual int getLoop() { return 0; }
    virtual void getLoopSection(int& from, int& to) { from = 0, to = 960; }
    virtual void setLoopSection(ToStore<int>, ToStore<int>) {}
    virtual double getPos() { return 0.0; }
    virtual void getTimeSig(int& num, int& den) { num = 4, den = 4; }
    virtual void draw(CGraphic*, const CRect&, CMouseEdit*, CObject*) {}
    virtual void playSound(void*, float) {}
    virtual void del(CObject*) {}
    /// A frozen channel's path drops out of the delay compensation.
    virtual int freezed(COutputChannel*) { return 0; }
    virtual void diskRead() {}
    virtual CStr getProgName(int) { return ""; }
    virtual void setProgName(int, const CStr&) {}
    /// Latency in frames.
    virtual int getDelay() { return 0; }
    /// The child that has a given channel or port, null when it is not a child's.
    virtual CComp* getComp(CObject*) { return nullptr; }
    /// A parameter of `object` was moved by the user.
    virtual void recParam(CObject*, int, float) {}
    /// Index -1 gives the count; else the name, and with `build` adds the program.
    virtual int factoryProg(CUndo*, int, CStr&, bool) { return 0; }
    /// Appends a CSendRecord (UndoHost.h) for each output. Interface thread.
    virtual void copySendData(CList* records);
    /// -1 means the current one; null outside the list.
    virtual CProgram* getProgram(int index);
    virtual int getMacroParam(int index);
    virtual void setMacroParam(int index, int param);
    virtual int numMacroParams() { return macroCount; }
    virtual void getTempoMap(CMIDIQ*) {}

    void setId(const CStr& name);
    /// A toggle, for the graph holder: makes and links the cable, or unlinks the one there is,
    /// which then is the caller's. Null without a source or an input. A null `to` means the first.
    CAudioCable* addAudioCable(COutputChannel* from, CInputChannel* to);
    CMIDICable* addMIDICable(CMIDIQ* from, CMIDIQ* to);
    COutputChannel* getCurOutputChannel();
    void setCurOutputChannel(int index);
    /// Takes name, position and content of `src`, by writing and reading it.
    void copyData(CComp* src);
    void clearIO();
    void copyIO(CComp* src);
    /// Records, for a duplicate of `src`, the same cables in and out.
    void copyCables(CComp* src, CUndo* undo);
    /// Records the removal of every cable at or below this component that touches `c`.
    void stripCables(CComp* c, CUndo* undo);
    void editMap(CWin*);
    void createBuffers(int frames);
    void destroyBuffers();
    /// Adds what arrives, by cables and sends, to the inputs. Graph holder.
    void mergeAudio(int frames);
    /// Mixes `frames` from `offset` on: fader, pan, meters, and what sends take. Graph holder.
    void subMix(int frames, int offset);

    /// Whether the calling thread holds the graph that this belongs to.
    bool heldByThread() const;
    /// Whether it may change the cables and channels here: it holds the graph, or no block has met
    /// the component yet.
    bool mayRewire() const { return listKind == listNone || heldByThread(); }

    COutputChannel* output(int index = 0); ///< null outside the list
    CInputChannel* input(int index = 0);
    CMIDIQ* outPort(int index = 0);
    CMIDIQ* inPort(int index = 0);

    /// `visit` gets each insert of each output.
    template <class F>
    void eachInsert(F&& visit) {
        for (auto* ch : outputs) {
            for (auto* insert : ch->inserts) visit(insert);
        }
    }

private:
    void findSourceSeq();
    void adoptInserts(COutputChannel* ch);
    void passEvents(CMIDIQ* from, CMIDIQ* to);
    void copyAudioTo(CComp* dest, CComp* src, CUndo* undo);
    void copyMIDITo(CComp* dest, CComp* src, CUndo* undo);
};

/// The guard of every `process`: `enter` is true for the first call of a block that is not nested
/// in itself; leaving marks the component as processed.
class ProcessGuard {
public:
    explicit ProcessGuard(CComp* c) : comp(c), mine(!c->busy) {
        assert(c->heldByThread());
        if (!mine) return;
        comp->busy = true;
        enter = !comp->processed;
    }
    ~ProcessGuard() {
        if (!mine) return;
        comp->processed = true;
        comp->busy = false;
    }
    ProcessGuard(const ProcessGuard&) = delete;
    ProcessGuard& operator=(const ProcessGuard&) = delete;

    bool enter = false;

private:
    CComp* comp;
    bool mine;
};
