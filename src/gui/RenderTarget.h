#pragma once

#include "base/Geometry.h"

#include <memory>
#include <span>

class CBitmap;

/// Draws on one drawable by the server's extension for blending, which is looked for at run time.
/// All in device pixels. Interface thread.
class RenderTarget {
public:
    struct Point {
        double x = 0, y = 0;
    };

    virtual ~RenderTarget() = default;
    virtual void setClip(const CRect& clip) = 0; ///< of all that follows
    /// The colour of what follows; `alpha` is 0, clear, to 1, opaque.
    virtual void setColor(int color, double alpha) = 0;
    virtual void fill(const CRect& rect) = 0;
    /// A closed outline, which may be concave and cross itself, by the even-odd rule.
    virtual void fillPolygon(std::span<const Point> corners) = 0;
    /// Triangles of which each has the two latest points of the one before.
    virtual void fillStrip(std::span<const Point> points) = 0;
    /// A part of a bitmap, smoothly, over a rectangle of any size.
    virtual void drawScaled(const CBitmap& bitmap, const CRect& from, const CRect& to) = 0;
};

/// Null where the server or the library is without the extension.
std::unique_ptr<RenderTarget> openRenderTarget(unsigned long drawable);
