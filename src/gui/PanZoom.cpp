#include "gui/PanZoom.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Keys.h"

#include <cmath>
#include <utility>

namespace {

int wholeOf(double& rest) {
    const double whole = std::trunc(rest);
    rest -= whole;
    return asInt(whole);
}

} // namespace

bool PanZoom::wheel(int x, int y, int btn, int dy, int dx) {
    return turn(asPoint(x, y), btn, double(dy) / notch, double(dx) / notch);
}

bool PanZoom::touch(int x, int y, int btn, const TouchStep& step) {
    if (step.zoom == 1) return turn(asPoint(x, y), btn, step.dy, step.dx);
    view->zoomAt(asPoint(x, y), step.zoom, btn & modShift);
    return true;
}

/// In notches.
bool PanZoom::turn(CPoint at, int btn, double dy, double dx) {
    if (btn & modAlt) return false;
    if (btn & modControl) {
        view->zoomAt(at, std::pow(notchFactor, dy != 0 ? dy : dx), btn & modShift);
        return true;
    }
    if (btn & modShift) std::swap(dx, dy);
    restX += dx * notchPixels;
    restY += dy * notchPixels;
    view->panBy(asPoint(wholeOf(restX), wholeOf(restY)));
    return true;
}

bool PanZoom::press(int x, int y, int btn) {
    if (!(btn & modMiddle)) return false;
    panned = {};
    ctrl->win->app->drag.start(ctrl, this, asPoint(x, y), btn, 0);
    return true;
}

void PanZoom::dragMove(const DragPoint& point) {
    const CPoint wanted = asPoint(point.at.x - point.anchor.x, point.at.y - point.anchor.y);
    const CPoint by = view->panBy(asPoint(wanted.x - panned.x, wanted.y - panned.y));
    panned = addPos(panned, by);
}

void PanZoom::dragCancel() {
    view->panBy(asPoint(-panned.x, -panned.y));
}
