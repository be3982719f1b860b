#include "gui/Monitors.h"

#include "base/Numbers.h"
#include "gui/CWin.h"
#include "gui/Scale.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>

#include <vector>

namespace {

bool tellsMonitors(Display* display) {
    int event, error, major = 1, minor = 5;
    return XRRQueryExtension(display, &event, &error) && XRRQueryVersion(display, &major, &minor) &&
           (major > 1 || minor >= 5);
}

std::vector<CRect> monitors() {
    std::vector<CRect> all;
    Display* display = liveDisplay();
    if (!display || !tellsMonitors(display)) return all;
    int count = 0;
    XRRMonitorInfo* list = XRRGetMonitors(display, xConnection().root, True, &count);
    for (int i = 0; list && i < count; i++) {
        const XRRMonitorInfo& m = list[i];
        if (m.width > 0 && m.height > 0)
            all.push_back(toLogical(asRect(m.x, m.y, m.x + m.width, m.y + m.height)));
    }
    if (list) XRRFreeMonitors(list);
    return all;
}

/// How far a point lies outside, on both axes together.
int distance(const CRect& r, CPoint at) {
    return asMax(asMax(r.left - at.x, at.x - r.right + 1), 0) +
           asMax(asMax(r.top - at.y, at.y - r.bottom + 1), 0);
}

} // namespace

CRect monitorAt(CPoint at) {
    CRect nearest;
    for (const CRect& monitor : monitors())
        if (nearest.empty() || distance(monitor, at) < distance(nearest, at)) nearest = monitor;
    return nearest.empty() ? screenRect() : nearest;
}

CRect monitorOf(CWin* win) {
    if (!win || !win->visible) return monitorAt(mousePos());
    const CPoint at = win->getPos(true);
    return monitorAt(asPoint(at.x + win->width / 2, at.y + win->height / 2));
}

CPoint centredIn(CRect place, int width, int height, CRect room) {
    const int x = place.left + (place.width() - width) / 2;
    const int y = place.top + (place.height() - height) / 2;
    return asPoint(asMax(asMin(x, room.right - width), room.left),
                   asMax(asMin(y, room.bottom - height), room.top));
}
