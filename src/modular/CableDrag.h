#pragma once

#include "gui/CDrag.h"

class ModularView;

/// Leads a cable from a port. The port that it would take, the nearest that fits, is shown and
/// told; the release joins the two, or, where they are joined, parts them.
class CableDrag : public DragHandler {
public:
    CableDrag(ModularView& over, int port) : view(over), source(port) {}
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    CPoint dragScroll(CPoint by) override;

private:
    ModularView& view;
    const int source; ///< of the model, which stays while it is dragged
};
