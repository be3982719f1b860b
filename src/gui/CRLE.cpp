#include "gui/CRLE.h"

#include "base/Numbers.h"
#include "gui/RgbaPicture.h"

namespace {

constexpr int longestCount = 0xffff, indexShift = 16;
constexpr int opaque = 255, opacityStep = 32;
constexpr int wordsPerRun = 2;

} // namespace

bool CRLE::setSize(int w, int h) {
    const bool fits = RgbaPicture::fits(w, h);
    width = fits ? w : 0;
    height = fits ? h : 0;
    runs.clear();
    curColor = curCount = runCount = dataSize = 0;
    remaining = width * height;
    return fits;
}

int CRLE::indexOf(uint32_t color) {
    // Entries that were set from outside are learned first.
    for (int i = int(indices.size()); i < asMin(paletteSize(), maxColors); i++)
        indices.emplace(palette[size_t(i)], i);
    const auto found = indices.find(color);
    if (found != indices.end()) return found->second;
    if (paletteSize() >= maxColors) return curColor;
    indices.emplace(color, paletteSize());
    palette.push_back(color);
    return paletteSize() - 1;
}

void CRLE::addColor(int r, int g, int b, int a) {
    if (remaining <= 0) return;
    if (a < opaque) a = a / opacityStep * opacityStep;
    const int index = indexOf(uint32_t(r & 255) | uint32_t(g & 255) << 8 | uint32_t(b & 255) << 16 |
                              uint32_t(a & 255) << 24);
    remaining--;
    if (remaining > 0 && index == curColor && curCount <= longestCount) {
        curCount++;
        return;
    }
    flush();
    curColor = index;
    curCount = 1;
}

/// Stores the open run, unless no pixel has come yet.
void CRLE::flush() {
    if (curCount == 0) return;
    runs.push_back(uint32_t(curCount & longestCount) | uint32_t(curColor) << indexShift);
    runCount++;
    dataSize += wordsPerRun;
}

void CRLE::draw(CBitmap* target) const {
    if (version != knownVersion || !RgbaPicture::fits(width, height)) return;
    RgbaPicture picture;
    picture.width = width;
    picture.height = height;
    picture.pixels =
        std::make_unique<uint8_t[]>(size_t(width) * size_t(height) * RgbaPicture::bytesPerPixel);
    uint8_t* to = picture.pixels.get();
    int left = width * height - 1;
    const size_t stored = size_t(asMinMax(runCount, 0, saturate(int64_t(runs.size()))));
    for (size_t i = 0; i < stored && left > 0; i++) {
        const size_t index = runs[i] >> indexShift;
        const uint32_t color = index < palette.size() ? palette[index] : 0;
        const int count = asMin(int(runs[i] & longestCount), left);
        left -= count;
        for (int n = 0; n < count; n++)
            for (int channel = 0; channel < RgbaPicture::bytesPerPixel; channel++)
                *to++ = uint8_t(color >> (8 * channel));
    }
    composite(target, picture, width, height);
}
