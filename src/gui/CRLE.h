#pragma once

#include "base/CObject.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

class CBitmap;

/// A picture as runs of equal pixels: the form of those that are built in. It has two oddities: the
/// last pixel is never stored, so that all runs together have width x height - 1 pixels; and a run
/// of 65536 pixels has the count 0, which draws nothing. Interface thread.
class CRLE : public CObject {
public:
    static constexpr int knownVersion = 16;
    static constexpr int maxColors = 65536;

    int version = knownVersion; ///< a picture of any other is not drawn
    int curColor = 0;           ///< encoder: palette index of the open run
    int curCount = 0;           ///< encoder: its length
    int remaining = 0;          ///< encoder: pixels that have not been added
    int width = 0, height = 0;
    int runCount = 0;              ///< of `runs` in use
    std::vector<uint32_t> palette; ///< R, G, B, opacity from the low byte up
    int dataSize = 0;              ///< 16-bit words in use, two of a run
    std::vector<uint32_t> runs;    ///< low 16 bits the count, high 16 bits the palette index

    int paletteSize() const { return int(palette.size()); }

    /// Begins a picture; the palette stays. False, and an empty picture, for a size that is beyond
    /// 8192 a side or 64 MB.
    bool setSize(int w, int h);
    /// Adds the next pixel, by rows; more than the picture has are ignored. The opacity is rounded
    /// down to a multiple of 32 unless it is 255. A colour that a full palette lacks is drawn as
    /// the pixel before it.
    void addColor(int r, int g, int b, int a);

    /// Puts the picture over the top left of the bitmap. An index outside the palette is clear.
    void draw(CBitmap* target) const;

private:
    int indexOf(uint32_t color);
    void flush();

    std::unordered_map<uint32_t, int> indices; ///< of the palette's first entries
};
