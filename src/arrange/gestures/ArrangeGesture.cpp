#include "arrange/gestures/ArrangeGesture.h"

#include "arrange/ArrangeGrid.h"
#include "arrange/ArrangeState.h"

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
    return scrollView(state, by);
}
