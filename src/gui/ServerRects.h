#pragma once

#include "base/Geometry.h"
#include "base/Numbers.h"

#include <X11/Xlib.h>

/// The protocol's coordinates have 16 bits.
constexpr int farthest = 32767;

/// A rectangle of device pixels as the server takes it, cut to what can be told.
inline XRectangle serverRect(const CRect& r) {
    const CRect cut = intersect(r, asRect(-farthest, -farthest, farthest, farthest));
    XRectangle box{};
    if (cut.empty()) return box;
    box.x = short(cut.left);
    box.y = short(cut.top);
    box.width = static_cast<unsigned short>(cut.width());
    box.height = static_cast<unsigned short>(cut.height());
    return box;
}

/// Sets the clip of a graphics context in device pixels; all 0 takes it away.
inline void setServerClip(Display* display, GC gc, const CRect& clip) {
    XRectangle box = serverRect(clip);
    if (clip == CRect())
        XSetClipMask(display, gc, None);
    else
        XSetClipRectangles(display, gc, 0, 0, &box, 1, Unsorted);
}
