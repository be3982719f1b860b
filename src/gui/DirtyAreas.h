#pragma once

#include "base/Geometry.h"

#include <array>
#include <span>

/// What of a window has to be painted anew: a short list of rectangles, of which those that lie
/// close are joined, so that two far meters do not paint all that lies between them.
class DirtyAreas {
public:
    static constexpr int most = 8;

    void add(CRect area); ///< an empty one does not count
    std::span<const CRect> all() const { return {areas.data(), size_t(count)}; }

private:
    void removeAt(int i);
    void joinNearest();

    std::array<CRect, most + 1> areas{};
    int count = 0;
};
