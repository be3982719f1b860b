#pragma once

#include "base/Geometry.h"

#include <cstdint>
#include <memory>

class CBitmap;

/// Pixels of 8-bit red, green, blue and opacity in this order, not multiplied; rows from the top.
struct RgbaPicture {
    static constexpr int bytesPerPixel = 4;
    static constexpr int largestSide = 8192;            ///< of what is taken from files
    static constexpr int64_t largestBytes = 64LL << 20; ///< the same

    int width = 0, height = 0;
    std::unique_ptr<uint8_t[]> pixels; ///< null for an empty picture

    /// Whether a picture of that size is within the limits and not empty.
    static bool fits(int64_t width, int64_t height);
    const uint8_t* at(int x, int y) const {
        return &pixels[(size_t(y) * size_t(width) + size_t(x)) * bytesPerPixel];
    }
};

/// Puts a picture over what is in a bitmap, a pixel of it on each logical one, from the top left.
/// Where the picture is narrower than `width` its last column goes on; it ends at `height`, its own
/// height, and the bitmap. Each channel becomes
///     c * opacity / 255 + (255 - opacity) * behind / 255,
/// both quotients cut off. At other scales than 100 percent the picture is smoothed.
void composite(CBitmap* target, const RgbaPicture& picture, int width, int height);
