#include "arrange/gestures/HandGesture.h"

#include "arrange/ArrangeState.h"

void HandGesture::dragBegin(const DragPoint& point) {
    state.edit.mode = editPan;
    last = point.anchor;
}

void HandGesture::dragMove(const DragPoint& point) {
    panView(state, asPoint(point.at.x - last.x, point.at.y - last.y));
    last = point.at;
}

void HandGesture::click(const DragPoint& point) {
    onClick(point.anchor);
}
