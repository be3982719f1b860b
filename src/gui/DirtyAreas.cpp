#include "gui/DirtyAreas.h"

#include <cstdint>

namespace {

constexpr std::int64_t littlePixels = 1024; ///< less than a paint of its own costs

std::int64_t pixels(const CRect& r) {
    return r.empty() ? 0 : std::int64_t(r.width()) * r.height();
}

/// What one rectangle around both would paint for nothing.
std::int64_t waste(const CRect& a, const CRect& b) {
    return pixels(unite(a, b)) - pixels(a) - pixels(b);
}

} // namespace

void DirtyAreas::add(CRect area) {
    if (area.empty()) return;
    for (int i = 0; i < count;) {
        if (waste(areas[size_t(i)], area) > littlePixels) {
            i++;
            continue;
        }
        area = unite(areas[size_t(i)], area);
        removeAt(i);
        i = 0; // it may meet others now
    }
    if (count == most) return joinNearest(area);
    areas[size_t(count++)] = area;
}

void DirtyAreas::removeAt(int i) {
    areas[size_t(i)] = areas[size_t(--count)];
}

void DirtyAreas::joinNearest(CRect area) {
    int best = 0;
    for (int i = 1; i < count; i++)
        if (waste(areas[size_t(i)], area) < waste(areas[size_t(best)], area)) best = i;
    const CRect both = unite(areas[size_t(best)], area);
    removeAt(best);
    add(both);
}
