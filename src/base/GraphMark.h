#pragma once

/// Whether the calling thread renders or edits the graph, that is, has a GraphMark.
bool holdsGraph();

/// The mark of a thread that runs the graph, for the length of a scope. Nests.
class GraphMark {
public:
    GraphMark();
    ~GraphMark();
    GraphMark(const GraphMark&) = delete;
    GraphMark& operator=(const GraphMark&) = delete;
};
