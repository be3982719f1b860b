#pragma once

#include <memory>
#include <unordered_map>

class CObject;
class CQV;

/// What the graph costs and how late its cables are, as of a block: asked for at the end of one,
/// without a stop. Interface thread.
class GraphProbe {
public:
    /// Of a component, with its strips; nanoseconds per block. A song counts with its tracks, of
    /// which each is told by itself as well.
    struct Work {
        float mean = 0.0f;
        unsigned worst = 0;
    };
    /// Of an audio cable, in frames.
    struct Delay {
        int path = 0;      ///< latency of what leads to it
        int added = 0;     ///< so that it arrives with what is later
        bool loop = false; ///< it closes a loop, and is late by 64 for that
    };

    explicit GraphProbe(CQV* host);
    ~GraphProbe();
    GraphProbe(const GraphProbe&) = delete;
    GraphProbe& operator=(const GraphProbe&) = delete;

    /// Asks, unless an answer is on its way.
    void ask();
    /// Takes an answer that has come; false without one.
    bool take();

    Work workOf(const CObject* comp) const; ///< as of the answer that was taken last
    Delay delayOf(const CObject* cable) const;
    /// Whether that is told of a cable: it was part of the block.
    bool knows(const CObject* cable) const { return delays.contains(cable); }
    double blockNs() const { return blockTime; } ///< that a block may take

private:
    class Answer;

    CQV* qv;
    std::shared_ptr<Answer> answer; ///< shared with the task that fills it in
    std::unordered_map<const CObject*, Work> work;
    std::unordered_map<const CObject*, Delay> delays;
    double blockTime = 0.0;
};
