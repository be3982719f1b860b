#pragma once

#include "base/Geometry.h"

#include <cstdint>

class CGraphic;

/// A part of a surface that the program draws by itself, pixel by pixel in memory that the server
/// reads: for views of many small marks, which are quicker made so than told to the server. It
/// shows when the scope ends. Where the screen has no pixels of 32 bits or the memory is refused,
/// the same calls draw on the surface.
///
/// It begins with unknown pixels: fill all of it first. Coordinates are logical pixels from the
/// origin of the surface, at device precision; everything is cut to the part. One at a time.
class PixelPaper {
public:
    /// What of `rect` is asked for.
    PixelPaper(CGraphic* g, CRect rect);
    ~PixelPaper();
    PixelPaper(const PixelPaper&) = delete;
    PixelPaper& operator=(const PixelPaper&) = delete;

    void fill(int color, CRect rect);
    void frame(int color, CRect rect);               ///< one pixel wide, inside the rectangle
    void blend(int color, double alpha, CRect rect); ///< over what is there; `alpha` 0 to 1

    /// Device pixels, for waves and the like that are as fine as the screen: of a logical edge, and
    /// a fill between such. From the corner of the surface.
    CRect deviceRect(CRect rect) const;
    void fillDevice(int color, CRect device);

private:
    uint32_t* row(int y) const;

    CGraphic* graphic;
    CRect part; ///< device pixels of the surface
    uint32_t* pixels = nullptr;
    int perRow = 0;
};

/// Gives back the memory that all papers share; before the display is closed.
void releasePaper();
