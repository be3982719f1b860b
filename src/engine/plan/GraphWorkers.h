#pragma once

#include "base/CThread.h"
#include "engine/CIO.h"
#include "engine/plan/WorkTimes.h"

#include <memory>
#include <vector>

class CQV;
class GraphPlan;

/// Room that a thread works in at a block: what is in it is of no use any more to the step after.
struct GraphScratch {
    explicit GraphScratch(int frames);
    static constexpr int rows = 16;
    std::vector<float> left, right; ///< `frames` of the host
    std::vector<float> bank;        ///< `rows` times as much: sums of some that are made at a time
    CInputChannel arrival;          ///< of what is added to an input
    /// For source frames while they are rendered, of `sampleScratchBytes`.
    std::unique_ptr<unsigned char[]> source;
};

/// The threads that help whoever holds the graph with a block. They sleep between blocks. A step is
/// taken by a single exchange of a word, so one that is late finds nothing left to do, and holds
/// up nobody; what it has taken is waited for. Which thread takes which step changes no sound.
class GraphWorkers {
public:
    static constexpr int most = 63;
    /// Work that is not worth waking a thread for: nanoseconds of a block, beside a share of the
    /// time that it lasts where a device waits for it.
    static constexpr unsigned lightBlock = 80000;

    explicit GraphWorkers(CQV* root);
    ~GraphWorkers();
    GraphWorkers(const GraphWorkers&) = delete;
    GraphWorkers& operator=(const GraphWorkers&) = delete;

    static int usual(); ///< as many as there are processors, less one

    // Interface thread.
    void setCount(int threads); ///< 0 to `most`; holds the graph for it
    /// Anew, for the host's block size. With the graph.
    void makeScratch();
    /// Gives the threads the priority of the one that holds the graph in blocks, after it changed.
    void followPriority();
    /// Until no thread looks at a plan that is over, so that it may be freed.
    void settle();

    int count() const { return int(threads.size()); }
    Shared<bool> eager{false}; ///< helps with light blocks, too

    // Graph holder.
    /// Whether a plan is worth it.
    bool helpWith(const GraphPlan& plan, int frames) const;
    /// Works out the steps of a block of `plan`, together.
    void run(GraphPlan& plan, int frames);
    /// Of the calling thread.
    GraphScratch& scratch() const;

    WorkTimes busy[most + 1]; ///< time in steps per block; first that of the graph's holder
    WorkTimes calls;          ///< of the driver, each as if it had brought a whole block
    WorkTimes reads;          ///< of the disk thread, between two of its pauses

private:
    class Thread;
    /// The turns of a level that nobody has taken yet, of the run of such a number.
    struct Range {
        uint16_t first, end;
        uint32_t run;
    };
    static constexpr Range nothing{0xffff, 0xffff, 0};
    static constexpr int mostTurns = 0xfffe;

    void work(int place);
    void openLevel(int first, int end);
    bool mayTake(int place) const;
    bool takeOne(Range now, int place);
    void take(unsigned turn, int place);
    void waitForRun(int former);
    void waitAtGate(int gateNow);
    void waitForRest();
    void noteMaster();
    void noteTimes(GraphPlan& p);

    CQV* host;
    std::vector<std::unique_ptr<GraphScratch>> scratches; ///< by place
    std::vector<std::unique_ptr<Thread>> threads;

    // Of the block that is worked out; all else is set before a run is opened by `open`.
    Shared<Range> open{nothing};
    Shared<int> done{0};          ///< turns
    Shared<int> gate{0};          ///< end of the level that is open, set behind it
    Shared<bool> lone{false};     ///< the level that is open has one turn
    Shared<bool> fromBoth{false}; ///< every second thread takes the last turn of a level first
    Shared<int> total{0};         ///< turns
    Shared<GraphPlan*> plan{nullptr};
    Shared<int> frames{0};
    Shared<bool> inCallback{false};
    Shared<unsigned> spent[most + 1]; ///< nanoseconds of each thread
    Shared<int> waiting{0};           ///< threads asleep within the block
    Shared<int> wakeUps{0};           ///< threads sleep on it between blocks
    Shared<int> asleep{0};            ///< those that do, or are about to
    Shared<bool> closeBy{false};      ///< runs follow each other so fast that none of them should
    StopWatch sinceRun;               ///< graph holder
    uint32_t runs = 0;                ///< graph holder, and who takes turns
    Shared<unsigned long> master{0}, followed{0}; ///< pthread_t of the holder in blocks
};
