#include "notes/FrameAxis.h"

#include "base/Numbers.h"

#include <algorithm>

void FrameAxis::setZoom(double frames) {
    framesPerPixel = std::max(frames, leastPerPixel);
}

void FrameAxis::zoomAt(double x, double frames) {
    const double under = frameAt(x);
    setZoom(frames);
    first = under - x * framesPerPixel;
}

int FrameAxis::xOf(double frame) const {
    return asMinMax(asRound((frame - first) / framesPerPixel), -farX, farX);
}
