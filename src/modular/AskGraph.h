#pragma once

#include "base/CStr.h"
#include "modular/GraphModel.h"

#include <vector>

class CQV;
class CTrack;
class GraphProbe;

/// Something that makes the graph as it is, and what of it to look at.
struct GraphCause {
    CObject* blame = nullptr; ///< a component, a port or a cable of the model; null for none
    CStr text;                ///< a sentence
    bool operator==(const GraphCause&) const = default;
};

/// What is found; the weightiest first. Without causes nothing is wrong, and `note` says so.
struct GraphAnswer {
    std::vector<GraphCause> causes;
    CStr note;
};

enum class GraphQuestion { whySilent, whyLate, whyLoud, whatCosts };
const char* questionText(GraphQuestion question);

/// Answers questions about a component, a port or a cable, from how the graph stands. Interface
/// thread; of use as long as the model is.
class AskGraph {
public:
    /// `measured` tells of work and delays.
    AskGraph(CQV* host, const GraphModel& graph, const GraphProbe& measured)
        : qv(host), model(graph), probe(measured) {}

    GraphAnswer ask(GraphQuestion question, const CObject* about) const;
    CStr title(GraphQuestion question, const CObject* about) const; ///< "Why silent? Bass"

private:
    using Causes = std::vector<GraphCause>;

    /// The ports of a thing at which sound or notes leave it, or, without any, arrive.
    std::vector<int> portsOf(const CObject* about) const;

    GraphAnswer whySilent(const CObject* about) const;
    GraphAnswer whyLate(const CObject* about) const;
    GraphAnswer whyLoud(const CObject* about) const;
    GraphAnswer whatCosts(const CObject* about) const;
    int waysToOut(int output, int depth = 0) const;

    CQV* qv;
    const GraphModel& model;
    const GraphProbe& probe;
};
