#pragma once

#include "modular/GraphModel.h"

#include <vector>

/// What is typed to find something in the graph, or to join two ports: words of names in any order,
/// as "bass", or "bass to delay in", where "connect" may stand before.
struct FoundItems {
    std::vector<CObject*> items; ///< components and ports that bear all words, the best first
    int from = -1, to = -1; ///< ports to be joined; -1 where nothing fits, or none are asked for
    bool joins = false;     ///< two are asked for
};
FoundItems findItems(const GraphModel& model, const CStr& typed);
