#pragma once

#include "engine/CComp.h"
#include "engine/plan/GraphPlan.h"
#include "engine/plan/Upstream.h"

#include <map>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

/// Makes a plan: follows the cables back from the audio outs, and notes in which order components
/// are needed. A component that is met again on its own way back is not waited for: there a loop is
/// cut. Interface thread, or whoever holds the graph and may allocate.
class PlanBuilder {
public:
    /// `before`: the plan that is in force until then, if any, whose lines go on. With `plain` what
    /// comes and goes fades; that is the new plan as it is by itself, which the one that is made
    /// sounds like once all fades are over.
    PlanBuilder(CQV* root, PlanLists wanted, const GraphPlan* before,
                const GraphPlan* plain = nullptr);
    std::unique_ptr<GraphPlan> build();

    // For `CComp::planRender` and `planStrip`, which tell what a component needs before it can
    // work, and what its work is.

    /// The contents of a list that the plan depends on.
    template <class T>
    std::vector<T*> contents(const ListOf<T>& list) {
        return reader()(list);
    }
    /// `c` is needed: it comes before what is added to the plan from now on.
    void need(CComp* c);
    /// The sources of the cables that arrive at `c` are needed.
    void needMidi(CComp* c);
    void needAudio(CComp* c);
    /// `c` reads a port in its next work.
    void listen(CComp* c, const CMIDIQ* port);
    /// Work of `c`: `process`, which fills its channels and ports.
    void render(CComp* c);
    /// Work of a part of `whole`, behind that of the whole: `sound`, which fills the channels of
    /// the part and `others`.
    void sound(CComp* part, CComp* whole, const std::vector<const COutputChannel*>& others);
    void note(CComp* part, const PartWords& words);
    /// Work of `c`: its strips, which feed the buses.
    void strip(CComp* c);

private:
    /// A component on the way back.
    struct Place {
        PlanNode* node = nullptr;
        bool busy = false, rendered = false, stripped = false;
        bool leftStrip = false; ///< its strips are worked out, and not only on the way to be
        bool sourcesTaken = false, busesTaken = false; ///< of an audio out
        PlanOrigin* parts = nullptr;                   ///< of what its parts give before its strips
        std::vector<PlanArrival> sums;         ///< of an audio out: to be added before it works
        std::vector<const void*> reads;        ///< of its next step
        std::vector<const void*> readsOfBuses; ///< of a bus: of the step behind `gather`
        int sumStep = -1;                      ///< the latest of an audio out, or -1
    };
    /// The latest levels that wrote and read something.
    struct Use {
        int written = -1, read = -1;
    };

    const std::vector<CObject*>& read(const CList& list);
    Place& place(CComp* c);
    void takeSources(CComp* out, ListKind kind);
    void takeEarlyLeaving(CComp* out);
    void takeLeaving(CComp* out);
    void takeLeavingInto(CComp* c);
    void takeKeptSends(CComp* bus);
    void keepSends(const PlanNode* from, Place& bus);
    void beginFade(PlanArrival& send, const CComp* bus);
    bool endsHere(CComp* c, std::unordered_set<const CComp*>& path);
    bool mayLeave(const CAudioCable* cable);
    void needLeaving(const CAudioCable* cable);
    void stripsOf(CComp* c); ///< all, as its parts may have some
    bool staysInGraph(const CComp* c) const;
    bool sounds(const CAudioCable* cable);
    void beginFade(CComp* c, const CAudioCable* cable);
    bool hadTurned(const CAudioCable* cable) const;
    std::vector<PlanArrival> leaving(CComp* c);
    PlanArrival breakOff(PlanArrival leaving);
    void breakOffSends(CComp* bus);
    bool isSent(const PlanArrival& had) const;
    ListKind kindOf(CComp* c);
    bool sameRing(const CComp* a, const CComp* b) const;
    void findRings();
    void planRing(const std::vector<CComp*>& members);
    void needOutside(const std::vector<CComp*>& members);
    std::vector<CComp*> ringOrder(const std::vector<CComp*>& members);
    void planOut(CComp* out);
    void planMaster(CComp* out);
    void linkRings();
    void closeRing(const std::vector<CComp*>& members, size_t firstStep);
    PlanArrival closingOf(CComp* c, const CAudioCable* cable);
    void finishOut(CComp* out);
    void flushSums(CComp* out);
    void gather(CComp* bus);
    bool clearsFirst(CComp* c, unsigned work);
    bool joins(const PlanStep& before, int level, const std::vector<const void*>& touched);
    void feedBuses(PlanNode* from, PlanArrival::Kind kind);
    PlanArrival arrivalOf(CComp* c, const CAudioCable* cable);
    PlanArrival leavingOf(CComp* c, const CAudioCable* cable) const;
    void takeOver(PlanArrival& arrival);
    PlanArrival sendOf(const PlanNode* from, PlanArrival::Kind kind, int channel, int bus);
    void makes(CComp* c);
    void fadeInserts(PlanOrigin& origin);
    bool keepLeaving(PlanOrigin& origin, const PlanInsert& had, size_t place);
    const PlanInsert* placeBefore(const CComp* insert) const;
    std::shared_ptr<InsertFade> fadeOf(const PlanInsert& had);
    void dropVainWaits();
    void needKeys(CComp* c);
    void needKey(CComp* c, CComp* keyed);
    void needStrip(CComp* c);
    void needOthers(const CComp* c, const CComp* keyed);
    void takeKeys(CComp* c);
    void takeKey(CComp* c, CComp* keyed, const PlanInsert* insert);
    bool waitsFor(const Upstream& key, const CComp* c, const CComp* keyed) const;
    const Upstream& upstreamOf(CComp* strip); ///< walked once
    CInputChannel* tapOf(PlanNode& from, const COutputChannel* strip) const;
    ListReader reader() {
        return ListReader([this](const CList& list) { return read(list); });
    }
    void linkLatency();
    void giveLines(PlanInsert& insert);
    void giveLines(const PlanLatency::Meeting& meeting);
    std::shared_ptr<DelayLine> lineOf(const PlanArrival& arrival) const;
    PlanStep& add(CComp* c, unsigned work, const std::vector<const void*>& writes,
                  bool apart = false);
    int beginAhead(CComp* c);

    CQV* host;
    PlanLists lists;
    std::unique_ptr<GraphPlan> plan;
    std::vector<CComp*> comps, buses;
    std::unordered_map<const CList*, std::vector<CObject*>> contentsOf;
    std::unordered_map<const CComp*, const PlanNode*> former; ///< of the plan before, if it fades
    using LineKey = std::tuple<int, const void*, int, const void*>;
    std::map<LineKey, std::shared_ptr<DelayLine>> lines; ///< of the plan before, also null
    static LineKey keyOf(const PlanArrival& arrival);
    std::unordered_map<const COutputChannel*, std::shared_ptr<DelayLine>> endLines;
    std::unordered_map<const CComp*, PlanInsert> insertLines;
    std::unordered_map<const CComp*, const PlanEvents*> formerEvents;
    std::unordered_set<const CComp*> staying; ///< what sounds without the cables that leave
    bool onlyLeaving = false;
    /// While it stands: what is planned has left.
    struct OffGraph {
        OffGraph(PlanBuilder& of, const CComp* c) : builder(of), before(of.offGraph) {
            of.offGraph = !of.staysInGraph(c);
        }
        ~OffGraph() { builder.offGraph = before; }
        OffGraph(const OffGraph&) = delete;
        OffGraph& operator=(const OffGraph&) = delete;
        PlanBuilder& builder;
        const bool before;
    };
    bool offGraph = false; ///< what is planned has left: its lists do not matter to the plan
    /// Of the plan before, if it fades: what is on its way out of the inputs of a component.
    std::unordered_map<const CComp*, std::vector<const PlanArrival*>> goingBefore;
    /// Of the same: what cables that did not leave bring.
    std::unordered_map<const CAudioCable*, const PlanArrival*> broughtBefore;
    std::unordered_set<const CAudioCable*> closings; ///< cables that close a loop now
    std::unordered_map<const CComp*, Place> places;
    std::unordered_map<const CComp*, Upstream> upstreams; ///< by the owner of a strip
    std::unordered_map<const void*, Use> uses;
    int depth = 0;
    const PlanLatency* formerLatency = nullptr; ///< of the plan before, if it fades
    /// Of its inserts that were heard whole, and are on their way out now.
    std::unordered_map<const PlanInsert*, std::shared_ptr<InsertFade>> insertFades;

    /// Components that wait for each other, in the order of the lists; found before all else.
    std::vector<std::vector<CComp*>> rings;
    std::unordered_map<const CComp*, size_t> ringOf; ///< of those in one: its number
    std::map<const CAudioCable*, std::shared_ptr<LoopLine>> loopLines; ///< of the plan before
    std::vector<const void*> ringReads, ringWrites; ///< of the ring that is being planned
    bool ringOpen = false;
    std::vector<const CMIDIQ*> heardOutside; ///< ports of others that its members listen to
};
