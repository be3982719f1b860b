#pragma once

#include "base/Geometry.h"
#include "gui/CDrag.h"

#include <vector>

class CComp;
class ModularView;

/// Selects what a rectangle meets; with Shift at the press beside what is selected already.
class BandDrag : public DragHandler {
public:
    BandDrag(ModularView& over, CPoint at, bool adds);
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    CPoint dragScroll(CPoint by) override;

private:
    void select(CRect meets);
    ModularView& view;
    const std::vector<CComp*> original; ///< that were selected
    std::vector<CComp*> kept;
    CPoint start; ///< of the graph
};

/// Moves the selected boxes. One that no cable of a kind leads through, dropped on such a cable,
/// comes into it; with Alt held at the press it is pulled out of its cables.
class BoxDrag : public DragHandler {
public:
    BoxDrag(ModularView& over, CPoint at, bool pulls);
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    CPoint dragScroll(CPoint by) override;

private:
    CPoint shift(const DragPoint& point) const;
    int cableUnder() const;
    ModularView& view;
    CPoint start; ///< of the graph
    bool pullsOut;
};

/// Duplicates the selected boxes with their cables, where it has come far enough.
class CopyDrag : public DragHandler {
public:
    static constexpr int least = 9; ///< pixels on an axis
    CopyDrag(ModularView& over, CPoint at);
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    CPoint dragScroll(CPoint by) override;

private:
    CPoint shift(const DragPoint& point) const;
    ModularView& view;
    CPoint start; ///< of the graph
};

/// The right button: a menu where it is let go.
class MenuPress : public DragHandler {
public:
    explicit MenuPress(ModularView& over) : view(over) {}
    void dragMove(const DragPoint&) override {}
    void dragEnd(const DragPoint& point) override { dragClick(point); }
    void dragClick(const DragPoint& point) override;

private:
    ModularView& view;
};
