#pragma once

#include "modular/AskGraph.h"

#include <optional>

class COutputChannel;
class CSampler;
class CSongTrack;

/// Finds why nothing comes out of a port, or gets from there to where it can be heard. What has
/// several sources is silent where all of them are, and what leads several ways where none is open;
/// only then their causes count.
class AskSilence {
public:
    using Causes = std::vector<GraphCause>;

    AskSilence(CQV* host, const GraphModel& graph)
        : qv(host), model(graph), visited(graph.ports.size()) {}

    Causes atOutput(int port);               ///< what of its own and of its sources keeps it silent
    Causes atInput(int port);                ///< the same of what is cabled to it
    Causes onward(int output);               ///< what keeps what leaves there from being heard
    Causes fromInput(int input);             ///< the same of what arrives there
    Causes alongCable(const CObject* cable); ///< the same of what a cable brings

private:
    Causes ownCauses(int output) const;
    Causes stripCauses(CComp* comp, COutputChannel* strip) const;
    Causes gateCauses(CComp* insert, const CStr& of) const;
    Causes sourceCauses(int output);
    Causes trackCauses(CTrack* track, int output);
    Causes samplerCauses(CSampler* sampler);
    /// Of what is cabled to `count` ports from `first` on; none where nothing is.
    std::optional<Causes> cabledCauses(int first, int count, bool midi);
    Causes fedBy(int box, bool midi);
    Causes ofCable(const GraphModel::Cable& cable) const;
    Causes alongCable(const GraphModel::Cable& cable);
    Causes masterCauses(int box) const;
    const CComp* soloed() const;

    CQV* qv;
    const GraphModel& model;
    std::vector<bool> visited; ///< by port, of the search that goes on
};

/// Adds those that are not there yet.
void addCauses(std::vector<GraphCause>& to, const std::vector<GraphCause>& more);
