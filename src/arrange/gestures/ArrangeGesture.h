#pragma once

#include "base/CStr.h"
#include "ui/ViewGesture.h"

class ArrangeGrid;
class ArrangeState;
class CGraphic;
class CPart;
class Takes;

/// What a press in the grid begins. The state of the mouse follows the drag, an overlay shows what
/// would become of it, and the song changes at the release.
class ArrangeGesture : public ViewGesture {
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

    CPoint dragScroll(CPoint by) override;

protected:
    /// The pointer is there: `text` comes to be told beside it.
    void tellAt(const DragPoint& point, const CStr& text);

    ArrangeGrid& grid;
    ArrangeState& state;

private:
    void finish() override;

    CStr tag;
};
