#include "gui/RgbaPicture.h"

#include "base/Numbers.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Scale.h"

namespace {

constexpr int opaque = 255;

struct Rgba {
    int r = 0, g = 0, b = 0, a = 0;
};

Rgba pixelOf(const RgbaPicture& picture, int x, int y) {
    const uint8_t* p =
        picture.at(asMinMax(x, 0, picture.width - 1), asMinMax(y, 0, picture.height - 1));
    return {p[0], p[1], p[2], p[3]};
}

/// Where a device pixel's middle lies among the middles of picture pixels: before which one, and
/// how far behind it.
struct Place {
    int whole;
    double rest;

    explicit Place(int pixel) {
        const double at = (pixel + 0.5) * lowestScale / scalePercent - 0.5;
        whole = asInt(std::floor(at));
        rest = at - whole;
    }
};

/// Between the four pixels around a place. Colours count by their opacity.
Rgba between(const RgbaPicture& picture, const Place& x, const Place& y) {
    double r = 0, g = 0, b = 0, a = 0;
    for (int down = 0; down < 2; down++)
        for (int right = 0; right < 2; right++) {
            const Rgba p = pixelOf(picture, x.whole + right, y.whole + down);
            const double share = (right ? x.rest : 1 - x.rest) * (down ? y.rest : 1 - y.rest) * p.a;
            r += share * p.r;
            g += share * p.g;
            b += share * p.b;
            a += share;
        }
    if (a <= 0) return {};
    return {asRound(r / a), asRound(g / a), asRound(b / a), asRound(a)};
}

int blend(const Rgba& over, int behind) {
    if (over.a == 0) return behind;
    int r = 0, g = 0, b = 0;
    if (over.a < opaque) asRGB(behind, &r, &g, &b);
    const auto mix = [&](int front, int back) {
        return front * over.a / opaque + (opaque - over.a) * back / opaque;
    };
    return asColor(mix(over.r, r), mix(over.g, g), mix(over.b, b));
}

} // namespace

bool RgbaPicture::fits(int64_t width, int64_t height) {
    return width > 0 && height > 0 && width <= largestSide && height <= largestSide &&
           width * height * bytesPerPixel <= largestBytes;
}

void composite(CBitmap* target, const RgbaPicture& picture, int width, int height) {
    if (!picture.pixels || !target->lockPixels()) return;
    CGraphic* g = target->graphic.get();
    const int right = toDevice(asMin(width, target->width));
    const int bottom = toDevice(asMin(asMin(height, picture.height), target->height));
    for (int y = 0; y < bottom; y++)
        for (int x = 0; x < right; x++) {
            const Rgba over = scalePercent == lowestScale ? pixelOf(picture, x, y)
                                                          : between(picture, Place(x), Place(y));
            g->setDevicePixel(x, y, blend(over, g->getDevicePixel(x, y)));
        }
    target->unlockPixels();
}
