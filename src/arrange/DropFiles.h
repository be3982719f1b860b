#pragma once

#include "arrange/DropPlan.h"
#include "base/Geometry.h"

#include <memory>

class ArrangeState;
class CGraphic;
class CDropItem;
template <class T>
class ListOf;

/// Files that hover over the arrangement: shows what would come of them, and tells it at the drop.
/// Points are those of the grid. Interface thread.
class DropFiles {
public:
    explicit DropFiles(ArrangeState& shared) : state(shared) {}

    /// Of the items that are dragged, files. To the left of the grid they come to the position.
    void over(const ListOf<CDropItem>& items, CPoint at, int btn);
    void leave();
    bool hovering() const { return reader != nullptr; }
    /// What comes at the release, waiting for what is not known yet; nothing hovers any more.
    DropPlan take(const ListOf<CDropItem>& items, CPoint at, int btn);
    /// Scrolls while the pointer is at an edge, and takes up what has become known.
    void idle();
    void paint(CGraphic* g, CRect asked) const;

private:
    void begin(const ListOf<CDropItem>& items);
    void replan();
    CRect boxArea(const DropBox& box) const;
    CRect rowArea(const DropBox& box) const;
    DropTarget target() const;
    void tell() const;

    ArrangeState& state;
    std::unique_ptr<FactReader> reader; ///< null while nothing hovers
    DropPlan plan;
    CPoint pointer;
    int held = 0;     ///< ModFlag
    DropTarget shown; ///< that the plan is for
    int known = -1;   ///< files of which it knows all, -1 without a plan
};
