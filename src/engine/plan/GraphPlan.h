#pragma once

#include "base/Stored.h"
#include "engine/SendTap.h"
#include "engine/plan/PlanEvents.h"
#include "engine/plan/PlanFade.h"
#include "engine/plan/PlanLatency.h"
#include "engine/plan/PlanLists.h"
#include "engine/plan/SongTimes.h"
#include "engine/plan/WorkTimes.h"

#include <memory>
#include <optional>
#include <span>
#include <vector>

class AheadStrips;
class AheadWork;
class CComp;
class CMIDICable;
class CQV;
class ForgetSet;
class PlanLoop;
class Upstream;

/// What a strip is before its fader, for the side chains that it is the key of.
struct KeyTap {
    const COutputChannel* strip;
    std::unique_ptr<CInputChannel> sound;
};

/// What a part of a song and the plan tell each other.
struct PartWords {
    const Stored<unsigned char>* live; ///< 1: what it plays waits for nothing
    Shared<int>* takeLatency;          ///< frames by which what it takes in is late
    Shared<unsigned char>* fromDevice; ///< 1: that comes from a device, at least in part
};

/// A component in a plan. Made on the interface thread, then the graph holder's.
class PlanNode {
public:
    explicit PlanNode(CComp* c);
    ~PlanNode();
    PlanNode(const PlanNode&) = delete;
    PlanNode& operator=(const PlanNode&) = delete;

    /// A MIDI cable that arrives; one that closes a loop brings nothing.
    struct Midi {
        CMIDICable* cable;
        bool cut;
        const PlanNode* from = nullptr; ///< null of one that is cut
    };

    CComp* const comp;
    bool clears = false;               ///< its channels are cleared by its first step
    bool takesMidi = true;             ///< false too many cables back
    std::vector<PlanArrival> arrivals; ///< in the order in which they are summed
    std::vector<Midi> midi;
    int gathered = 0; ///< so many of them in a step of their own, before its work
    std::vector<const CAudioCable*> cables; ///< that arrive, but for those that leave
    std::unique_ptr<SendTap> tap;           ///< null without buses
    std::unique_ptr<AheadStrips> strips;    ///< null where no insert begins ahead
    std::unique_ptr<PlanEvents> events;     ///< null where nothing is late
    std::vector<PlanArrival> keys;          ///< of the component, and of the inserts of its strips
    std::vector<KeyTap> taps;
    std::unique_ptr<PlanArrival> own;     ///< of a part that takes in sound: what it makes itself
    bool part = false;                    ///< of a song
    std::vector<const PlanNode*> players; ///< of a part: what its messages come from
    bool leaving = false; ///< off the graph already, and heard till what it feeds has faded
    bool ended = false;   ///< it is not there any more
    std::optional<PartWords> words; ///< of one that has them
    bool live = false;              ///< what it plays waits for nothing, as all that it is made of
    bool fromDevice = false;        ///< an in, or something that takes in what comes from one
    /// Frames of its outputs that are known to be 0: of the block, behind its strips, or none.
    int silence = 0;
    // In frames, once it has been worked out.
    int latency = 0;     ///< of what arrives
    int offset = 0;      ///< frames from the begin of the block to that of its piece, in a loop
    int midiLatency = 0; ///< of what leaves its ports

    /// Of what stands in its ports when its strips work.
    int eventLatency() const { return part ? 0 : latency; }
    /// The first event in this block of those that move its strips.
    CMIDIBytes* stripEvents() const;
    /// Brings the keys of the inserts, or those of the component itself, into the next work.
    void takeKeys(bool ofInserts, int frames, GraphScratch& scratch);
    void findSilence(int frames);                      ///< of the strips
    void fillTaps(int frames);                         ///< behind the inserts
    void makeSound(int frames, GraphScratch& scratch); ///< of a part, on time with what it takes in
};

/// Frames from the begin of the block to where a component, or an insert, is at work: not 0 in a
/// loop alone. Graph holder.
int pieceStart(const CComp* c);

/// A piece of work of a block: what a component does, in this order.
struct PlanStep {
    enum Work : unsigned {
        sum = 1,     ///< adds cables to the inputs of an audio out
        render = 2,  ///< `CComp::process`
        sound = 4,   ///< `CComp::sound`
        strip = 8,   ///< `CComp::fx`, or what is left of it, and `CComp::mix`
        master = 16, ///< the same of an audio out, unless a render leaves it out
        begin = 32,  ///< `CComp::fx`, up to inserts that begin ahead
        goOn = 64,   ///< up to the next of them
        clear = 256, ///< silences the channels, before all else
        gather = 128 ///< adds what is sent to a bus, as far as it is `PlanNode::gathered`
    };
    PlanNode* node;
    unsigned work;
    std::vector<PlanArrival> sums; ///< of `sum`
    int level = 0; ///< it needs what steps of lower levels make, and nothing of its own level
    WorkTimes times{};
    std::shared_ptr<PlanLoop> loop{}; ///< all of its work, then
    AheadWork* ahead = nullptr;       ///< of `render`: begins before the steps of its level
    bool leftOut = false;             ///< see `GraphPlan::keepTo`
    int goesWith =
        -1; ///< number of a step of its level and component that it is done with, or none
};

/// How a block is worked out: a list of steps, each behind what it needs. Sums have the order of
/// the plan, so that the sound does not depend on who takes which step. A plan that takes over from
/// another lets the cables that come and go fade. Made by `PlanBuilder`.
class GraphPlan {
public:
    explicit GraphPlan(CQV* root);
    ~GraphPlan();
    GraphPlan(const GraphPlan&) = delete;
    GraphPlan& operator=(const GraphPlan&) = delete;

    // Graph holder.
    /// Until `endKeeping`, `CComp::prepare` leaves the channels alone that steps clear: whoever
    /// fills a channel has it near.
    void keepChannels();
    void endKeeping();
    void prepareLeaving(int frames); ///< `CComp::prepare` of what is off the graph already
    void run(int frames);            ///< up to the audio outs
    void runLate(int frames);        ///< sequencers that nothing listens to
    /// What comes with this plan begins from silence, what breaks off from the last frame of a
    /// block of so many.
    void beginFades(int frames);
    /// Works out from now on only what these channels are made of, and the song; all again for
    /// none, and where one of them takes in a bus or is an audio out. May allocate.
    void keepTo(const std::vector<COutputChannel*>& channels);
    /// Whether the lists are still those that it was made from.
    bool fresh() const;
    /// The same for one that was made ahead of a step, once that has been carried out.
    bool confirm();

    void forget(const ForgetSet& gone);           ///< see `GraphPlans`
    bool dependsOn(const PlanLists& lists) const; ///< whether a list that changes is one of them

    /// Works out how late everything is, and what has to wait. Graph holder; to be done before the
    /// first block, and when something that runs has become later or earlier.
    /// False when something has to wait that has no line to wait in.
    bool workOutLatency();
    bool latencyUnknown() const { return !latencyKnown; }
    PlanLatency& latency() { return lateness; }
    const PlanLatency& latency() const { return lateness; }
    /// Whether the same cables arrive at the same components, and strips have the same inserts.
    bool leadsAs(const GraphPlan& other) const;

    const std::vector<PlanStep>& allSteps() const { return steps; }
    size_t firstLate() const { return late; }  ///< step where `runLate` begins
    bool isPassing() const { return passing; } ///< it works out what is only there to leave

    // By levels, for several threads, which take the steps in turns: those of a turn follow each
    // other. Turns are numbered in the order of their levels.
    int turns() const { return int(begins.size()) - 1; }
    int widest() const { return mostOfLevel; } ///< turns of a level, at most
    bool hasAhead() const { return anyAhead; } ///< the order within levels matters
    float work() const { return times.mean; }  ///< nanoseconds of a block
    int endOfLevel(int level) const { return ends.empty() ? 0 : ends[size_t(level)]; }
    int endOfLevelAfter(int turn) const;         ///< the first end behind a turn
    unsigned runTurn(unsigned turn, int frames); ///< returns its nanoseconds
    void beginLevel(int first, int frames);      ///< before the first turn of a level is run
    WorkTimes times;                             ///< of all steps

private:
    friend class PlanBuilder;
    friend class PlanLoop;
    void findOrder();
    int waitOf(const PlanStep& step) const;
    void findTurns();
    void findClearing();
    size_t leaderOf(size_t step) const {
        return steps[step].goesWith < 0 ? step : size_t(steps[step].goesWith);
    }
    void runByLevels(int frames);
    void runMeasured(int frames);
    void runStep(PlanStep& step, int frames) const;
    void runStrips(const PlanStep& step, int frames) const;
    bool takesInBus(const Upstream& upstream) const;
    /// Also of those in loops.
    template <class F>
    void eachStep(F&& visit);
    static std::span<PlanStep> stepsWithin(PlanStep& step);
    template <class F>
    void eachArrival(F&& visit) {
        for (const auto& node : nodes)
            for (PlanArrival& a : node->arrivals) visit(a);
        eachStep([&](PlanStep& step) {
            for (PlanArrival& a : step.sums) visit(a);
        });
    }

    CQV* host;
    int madeFor; ///< frames
    std::vector<std::unique_ptr<PlanNode>> nodes;
    std::vector<PlanStep> steps;
    std::vector<PlanNode*> clearing; ///< those that do it themselves
    size_t late = 0;
    bool passing = false;
    std::vector<unsigned> order;  ///< of the steps before `late`, by level
    std::vector<unsigned> begins; ///< of each turn in `order`, and the end of the last one
    std::vector<int> ends;        ///< of each level, by turns
    int mostOfLevel = 0;
    bool anyAhead = false;
    std::vector<const CAudioCable*> coming; ///< that were not heard before
    std::vector<PlanSource> sources;        ///< what leads to a list stands before it
    PlanLatency lateness;
    bool latencyKnown = false;
    Shared<bool> heard{false}; ///< a block has been worked out, or by a plan before it
};

template <class F>
void GraphPlan::eachStep(F&& visit) {
    for (PlanStep& step : steps) {
        visit(step);
        for (PlanStep& inner : stepsWithin(step)) visit(inner);
    }
}

/// The plan in force, and the one that a step brings with it.
class GraphPlans {
public:
    explicit GraphPlans(CQV* root) : host(root) {}

    /// The plan in force. Graph holder.
    GraphPlan& current() { return *now; }
    /// Makes a new one if lists have changed. A holder of the graph that may allocate.
    void refresh();
    /// Makes the plan that a step on its way needs, if it needs another one. Interface thread.
    void prepare(const UndoPlan& step, bool first);
    /// The step has been carried out: takes its plan. Where no block does it, nobody hears what it
    /// changes, and nothing fades. Graph holder.
    void adopt();
    /// Objects are about to be freed: cables among them that leave are not heard any more. Graph
    /// holder.
    void forget(const ForgetSet& gone);
    /// Puts a plain plan in place of one that fades, at once. A holder of the graph that may
    /// allocate.
    void endFades();
    /// Puts a plain plan in place of one whose fades are over. Interface thread, now and then.
    void idle();
    /// Whether something that has left may still be heard. Interface thread, no step on its way.
    bool fading() const;
    /// Frees what the step has left over, and corrects what could not be foreseen. Interface
    /// thread, once the step is known to be done.
    void settle();
    /// Frames from the song to what the device gets. Any thread.
    int latency() const { return total; }
    /// See `PlanLatency::latencyAt`. Interface thread.
    int latencyAt(const CObject* target) const;
    /// When the sound was played that a component, or an insert, takes in with this block: what it
    /// may be told of the song. Graph holder, while it works.
    SongTime timeOf(const CComp* comp) const;
    /// So many frames before the block that runs, below 0 in it. Graph holder, while it runs.
    SongTime timeBefore(int frames) const;
    void noteTime(int frames); ///< a block begins
    /// Works the latency out, where the plan is new or `changed` tells of another one. Graph
    /// holder.
    void followLatency(bool changed);

private:
    void replace();
    SongTime timeNow() const;

    CQV* host;
    Shared<int> total{0};
    Shared<bool> linesWanted{false};
    std::unique_ptr<GraphPlan> now;
    // Until the step is carried out; then one of them is the former plan.
    std::unique_ptr<GraphPlan> next;      ///< as the step leaves the graph
    std::unique_ptr<GraphPlan> withFades; ///< the same as it fades there; null: at once
    Shared<unsigned> framesSince{0};      ///< that a step brought `now`
    int blockFrames = 0;                  ///< of the block that runs; graph holder
    SongTimes times;
};
