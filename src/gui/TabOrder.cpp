#include "gui/TabOrder.h"

#include "base/Numbers.h"
#include "gui/CWin.h"
#include "gui/Keys.h"

#include <climits>

namespace {

CRect placeOf(const CCtrl* ctrl) {
    const CPoint at = ctrl->win->controlPos(ctrl);
    return asRect(at.x, at.y, at.x + ctrl->width, at.y + ctrl->height);
}

/// How far `to` lies to that side of `from`, in one row or column with it; INT_MAX if it does not.
int distance(CRect from, CRect to, int key) {
    const bool across = key == keyLeft || key == keyRight;
    const bool inLine = across ? to.top < from.bottom && from.top < to.bottom
                               : to.left < from.right && from.left < to.right;
    const int by = across ? to.left - from.left : to.top - from.top;
    const int along = key == keyLeft || key == keyUp ? -by : by;
    return inLine && along > 0 ? along : INT_MAX;
}

} // namespace

bool takesTab(const CCtrl* ctrl) {
    return ctrl->tabStop && ctrl->visible && ctrl->enabled;
}

void collectStops(CCtrl* ctrl, const CCtrl* focused, std::vector<CCtrl*>& stops) {
    if (takesTab(ctrl) || ctrl == focused) stops.push_back(ctrl);
    if (!ctrl->visible || !ctrl->enabled) return;
    if (ctrl->category != catGroup && ctrl->category != catGroupLike) return;
    for (CCtrl* c : static_cast<CGroup*>(ctrl)->controls) collectStops(c, focused, stops);
}

CCtrl* neighbourOf(const CCtrl* from, CGroup* group, int key) {
    if (!from || key > keyLeft || key < keyDown) return nullptr;
    std::vector<CCtrl*> stops;
    collectStops(group, nullptr, stops);
    CCtrl* nearest = nullptr;
    int least = INT_MAX;
    for (CCtrl* c : stops) {
        const int away = c == from ? INT_MAX : distance(placeOf(from), placeOf(c), key);
        if (away >= least) continue;
        least = away;
        nearest = c;
    }
    return nearest;
}
