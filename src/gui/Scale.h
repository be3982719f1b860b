#pragma once

#include "base/Geometry.h"
#include "base/Numbers.h"

union _XEvent;

/// The toolkit counts in logical pixels; the server in device pixels, of which a logical one has
/// `scalePercent` / 100 either way. A logical edge lies on the nearest device edge, so neighbours
/// neither overlap nor leave a gap. What comes from the server goes through `toLogical`, what goes
/// there through `toDevice`, and nothing but painting and the geometry of windows and events knows
/// of the scale. Interface thread.

constexpr int lowestScale = 100, highestScale = 300, scaleStep = 25; // percent

/// The scale that is wanted, set before `CApp::open`; 0 takes that of the display's resolution.
extern int wantedScale;
extern int scalePercent; ///< in force; set by the connection, and for a while by `DeviceScope`

/// The step nearest to a wanted scale, or, for 0, to a resolution in dots per inch over 96. A
/// resolution of 0 is unknown.
int chooseScale(int wanted, double dotsPerInch);

/// Rounds down, below 0 too; `b` is above 0.
constexpr int64_t floorDivide(int64_t a, int64_t b) {
    return a / b - (a % b < 0 ? 1 : 0);
}

/// The device edge of a logical edge, which is also the first pixel behind it.
inline int toDevice(int edge, int percent) {
    return saturate(floorDivide(int64_t(edge) * percent + 50, 100));
}
inline int toDevice(int edge) {
    return toDevice(edge, scalePercent);
}
/// The logical pixel that a device pixel belongs to. Takes back `toDevice`.
inline int toLogical(int pixel) {
    return saturate(floorDivide(int64_t(pixel) * 100 + 49, scalePercent));
}
/// The fewest logical pixels that cover so many device pixels. Takes back `toDevice`.
inline int toLogicalSize(int size) {
    return toLogical(size - 1) + 1;
}
inline CRect toDevice(const CRect& r) {
    return {toDevice(r.left), toDevice(r.top), toDevice(r.right), toDevice(r.bottom)};
}
inline CPoint toDevice(const CPoint& p) {
    return {toDevice(p.x), toDevice(p.y)};
}
inline CPoint toLogical(const CPoint& p) {
    return {toLogical(p.x), toLogical(p.y)};
}
/// The smallest logical rectangle that covers it.
inline CRect toLogical(const CRect& r) {
    return {toLogical(r.left), toLogical(r.top), toLogicalSize(r.right), toLogicalSize(r.bottom)};
}

/// Thickness of a line of one logical pixel, in device pixels.
inline int lineThickness() {
    return toDevice(1);
}

/// An event of buttons, motion, crossing or exposure with all its coordinates made logical; any
/// other as it is.
_XEvent toLogical(const _XEvent& event);
