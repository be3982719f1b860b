#pragma once

#include "gui/CCtrl.h"

/// A view of a plain that may be larger than itself, in coordinates of its own: what a song, a roll
/// of notes or a graph is drawn on. Interface thread.
///
/// A subclass paints in `paintContent`, from bottom to top: ground, marks, then what lies over
/// them, such as a position line or a rubber band. It reads the state that it shows, leaves out
/// what `asked` does not meet, and tells what has changed by `contentChanged`; each frame then
/// paints these areas and no others, with all that lies in them, so that nothing has to be drawn
/// twice to go away. Values that change by themselves are taken in `onFrame`.
///
/// Few marks are drawn by CGraphic itself, hundreds with one text each by a DrawBatch, thousands by
/// a PixelPaper with a DrawBatch for the texts on top; slanted lines, curves and shapes by a CPath.
class CCanvas : public CCtrl {
public:
    using CCtrl::CCtrl;

    CRect inView() const; ///< the part of the plain that the view shows
    /// Shows the plain from a point on, moving what stays in view by copying.
    void scrollTo(int x, int y);
    void contentChanged(CRect part); ///< of the plain
    CPoint toContent(CPoint inControl) const {
        return addPos(inControl, asPoint(scrollX, scrollY));
    }
    void paint(CGraphic* g, CRect rect) override;

protected:
    /// `asked` is what has to be painted of the plain, whose coordinates the surface has.
    virtual void paintContent(CGraphic* g, CRect asked) = 0;
};
