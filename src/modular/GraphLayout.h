#pragma once

#include "base/Geometry.h"

#include <vector>

/// A graph of boxes whose cables leave at their lower edge and arrive at their upper one. Pixels.
struct LayoutGraph {
    struct Box {
        int width = 0, height = 0;
    };
    struct Cable {
        int from = 0, to = 0;   ///< indexes of boxes
        int fromX = 0, toX = 0; ///< of the ports, from the left edges of their boxes
    };
    std::vector<Box> boxes;
    std::vector<Cable> cables;
};

/// The space that a layout leaves, in pixels.
struct LayoutGaps {
    int beside = 24;         ///< between the boxes of a row
    int between = 64;        ///< between rows, ports included
    int left = 32, top = 32; ///< before the first ones
    int mostWidth = 1280;    ///< of rows of boxes without cables
};

/// Tidy places: boxes in rows, so that cables lead downwards, but for those that close a loop, and
/// cross as seldom as can be found quickly; boxes stand near what they are cabled to, and those
/// without cables in rows of their own below. The same graph always gives the same places.
std::vector<CPoint> layGraph(const LayoutGraph& graph, const LayoutGaps& gaps = {});

/// Which cables close a loop: without them there is none. In the order of the graph's cables.
std::vector<bool> loopCables(const LayoutGraph& graph);

/// How many pairs of cables cross at these places, drawn straight from port to port.
int countCrossings(const LayoutGraph& graph, const std::vector<CPoint>& places);
