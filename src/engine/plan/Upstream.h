#pragma once

#include "base/CList.h"

#include <functional>
#include <unordered_set>
#include <vector>

class CComp;
class CObject;
class COutputChannel;

/// What lists hold: now, or as a plan that asks for what they are going to hold knows it.
class ListReader {
public:
    using Contents = std::function<std::vector<CObject*>(const CList&)>;

    ListReader(); ///< of what they hold now
    explicit ListReader(Contents known) : contents(std::move(known)) {}
    template <class T>
    std::vector<T*> operator()(const ListOf<T>& list) const {
        std::vector<T*> objects;
        for (CObject* object : contents(list)) objects.push_back(static_cast<T*>(object));
        return objects;
    }

private:
    Contents contents;
};

/// The component whose step works out a strip: that which has it, or the part of that.
CComp* stripOwner(const COutputChannel* strip);
/// The component of the graph that something belongs to: that of a part, else itself.
CComp* wholeOf(CComp* c);

/// All that has to be worked out before a strip: strips, and the work of components before theirs.
/// Sends do not count. Interface thread.
class Upstream {
public:
    /// Of the strip of a component, itself among them.
    Upstream(CComp* strip, ListReader reader);

    bool hasStrip(const CComp* c) const { return strips.contains(c); }
    bool hasWork(const CComp* c) const { return works.contains(c); }
    bool has(const CComp* c) const { return hasStrip(c) || hasWork(c); }
    const std::unordered_set<const CComp*>& allWorks() const { return works; }

private:
    void addStrip(CComp* c);
    void addWork(CComp* c);
    void followStrip(const CComp* c);
    void followWork(CComp* c);
    void followKey(CComp* keyed);
    void followMidi(const CComp* c);

    struct Step {
        CComp* comp;
        bool strip;
    };
    ListReader read;
    std::unordered_set<const CComp*> strips, works;
    std::vector<Step> waiting;
};
