#include "gui/CDrag.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Keys.h"

#include <cstdlib>

namespace {

constexpr int buttons = modLeft | modRight | modMiddle, modifiers = modShift | modControl | modAlt;
constexpr int slowest = 2, fastest = 48, growth = 4; ///< pixels a step, and distance for each

/// How far the content is to move for a pointer at that place of a span; 0 inside it.
int pullOf(int at, int length) {
    const int margin = asMin(CDrag::edge, length / 4);
    const int before = margin - at, behind = at - (length - 1 - margin);
    const int beyond = asMax(before, behind);
    if (beyond <= 0) return 0;
    const int by = asMin(slowest + beyond / growth, fastest);
    return before > behind ? -by : by;
}

} // namespace

bool DragHandler::dragWheel(const DragPoint&, int, int) {
    return false;
}

CPoint DragHandler::dragScroll(CPoint) {
    return asPoint(0, 0);
}

/// Steps the scrolling while the pointer rests at an edge.
class CDrag::Ticker : public CCtrl {
public:
    Ticker(CWin* owner, CDrag* drag) : CCtrl(owner, "drag", 0, 0, 0, 0), of(drag) {
        win->app->addTimer(this, tickMs, true);
    }
    void onTimer() override { of->step(); }

private:
    CDrag* of;
};

CDrag::CDrag(CApp* application) : app(application) {
}

CDrag::~CDrag() = default;

void CDrag::start(CCtrl* ctrl, DragHandler* by, CPoint at, int btn, int clicks) {
    cancel();
    dragged = ctrl;
    handler = by;
    room = clicks;
    point = {at, at, btn & (buttons | modifiers)};
    if (room == 0) moved(at, btn);
}

void CDrag::moved(CPoint at, int btn) {
    if (!dragged) return;
    point.at = at;
    point.btn = (point.btn & buttons) | (btn & modifiers);
    if (!begun) {
        const CPoint from = point.anchor;
        if (std::abs(at.x - from.x) < room && std::abs(at.y - from.y) < room) return;
        begun = true;
        ticker = std::make_unique<Ticker>(dragged->win, this);
        handler->dragBegin(point);
    }
    if (begun) handler->dragMove(point);
}

void CDrag::released(CPoint at) {
    if (!dragged) return;
    DragHandler* by = handler;
    point.at = at;
    const DragPoint last = point;
    const bool was = begun;
    finish();
    if (was)
        by->dragEnd(last);
    else
        by->dragClick(last);
}

bool CDrag::cancel() {
    if (!dragged) return false;
    DragHandler* by = handler;
    CWin* win = dragged->win;
    const bool was = begun;
    if (win->mouseCtrl == dragged) win->mouseCtrl = nullptr;
    dragged->redraw();
    finish();
    if (was) by->dragCancel();
    return true;
}

void CDrag::finish() {
    dragged = nullptr;
    handler = nullptr;
    begun = false;
    if (ticker) app->deleteLater(ticker.release()); // it may be what called
}

bool CDrag::wheel(int dy, int dx) {
    return begun && handler->dragWheel(point, dy, dx);
}

void CDrag::setMods(int mods) {
    const int now = (point.btn & buttons) | (mods & modifiers);
    if (!begun || now == point.btn) return;
    point.btn = now;
    handler->dragMove(point);
}

void CDrag::forget(const CCtrl* ctrl) {
    if (ctrl == dragged) finish();
}

CPoint CDrag::pull() const {
    return asPoint(pullOf(point.at.x, dragged->width), pullOf(point.at.y, dragged->height));
}

void CDrag::step() {
    const CPoint by = pull();
    if (by == asPoint(0, 0)) return;
    const CPoint done = handler->dragScroll(by);
    if (done == asPoint(0, 0) || !begun) return;
    point.anchor = asPoint(point.anchor.x - done.x, point.anchor.y - done.y);
    handler->dragMove(point);
}
