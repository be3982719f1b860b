#include "gui/DirtyAreas.h"

#include <cstdint>

namespace {

constexpr std::int64_t littlePixels = 4096; ///< less than a paint of its own costs

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
    areas[size_t(count++)] = area;
    if (count > most) joinNearest();
}

void DirtyAreas::removeAt(int i) {
    areas[size_t(i)] = areas[size_t(--count)];
}

void DirtyAreas::joinNearest() {
    int best = 0, other = 1;
    for (int i = 0; i < count; i++)
        for (int j = i + 1; j < count; j++)
            if (waste(areas[size_t(i)], areas[size_t(j)]) <
                waste(areas[size_t(best)], areas[size_t(other)])) {
                best = i;
                other = j;
            }
    const CRect both = unite(areas[size_t(best)], areas[size_t(other)]);
    removeAt(other);
    removeAt(best);
    add(both);
}
