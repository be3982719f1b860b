#pragma once

#include "base/CList.h"

#include <unordered_map>
#include <vector>

class CObject;
class CQV;
class CUndo;
class UndoPlan;

/// The lists of a graph as they are, or as a step that is on its way is going to leave them.
/// Interface thread.
class PlanLists {
public:
    PlanLists() = default;
    /// `first`: the step has never been carried out.
    PlanLists(const CQV* host, const UndoPlan& step, bool first);

    std::vector<CObject*> of(const CList& list) const;
    bool changes(const CList* list) const { return changed.contains(list); }

private:
    std::vector<CObject*>& after(const CList& list);

    std::unordered_map<const CList*, std::vector<CObject*>> changed;
};

/// A list that a plan was made from, and what it held. Any holder of the graph.
struct PlanSource {
    const CList* list;
    unsigned version;  ///< of the list when it was found to hold this
    uint64_t contents; ///< a hash of its objects in order

    PlanSource(const CList& from, const std::vector<CObject*>& objects);
    bool changed() const { return list->version() != version; }
    /// Whether the list holds now what was told of it; takes down its version then.
    bool confirm();
};
