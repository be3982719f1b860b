#pragma once

#include "base/CStr.h"
#include "gui/CDrag.h"

class ArrangeGrid;
class ArrangeState;
class CGraphic;
class CPart;
class Takes;

/// What a press in the grid begins. The state of the mouse follows the drag, an overlay shows what
/// would become of it, and the song changes at the release.
class ArrangeGesture : public DragHandler {
public:
    ArrangeGesture(ArrangeGrid& over, ArrangeState& shared) : grid(over), state(shared) {}

    /// Whether what it drags is still in the song.
    virtual bool stands() const { return true; }
    const CStr& told() const { return tag; } ///< beside the pointer; empty for nothing
    /// What is shown in place of an automation slot of a part's content; null for itself.
    virtual CPart* draftOf(const CPart*, int) const { return nullptr; }
    /// The takes that are shown in place of those of a part's content; null for itself.
    virtual const Takes* draftTakes(const CPart*) const { return nullptr; }
    /// What it shows, over the rows.
    virtual void paintOverlay(CGraphic*, CRect) const {}

    void dragEnd(const DragPoint& point) final;
    void dragClick(const DragPoint& point) final;
    void dragCancel() final;
    CPoint dragScroll(CPoint by) override;

protected:
    virtual void apply(const DragPoint& point) = 0; ///< released: the song changes
    virtual void click(const DragPoint&) {}         ///< released where it was pressed
    /// The pointer is there: `text` comes to be told beside it.
    void tellAt(const DragPoint& point, const CStr& text);

    ArrangeGrid& grid;
    ArrangeState& state;

private:
    void finish();

    CStr tag;
};
