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

    void paint(CGraphic* g, const CPalette& colours) const;
};
