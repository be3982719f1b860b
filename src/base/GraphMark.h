#pragma once

class CObject;

/// Whether the calling thread renders or edits this graph, that is, has a GraphMark of it. A graph
/// is told by its host.
bool holdsGraph(const CObject* host);

/// The mark of a thread that runs a graph, for the length of a scope. Nests.
class GraphMark {
public:
    explicit GraphMark(const CObject* host);
    ~GraphMark();
    GraphMark(const GraphMark&) = delete;
    GraphMark& operator=(const GraphMark&) = delete;

private:
    friend bool holdsGraph(const CObject* host);
    const CObject* const graph;
    const GraphMark* const outer; ///< null for the outermost of the thread
};
