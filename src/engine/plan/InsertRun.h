#pragma once

#include <cstddef>
#include <vector>

class AheadWork;
class CComp;
class CInputChannel;
class COutputChannel;
class GraphPlan;
struct CMIDIBytes;
struct PlanInsert;

/// An insert that may have its work done by somebody else.
struct AheadInsert {
    const CComp* insert;
    AheadWork* work;
};

/// The inserts of a strip on their way through a block, one behind the other. One that has its work
/// done by somebody else can be begun and left alone, till those of other strips have begun as
/// well. Graph holder, within one block.
class InsertRun {
public:
    /// Behind trim and equaliser of the strip. `events` are those of its component.
    InsertRun(COutputChannel* strip, CMIDIBytes* events, int frames);

    /// Finishes what has begun, and goes on until one of `ahead` has begun, or to the end.
    void toNext(const std::vector<AheadInsert>& ahead);
    /// Goes on to the end, and brings what has come of it into the strip.
    void finish();

private:
    bool take();
    void begin();
    void end();
    CInputChannel* delayedDry() const;

    COutputChannel* strip;
    CMIDIBytes* events;
    int frames;
    const GraphPlan* plan;             ///< null for a strip of nothing
    std::vector<PlanInsert>* changing; ///< some come or go; null: all of the strip
    int at = 0;                        ///< of the next, in either
    COutputChannel* src;               ///< what the next takes in
    CComp* insert = nullptr;           ///< that has begun
    PlanInsert* late = nullptr;        ///< it in the plan, if it is late or fades
};

/// The strips of a component, where some of their inserts begin ahead: the work of its strips is
/// several steps then. Made with the plan, then the graph holder's.
class AheadStrips {
public:
    /// `inserts`: those of all of its strips.
    AheadStrips(std::vector<AheadInsert> inserts, size_t strips);

    /// Has the first in each strip begun, with all that stands before it.
    void begin(CComp* comp, int frames);
    void goOn(); ///< to the next in each
    void finish();
    /// What `CComp::fx` of the component hands over while it begins; false: it has to finish that
    /// itself.
    bool take(const InsertRun& run);

private:
    std::vector<AheadInsert> ahead;
    std::vector<InsertRun> runs;
    bool open = false;
};
