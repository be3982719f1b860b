#include "engine/GraphHold.h"

#include "base/Numbers.h"
#include "engine/CQV.h"

GraphHold::GraphHold(CQV* root) : host(holdsGraph() ? nullptr : root) {
    if (!host) return;
    while (!host->tryHold(GraphOwner::interface)) asSleep(1);
    mark.emplace();
    host->serveTransport();
}

GraphHold::~GraphHold() {
    if (!host) return;
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
