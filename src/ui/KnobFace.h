#pragma once

struct CPalette;
class CGraphic;

/// A knob: a ring of three quarters around a hand. Interface thread.
struct KnobFace {
    double x, y;         ///< its middle, in logical pixels
    double radius;       ///< of the ring
    double share = 0.0;  ///< 0 to 1: where the hand points
    double origin = 0.0; ///< the same: from where on the ring is filled
    bool held = false;   ///< or the pointer is over it
    bool enabled = true;
    // What moves the value by itself: an arc around the ring, with a dot where it is now.
    double movedFrom = 0.0, movedTo = 0.0; ///< as `share`; equal: nothing does
    double now = -1.0;                     ///< below 0: it is not heard

    void paint(CGraphic* g, const CPalette& colours) const;

private:
    void paintMoved(CGraphic* g, const CPalette& colours) const;
};
