#pragma once

#include <functional>
#include <map>
#include <memory>
#include <utility>

class CCompEditor;
class CComp;
class Workspace;

/// Which window edits which type of component. Filled once, when the program starts.
class EditorTable {
public:
    /// Makes the window of a component of its type, not shown yet.
    using Maker = std::function<std::unique_ptr<CCompEditor>(Workspace& workspace, CComp& comp)>;

    /// Whether it edits a component of its type; empty: it edits all of them.
    using Fits = std::function<bool(const CComp& comp)>;

    void enter(int compType, Maker maker, Fits fits = {}) {
        makers[compType] = {std::move(maker), std::move(fits)};
    }
    /// Of one component, which has no type of its own and outlives the table.
    void enter(const CComp& comp, Maker maker) { single[&comp] = std::move(maker); }
    bool has(const CComp& comp) const;
    /// Null where nothing edits that type.
    std::unique_ptr<CCompEditor> make(Workspace& workspace, CComp& comp) const;

private:
    const Maker* find(const CComp& comp) const;

    struct Entry {
        Maker make;
        Fits fits;
    };
    std::map<int, Entry> makers;
    std::map<const CComp*, Maker> single;
};
