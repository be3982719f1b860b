#pragma once

#include "base/Geometry.h"

class CGraphic;

/// Directions of gradients and arrows.
enum DrawDir : int {
    dirLeft = 2,
    dirUp = 4,
    dirRight = 8,
    dirDown = 16,
    gradientAcross = 2,      ///< left to right
    gradientDown = 4,        ///< top to bottom
    gradientDownUp = 2048,   ///< top to middle and back
    gradientAcrossTo = 4096, ///< left to middle and back
};

/// Fills with the four corner pixels left out.
void roundRect(CGraphic* g, int color, CRect rect);
/// The outline of that.
void roundFrame(CGraphic* g, int color, CRect rect);
/// Lines from one colour to the other, the first and the last being pure.
void drawGradient(CGraphic* g, CRect rect, int from, int to, int dir);
/// A fill with a shine of strength |f|, 0 to 1: on the upper half, `margin` pixels in, for f of 0
/// or above, else rising over the lower half.
void drawGlossy(CGraphic* g, CRect rect, int color, float f, int margin);
/// The tick of a check box, 5 pixels in from the left, centred in height.
void drawCheck(CGraphic* g, int color, CRect rect);
/// A solid triangle of `size` + 1 lines around the middle of the rectangle.
void drawArrow(CGraphic* g, int color, CRect rect, int dir, int size);
/// A cross in the middle of the rectangle.
void drawCloseButton(CGraphic* g, CRect rect, int color);
/// An etched line, two pixels high, in shades of the window's background.
void drawSeparator(CGraphic* g, int x1, int y, int x2);
