#pragma once

#include "base/CObject.h"
#include "base/Geometry.h"

#include <cstdint>
#include <memory>
#include <vector>

class CGraphic;

/// A pixmap off the screen. Where the server shares memory its pixels can be written directly;
/// elsewhere the bitmap keeps a copy of them. Interface thread.
class CBitmap : public CObject {
public:
    std::unique_ptr<CGraphic> graphic; ///< to draw on it
    int depth = 0;                     ///< bits of a pixel in memory
    int width = 0, height = 0;         ///< logical pixels, at least 1 each
    bool shared = false;
    unsigned long pixmap = 0;

    CBitmap(int width, int height);
    ~CBitmap() override;

    CRect getRect() const { return asRect(0, 0, width, height); }
    int deviceWidth() const; ///< of the pixmap
    int deviceHeight() const;
    /// Makes `CGraphic::getPixel` and `setPixel` valid until `unlockPixels`, showing all that was
    /// drawn before. False when this screen has no pixels of 32 bits. Without a display they are
    /// all that the bitmap is, and drawing does nothing.
    bool lockPixels();
    void unlockPixels(); ///< the pixmap shows what was written

private:
    bool lockMemory();
    bool createShared();
    void createPlain();

    void* address = nullptr;     ///< of the shared segment
    unsigned long segment = 0;   ///< the server's name of it
    std::vector<uint8_t> copied; ///< pixels between lock and unlock without shared memory
};

/// A new bitmap, for the caller, turned by a quarter: the pixel at (x, y) comes to lie at
/// (y, newHeight - 1 - x).
std::unique_ptr<CBitmap> flipBitmap(CBitmap* source);
