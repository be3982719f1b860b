#pragma once

#include "base/Geometry.h"

#include <memory>
#include <vector>

class CBitmap;
class CGraphic;

/// From the upper left corner of the sign's box, in logical pixels.
struct SignPoint {
    double x, y;
};

/// A polygon that is filled, or, with a radius, a path with round ends of twice that thickness.
/// Polygons keep sharp edges in every scale, as their corners lie on whole pixels.
struct SignPart {
    double radius;
    std::vector<SignPoint> points; ///< one or more; one and a radius are a disc
};

/// What the parts cover together.
using Sign = std::vector<SignPart>;

/// A set of signs of one size with smooth edges. They are drawn once for each pair of colours and
/// copied from there. Interface thread.
class SignSet {
public:
    /// The signs stay the caller's and outlive the set; `w` and `h` are the size of their box.
    SignSet(const std::vector<Sign>& drawn, int w, int h);
    ~SignSet();

    /// Fills the sign's box with the ground and draws the sign on it.
    void draw(CGraphic* g, int index, CPoint at, int color, int ground);

private:
    struct Sheet {
        int color, ground;
        std::unique_ptr<CBitmap> picture; ///< all signs from left to right
    };
    const Sheet& sheetOf(int color, int ground);

    const std::vector<Sign>& signs;
    int width, height;
    std::vector<Sheet> sheets;
};
