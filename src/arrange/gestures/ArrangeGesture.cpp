#include "arrange/gestures/ArrangeGesture.h"

#include "arrange/ArrangeGrid.h"
#include "arrange/ArrangeState.h"

void ArrangeGesture::dragEnd(const DragPoint& point) {
    dragMove(point);
    apply(point);
    finish();
}

void ArrangeGesture::dragClick(const DragPoint& point) {
    click(point);
    finish();
}

void ArrangeGesture::dragCancel() {
    finish();
}

void ArrangeGesture::tellAt(const DragPoint& point, const CStr& text) {
    state.edit.current = point.at;
    tag = text;
    grid.tagMoved();
}

void ArrangeGesture::finish() {
    state.edit.done();
    grid.gestureDone();
}

CPoint ArrangeGesture::dragScroll(CPoint by) {
    const int64_t x = state.axis().scroll();
    const int y = state.edit.scrollY;
    state.scrollTo(x + by.x, y + by.y);
    return asPoint(int(state.axis().scroll() - x), state.edit.scrollY - y);
}
