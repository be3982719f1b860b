#include "engine/GraphHold.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/plan/GraphPlan.h"

namespace {

/// Turns of waiting, a millisecond each, before a block is given up for the interface: blocks of a
/// busy graph may leave no gap that is found by chance.
constexpr int patience = 30;

} // namespace

GraphHold::GraphHold(CQV* root) : host(holdsGraph(root) ? nullptr : root) {
    if (!host) return;
    for (int tries = 0; !host->tryHold(GraphOwner::interface); ++tries) {
        if (tries == patience) host->insistOnHold();
        asSleep(1);
    }
    mark.emplace(host);
    host->serveTransport();
}

GraphHold::~GraphHold() {
    if (!host) return;
    host->plans->refresh();
    mark.reset();
    host->releaseHold();
}

Standstill::Standstill(CQV* root) : host(root) {
    host->parkWorkers();
    host->audioSuspended.fetchAdd(1);
    hold.emplace(host);
}

Standstill::~Standstill() {
    hold.reset();
    host->audioSuspended.fetchAdd(-1);
    host->unparkWorkers();
}
