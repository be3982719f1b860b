#pragma once

#include "base/Geometry.h"

#include <cstdint>

class CGraphic;
class CPath;
class Coverage;

/// A part of a bitmap, such as windows are painted through, that the program draws by itself, pixel
/// by pixel in memory that the server reads: for views of many small marks, which are quicker made
/// so than told to the server. Where there is no such memory the same calls go to the surface.
///
/// Coordinates are logical pixels from the origin of the surface, at device precision; everything
/// is cut to the part. While it lives nothing else may draw on the surface.
class PixelPaper {
public:
    /// What of `rect` is asked for.
    PixelPaper(CGraphic* g, CRect rect);
    PixelPaper(const PixelPaper&) = delete;
    PixelPaper& operator=(const PixelPaper&) = delete;

    void fill(int color, CRect rect);
    void frame(int color, CRect rect);               ///< one pixel wide, inside the rectangle
    void blend(int color, double alpha, CRect rect); ///< over what is there; `alpha` 0 to 1
    /// As `fillPath` and `strokePath` of gui/Shapes.h.
    void fill(int color, const CPath& path, double alpha = 1);
    void stroke(int color, const CPath& path, double width, double alpha = 1);

    /// For waves and the like, which are as fine as the screen: a logical rectangle in device
    /// pixels from the corner of the surface, and a fill in such.
    CRect deviceRect(CRect rect) const;
    void fillDevice(int color, CRect device);

private:
    uint32_t* row(int y) const;
    void blendCovered(int color, double alpha, Coverage& coverage, const CRect& area, bool evenOdd);

    CGraphic* graphic;
    CRect part;                 ///< device pixels of the surface
    uint32_t* pixels = nullptr; ///< of the corner of the surface; null to draw there by requests
    int perRow = 0;
};
