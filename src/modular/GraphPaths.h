#pragma once

#include "modular/GraphModel.h"

#include <vector>

/// All that leads to a thing of the graph, and all that it leads to: by the cables, and inside the
/// components from what arrives to what leaves; in the song only along each track.
struct GraphPath {
    std::vector<bool> boxes, cables; ///< by the indexes of the model
    /// Of a component, a port or a cable of the model.
    GraphPath(const GraphModel& model, const CObject* of);

private:
    void up(const GraphModel& model, int port);
    void down(const GraphModel& model, int port);
    std::vector<bool> ports;
};

/// Whether what arrives at an input of a component reaches an output of it.
bool passes(const GraphModel& model, int in, int out);
