#pragma once

#include "base/Geometry.h"

#include <array>
#include <span>

/// What of a window has to be painted anew: a short list of rectangles, of which those that lie
/// close are joined, so that two far meters do not paint all that lies between them.
class DirtyAreas {
public:
    static constexpr int most = 128;

    void add(CRect area); ///< an empty one does not count
    void clear() { count = 0; }
    bool empty() const { return count == 0; }
    std::span<const CRect> all() const { return {areas.data(), size_t(count)}; }

private:
    void removeAt(int i);
    void joinNearest(CRect area);

    std::array<CRect, most> areas{};
    int count = 0;
};
