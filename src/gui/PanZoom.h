#pragma once

#include "gui/CDrag.h"
#include "gui/TouchStep.h"

/// A view whose content is larger than itself and can be seen larger and smaller.
class ZoomView {
public:
    virtual ~ZoomView() = default;
    /// Moves the content by so many pixels, as far as there is any; tells how far it has been.
    virtual CPoint panBy(CPoint pixels) = 0;
    /// Makes it `factor` times larger along or across; what is at `at`, from the view's corner,
    /// stays there. Above 0, and kept within what the view can show.
    virtual void zoomAt(CPoint at, double factor, bool across) = 0;
};

/// The wheel, the touchpad and the middle button over a view: the wheel pans, with Shift along,
/// with Control it zooms at the pointer, with Control and Shift across; two fingers pan and zoom as
/// they move; a drag with the middle button pans. For a control to pass its events to.
class PanZoom : public DragHandler {
public:
    static constexpr int notch = 32;            ///< of the wheel's numbers
    static constexpr int notchPixels = 48;      ///< that a notch pans
    static constexpr double notchFactor = 1.25; ///< by which it zooms

    /// Both outlive it.
    PanZoom(CCtrl* control, ZoomView* zoomed) : ctrl(control), view(zoomed) {}

    bool wheel(int x, int y, int btn, int dy, int dx);
    bool touch(int x, int y, int btn, const TouchStep& step);
    bool press(int x, int y, int btn); ///< true when it has begun to pan

    void dragMove(const DragPoint& point) override;
    void dragCancel() override;

private:
    bool turn(CPoint at, int btn, double dy, double dx);

    CCtrl* ctrl;
    ZoomView* view;
    CPoint panned;               ///< by the drag, in pixels
    double restX = 0, restY = 0; ///< parts of pixels
};
