#pragma once

#include "engine/plan/DelayLine.h"
#include "engine/plan/PlanFade.h"

#include <memory>
#include <unordered_map>
#include <vector>

class CAudioCable;
class CComp;
class CInputChannel;
class COutputChannel;
class CQV;
class PlanNode;
struct GraphScratch;

/// Where a signal comes from: a channel behind its strip or, without `channel`, what the parts of a
/// component give before it.
struct PlanOrigin {
    CComp* comp;
    COutputChannel* channel;
    const PlanNode* node; ///< that takes in what the sound is made of
    std::vector<CComp*> inserts;
    int latency = 0;   ///< frames
    bool live = false; ///< does not wait for others
};

/// Something that is added to the inputs of a component.
struct PlanArrival {
    enum Kind {
        cable,  ///< the end of a cable
        strips, ///< what a strip of a component sends to a bus
        parts,  ///< the same of the parts of one, before its strips
    };
    Kind kind;
    const CAudioCable* from = nullptr; ///< for `cable`
    const PlanNode* sender = nullptr;  ///< for the others
    int bus = 0, channel = 0;          ///< numbers, for the others
    PlanFade fade{};                   ///< of a cable
    PlanNode* at = nullptr;            ///< where it meets others
    PlanOrigin* origin = nullptr;      ///< null: nothing waits for it
    std::shared_ptr<DelayLine> line{}; ///< where it waits; null: it never does

    void addTo(CInputChannel* bus, int frames, GraphScratch& scratch);
    int delay() const { return line ? line->delay() : 0; }
};

/// How late everything in a plan is, by one rule: wherever signals meet, all wait for the latest of
/// them. What meets at a component, its own latency and that of its running inserts make what
/// leaves it. Audio outs wait for the latest of them at their very end.
class PlanLatency {
public:
    /// Signals that meet, and what is made of them.
    struct Meeting {
        PlanNode* node;
        std::vector<PlanArrival*> arrivals;
        std::vector<PlanOrigin*> outputs;
    };
    /// An audio out, which waits for the others.
    struct End {
        const PlanOrigin* out;
        std::shared_ptr<DelayLine> line;
    };

    // While the plan is made, in the order in which everything is worked out.
    Meeting& meetingAt(PlanNode* node);
    PlanOrigin* addOrigin(PlanOrigin origin, PlanNode* node);
    PlanOrigin* originOf(const COutputChannel* channel) const; ///< null for none
    void addEnd(const PlanOrigin* out) { outs.push_back({out, nullptr}); }
    /// Calls `make(arrival)` for all that may have to wait, and `makeEnd(end)`, by what components
    /// would report if all of them were on.
    template <class Make, class MakeEnd>
    void giveLines(Make&& make, MakeEnd&& makeEnd) {
        const int most = walk(true);
        for (Meeting& m : meetings)
            for (PlanArrival* a : m.arrivals)
                if (latest(m) > 0) make(*a);
        for (End& end : outs)
            if (most > 0 && outs.size() > 1) makeEnd(end);
    }

    // Graph holder.
    /// Sets all delays. False when something has to wait that has no line.
    bool workOut(int fadeFrames);
    void finishOuts(int frames); ///< a block
    void silence();

    int total() const { return sum; } ///< frames up to the ends of the audio outs
    const std::vector<Meeting>& all() const { return meetings; }
    const std::vector<End>& ends() const { return outs; }

private:
    int walk(bool possible);
    static int latest(const Meeting& m);

    std::vector<Meeting> meetings;
    std::unordered_map<const PlanNode*, size_t> places;
    std::vector<std::unique_ptr<PlanOrigin>> origins;
    std::unordered_map<const COutputChannel*, PlanOrigin*> byChannel;
    std::vector<End> outs;
    int sum = 0;
};
