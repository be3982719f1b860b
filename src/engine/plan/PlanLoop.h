#pragma once

#include "engine/CMIDIQ.h"
#include "engine/plan/GraphPlan.h"

#include <memory>
#include <vector>

/// Components that wait for each other, by cables in a circle. They work in pieces of no more
/// frames than such a cable is late, so that the sound is the same in blocks of any size. What
/// comes from outside is there for the whole block. Graph holder, but for making and deleting.
class PlanLoop {
public:
    std::vector<PlanStep> steps; ///< of a piece

    // Once all steps are there.
    void addMember(PlanNode* node, const std::vector<COutputChannel*>& channels,
                   const std::vector<CInputChannel*>& inputs);
    void addBuffers(CInputChannel& channel) { buffers.push_back({channel.bufL, channel.bufR}); }
    void addOwnPort(CMIDIQ* port, bool out) { ports.emplace_back(port, out); }
    /// A port of a component outside, that is listened to: it shows what is due in the piece.
    void addSource(CMIDIQ* port) { ports.emplace_back(port, false); }
    void addCable(PlanArrival* closing) { closings.push_back(closing); }
    /// What goes to a bus outside, which is to get it as it is piece by piece.
    void carry(PlanArrival* arrival, int frames);
    bool has(const PlanNode* node) const;

    void run(const GraphPlan& plan, CQV* host, int frames);

private:
    struct Port {
        Port(CMIDIQ* whose, bool isOut)
            : port(whose), out(isOut), whole(std::make_unique<CMIDIQ>(nullptr)) {}
        CMIDIQ* port;
        bool out;
        std::unique_ptr<CMIDIQ> whole; ///< the block's events
    };
    struct Sides {
        float *&left, *&right;
    };

    void begin(CQV* host, int frames);
    void enter(int done, int frames);
    void leave(int done, int frames);
    void move(int frames);
    void end(int frames);

    std::vector<PlanNode*> nodes;
    std::vector<Sides> buffers; ///< of the members, which the pieces wander through
    std::vector<Port> ports;
    std::vector<PlanArrival*> closings, carried;
};
