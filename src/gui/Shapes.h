#pragma once

#include "base/Geometry.h"

#include <vector>

class CBitmap;
class CGraphic;

/// An outline of lines and curves, in logical pixels from the origin of the surface that it is
/// drawn on; fractions count at every scale. (0, 0) is the corner of the first pixel, and (0.5,
/// 0.5) its middle.
class CPath {
public:
    struct Point {
        double x = 0, y = 0;
    };
    struct Part {
        std::vector<Point> points;
        bool closed = false;
    };
    std::vector<Part> parts; ///< each begins with `moveTo`; curves are flattened

    void moveTo(double x, double y);
    void lineTo(double x, double y);
    /// A cubic curve that leaves towards the first point and comes from the second.
    void curveTo(double x1, double y1, double x2, double y2, double x, double y);
    /// Part of a circle, clockwise from the angle `from` to `to`, in radians, 0 to the right, one
    /// turn at most; a line leads to its start.
    void arc(double x, double y, double radius, double from, double to);
    void close(); ///< leads back to the start
};

/// Anti-aliased where the server has the means, else by its plain lines and polygons. `alpha` is 0,
/// clear, to 1, opaque; in the plain form half of the pixels stand for what is half clear.

/// The inside of each part, concave or crossing itself by the even-odd rule.
void fillPath(CGraphic* g, const CPath& path, int color, double alpha = 1);
/// Lines of a width in logical pixels along the path.
void strokePath(CGraphic* g, const CPath& path, double width, int color, double alpha = 1);
void fillAlpha(CGraphic* g, CRect rect, int color, double alpha);
/// A part of a bitmap over a rectangle of any size.
void drawScaled(CGraphic* g, const CBitmap& bitmap, CRect from, CRect to);
