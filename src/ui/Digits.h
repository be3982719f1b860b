#pragma once

#include "base/CStr.h"
#include "ui/Signs.h"

/// Large figures for what is read at arm's length. Digits, "-", "/", "." and ":" are known,
/// anything else is a gap; all digits are equally wide. Interface thread.
class Digits {
public:
    Digits();
    /// With the left edge and middle of the text at those of the rectangle.
    void draw(CGraphic* g, CRect rect, const CStr& text, int color, int ground);
    /// How far to the right the next figure would stand, in pixels.
    static int advance(const CStr& text);

private:
    SignSet set;
};
