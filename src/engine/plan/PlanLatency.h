#pragma once

#include "base/Atomic.h"
#include "engine/plan/DelayLine.h"
#include "engine/plan/EventLine.h"
#include "engine/plan/LoopLine.h"
#include "engine/plan/PlanFade.h"

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

class CAudioCable;
class CComp;
class CInputChannel;
class CObject;
class COutputChannel;
class CQV;
class ForgetSet;
class PlanNode;
struct GraphScratch;
struct PlanArrival;

/// How much of an insert is heard, at one place of one strip, from plan to plan.
struct InsertFade {
    PlanFade fade;
    Shared<unsigned> overAt{0}; ///< number of the block in which it fell silent, 0 none yet

    bool isOver() const { return overAt != 0; }
};

/// An insert of a strip. One that is moved goes from where it was first, and then comes.
struct PlanInsert {
    CComp* comp;
    std::shared_ptr<InsertFade> fade{};  ///< null: heard whole
    bool leaving = false;                ///< it goes
    bool ended = false;                  ///< it is not there any more
    std::shared_ptr<InsertFade> after{}; ///< begins once that is over; null: at once
    int at = 0;                          ///< frames of latency up to it
    int wait = 0;                        ///< frames that events for it have to wait
    int own = 0;                         ///< frames that it adds
    std::shared_ptr<DelayLine> dry{};    ///< for what is blended in beside it; null: on time
    std::shared_ptr<EventLine> events{};
};

/// Where a signal comes from: a channel behind its strip or, without `channel`, what the parts of a
/// component give before it.
struct PlanOrigin {
    CComp* comp;
    COutputChannel* channel;
    const PlanNode* node; ///< that takes in what the sound is made of
    std::vector<PlanInsert> inserts;
    int latency = 0; ///< frames
};

/// The last of a signal that breaks off: goes from there to silence, so that it makes no step.
struct PlanRest {
    const PlanArrival* of; ///< of the plan before, until it has been taken
    float left = 0.0f, right = 0.0f;
    PlanFade fade = PlanFade::still(true);

    /// Behind the last block of the plan before. Only once.
    void take(int frames, GraphScratch& scratch);
    bool over() const { return of || fade.over(); }
    void addTo(CInputChannel* to, int frames);
};

/// Something that is added to the inputs of a component.
struct PlanArrival {
    enum Kind {
        cable,  ///< the end of a cable
        strips, ///< what a strip of a component sends to a bus
        parts,  ///< the same of the parts of one, before its strips
        own,    ///< the sound of a part, beside what it takes in
        key,    ///< of a side chain: a strip before its fader
        rest,   ///< what is left of something that was sent
    };
    Kind kind;
    const CAudioCable* from = nullptr;        ///< for `cable`
    const PlanNode* sender = nullptr;         ///< for the others
    int bus = 0, channel = 0;                 ///< numbers, for the others
    bool leaving = false;                     ///< goes, and fades till then
    bool ended = false;                       ///< leaves what is not there any more
    std::shared_ptr<PlanRest> last{};         ///< of what can't be worked out to its end
    std::shared_ptr<Shared<bool>> silent{};   ///< of a cable that leaves: it has
    std::shared_ptr<PlanFade> fade{};         ///< of a send that comes or goes; null: none
    float kept = -1.0f;                       ///< level for a bus that leaves, else below 0
    PlanNode* at = nullptr;                   ///< where it meets others
    PlanOrigin* origin = nullptr;             ///< null: nothing waits for it
    std::shared_ptr<LoopLine> loop{};         ///< of a cable that closes a loop
    bool outside = false;                     ///< comes into a loop from outside it
    std::shared_ptr<CInputChannel> carried{}; ///< what leaves a loop, piece by piece
    std::shared_ptr<DelayLine> line{};        ///< where it waits; null: it never does
    CInputChannel* tap = nullptr;             ///< of a key: where its source leaves it
    const PlanInsert* insert = nullptr;       ///< of a key: what hears it; null: the component

    void addTo(CInputChannel* bus, int frames, GraphScratch& scratch);
    bool hasGone() const; ///< nothing of it is heard any more
    /// What was heard of it at the end of a block.
    std::pair<float, float> lastFrame(int frames, GraphScratch& scratch) const;
    void bring(int frames, GraphScratch& scratch); ///< a key, to where it is heard
    bool isSilent(int frames) const;
    void feed(CInputChannel* to, int frames) const; ///< what is sent to a bus
    void feedKept(CInputChannel* to, int frames) const;
    void settle() const; ///< leaves out the way of a mute to and from silence
    int wait() const;    ///< frames, for what it meets, once all latencies are known
    int delay() const { return line ? line->delay() : 0; }
    int heardAt() const; ///< frames of latency where it is heard
};

int fadeFrames(const CQV* host); ///< of a fade, 1 or more

/// How late everything in a plan is, by one rule: wherever signals meet, all wait for the latest of
/// them. What meets at a component, its own latency and that of its running inserts make what
/// leaves it. Audio outs wait for the latest of them at their very end. What is live waits for
/// nothing, and nothing waits for it, as far as it meets only what is live as well.
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
    void putLast(const PlanNode* node); ///< it waits for what has come since its meeting
    PlanOrigin* addOrigin(PlanOrigin origin, PlanNode* node);
    PlanOrigin* originOf(const COutputChannel* channel) const; ///< null for none
    PlanInsert* insertOf(const CComp* comp) const; ///< one that is late or fades, or null
    /// Frames by which the sound that a strip's fader, a send, a component or an insert acts on is
    /// late; 0 for what is not in the plan.
    int latencyAt(const CObject* target) const;
    void forget(const ForgetSet& gone);
    /// Whether the strips that both have hold the same inserts.
    bool hasInsertsOf(const PlanLatency& other) const;
    /// The inserts of a strip that some leave, or have to wait to come; null where none does.
    std::vector<PlanInsert>* changing(const COutputChannel* channel) const;
    void addEnd(const PlanOrigin* out) { outs.push_back({out, nullptr}); }
    /// Calls `make(arrival)` for all that may have to wait, and `makeEnd(end)`, by what components
    /// would report if all of them were on.
    template <class Make, class MakeInsert, class MakeEnd>
    void giveLines(Make&& make, MakeInsert&& makeInsert, MakeEnd&& makeEnd) {
        const int most = walk(true);
        for (const auto& origin : origins)
            for (PlanInsert& insert : origin->inserts)
                if (insert.own > 0 || insert.wait > 0 || insert.fade) {
                    makeInsert(insert);
                    if (!insert.leaving || !byInsert.contains(insert.comp))
                        byInsert[insert.comp] = &insert;
                }
        for (Meeting& m : meetings) {
            const bool anyLate = latest(m) > 0;
            for (PlanArrival* a : m.arrivals)
                if (anyLate || (a->kind == PlanArrival::key && a->heardAt() > 0)) make(*a);
        }
        for (End& end : outs)
            if (most > 0 && outs.size() > 1) makeEnd(end);
        sum = most;
    }

    // Graph holder.
    /// Sets all delays. False when something has to wait that has no line.
    bool workOut(int fadeFrames);
    void finishOuts(int frames); ///< a block
    void silence();
    void settleFades(); ///< all that stays is heard as it is to be

    int total() const { return sum; } ///< frames up to the ends of the audio outs
    const std::vector<Meeting>& all() const { return meetings; }
    const std::vector<End>& ends() const { return outs; }
    std::unordered_map<const CComp*, PlanInsert> lateInserts() const; ///< with their lines alone

private:
    int walk(bool possible);
    static void takeIn(const Meeting& m);
    void tellParts() const;
    void follow(PlanOrigin& origin, bool possible);
    static int latest(const Meeting& m);

    std::vector<Meeting> meetings;
    std::unordered_map<const PlanNode*, size_t> places;
    std::vector<std::unique_ptr<PlanOrigin>> origins;
    std::unordered_map<const COutputChannel*, PlanOrigin*> byChannel;
    std::unordered_map<const CComp*, PlanInsert*> byInsert; ///< those that are late
    std::vector<End> outs;
    int sum = 0;
};
