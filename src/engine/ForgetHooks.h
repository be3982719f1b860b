#pragma once

#include "base/CList.h"

#include <unordered_set>
#include <vector>

class CObject;
class CQV;

/// Objects that are freed together.
class ForgetSet {
public:
    ForgetSet() = default;
    explicit ForgetSet(CObject* object) { add(object); }
    void add(CObject* object) {
        if (known.insert(object).second) objects.push_back(object);
    }
    bool has(const CObject* object) const { return object && known.count(object) > 0; }
    bool empty() const { return objects.empty(); }
    /// In the order in which they came.
    const std::vector<CObject*>& all() const { return objects; }

private:
    std::vector<CObject*> objects;
    std::unordered_set<const CObject*> known;
};

/// Takes the objects of a set out of a list of T.
template <class T>
void removeGone(ListOf<T>& list, const ForgetSet& gone) {
    std::vector<T*> found;
    for (auto* object : list)
        if (gone.has(object)) found.push_back(object);
    for (T* object : found) list.remove(object);
}

/// Ends everything in the graph that refers to one of the objects or to something in it: voices,
/// play pointers, markers. Called once for all that is freed, on the interface thread with the
/// workers parked; takes the graph for what needs it, in time that grows with the graph and not
/// with the set, and frees nothing itself.
using ForgetHook = void (*)(CQV*, const ForgetSet& gone);

/// A folder above enters its own once, at start-up; entering it again does nothing.
void enterForgetHook(ForgetHook hook);

/// Has maps, cables and all who entered a hook let go of objects that are about to be freed.
/// Interface thread, workers parked.
void forgetObjects(CQV* host, const ForgetSet& gone);
void forgetObject(CQV* host, CObject* object); ///< the same for one
/// The maps alone: those that lead to `object` lose their target. Graph holder; takes no memory.
void forgetMaps(CQV* host, const CObject* object);
