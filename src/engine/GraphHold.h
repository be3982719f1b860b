#pragma once

#include "base/GraphMark.h"

#include <optional>

class CQV;

enum class GraphOwner : int { free, audio, interface };

/// The interface thread's turn on the graph: waits for the running block to end, then keeps the
/// audio callback silent until it goes out of scope. Transport calls that were still waiting are
/// made first. Nests, also within whatever else this thread holds the graph for.
class GraphHold {
public:
    explicit GraphHold(CQV* root);
    ~GraphHold();
    GraphHold(const GraphHold&) = delete;
    GraphHold& operator=(const GraphHold&) = delete;

private:
    CQV* host; ///< null when nested
    std::optional<GraphMark> mark;
};
