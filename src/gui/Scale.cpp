#include "gui/Scale.h"

#include <X11/Xlib.h>

int wantedScale = 0;
int scalePercent = lowestScale;

namespace {

constexpr double plainResolution = 96;

/// Buttons, motion and crossing have these fields under the same names.
template <class Event>
void makeLogical(Event& e) {
    e.x = toLogical(e.x);
    e.y = toLogical(e.y);
    e.x_root = toLogical(e.x_root);
    e.y_root = toLogical(e.y_root);
}

/// Both kinds of exposure have these.
template <class Event>
void makeAreaLogical(Event& e) {
    const CRect area = toLogical(asRect(e.x, e.y, e.x + e.width, e.y + e.height));
    e.x = area.left;
    e.y = area.top;
    e.width = area.width();
    e.height = area.height();
}

} // namespace

int chooseScale(int wanted, double dotsPerInch) {
    const double percent = wanted > 0 ? wanted : dotsPerInch / plainResolution * 100;
    const int steps = asRound(percent / scaleStep);
    return asMinMax(steps, lowestScale / scaleStep, highestScale / scaleStep) * scaleStep;
}

XEvent toLogical(const XEvent& event) {
    XEvent logical = event;
    switch (event.type) {
    case ButtonPress:
    case ButtonRelease:
        makeLogical(logical.xbutton);
        break;
    case MotionNotify:
        makeLogical(logical.xmotion);
        break;
    case EnterNotify:
    case LeaveNotify:
        makeLogical(logical.xcrossing);
        break;
    case Expose:
        makeAreaLogical(logical.xexpose);
        break;
    case GraphicsExpose:
        makeAreaLogical(logical.xgraphicsexpose);
        break;
    default:
        break;
    }
    return logical;
}
