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

/// The interface thread alone with the project: holds the graph, while every worker stands still.
/// For what replaces or frees the content of a project.
class Standstill {
public:
    explicit Standstill(CQV* root);
    ~Standstill();
    Standstill(const Standstill&) = delete;
    Standstill& operator=(const Standstill&) = delete;

private:
    CQV* host;
    std::optional<GraphHold> hold;
};
