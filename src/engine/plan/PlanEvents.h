#pragma once

#include "engine/plan/EventLine.h"

#include <memory>
#include <vector>

class CComp;
class PlanLatency;
class PlanNode;

/// The events of a component whose sound is late: what it takes in, and what moves its strips, wait
/// as long as the sound that they are about. Graph holder, but for making and deleting.
class PlanEvents {
public:
    struct Port {
        CMIDIQ* port;
        std::shared_ptr<EventLine> line;
    };
    std::vector<Port> ports;           ///< of a component that takes in late sound
    std::shared_ptr<EventLine> strips; ///< null where nothing is late within the strips

    void hold(int delay);   ///< takes what stands in the ports
    void serve(int frames); ///< puts there what is due in this block
    /// Finds what moves the strips of `node` in this block.
    void serveStrips(const PlanNode& node, const PlanLatency& latency, int frames);
    CMIDIBytes* dueAtStrips() { return due.first(); }
    void clear();
    void follow(const PlanEvents& before); ///< goes on with its lines

private:
    CMIDIQ due{nullptr};
};
