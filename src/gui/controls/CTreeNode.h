#pragma once

#include "base/CList.h"
#include "base/CObject.h"

class CTree;

/// A line of a `CTree` and what lies below it. Whoever has added, removed or renamed nodes calls
/// `CTree::update` before events are handled again. Interface thread; another thread may build a
/// branch with `add`, as long as nobody else changes that branch.
class CTreeNode : public CObject {
public:
    CTreeNode* parent = nullptr; ///< the root's is null
    ListOf<CTreeNode> children;  ///< owned
    bool expanded = false;
    bool selected = false;
    bool hasChildren = false; ///< shown with a plus even before they are read
    CStr text;
    CStr path; ///< free for the owner, as the next two
    int kind = 0;
    void* data = nullptr;
    int indent = 0, y = 0; ///< pixels, as laid out last; `y` from the top of the content

    explicit CTreeNode(const CStr& caption) : text(caption) {}
    ~CTreeNode() override;

    CTreeNode* add(const CStr& caption); ///< at the end
    CTreeNode* add(CTreeNode* node);     ///< adopts it, at the end
    /// Adopts it, in front of the first one whose text comes later, whatever the case.
    CTreeNode* addSorted(CTreeNode* node);
    void clear(); ///< deletes what lies below
    bool canExpand() const { return hasChildren || !children.empty(); }
    bool isBelow(const CTreeNode* other) const; ///< `other` is its parent, or that one's, and so on

private:
    friend class CTree;

    CTree* tree() const; ///< null for a node that was not added yet

    CTree* owner = nullptr; ///< only of a root
};
