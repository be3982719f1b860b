#include "gui/Coverage.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

Coverage::Coverage(const CRect& where)
    : area(where), extents(size_t(where.height()), Extent{where.width() + 2, 0}),
      changes(size_t(where.width() + 2) * size_t(where.height())), shares(size_t(where.width())) {
}

void Coverage::addOutline(const OutlinePoints& corners) {
    for (size_t i = 0; i < corners.size(); i++)
        addEdge(corners[i], corners[(i + 1) % corners.size()]);
}

/// What lies right of the edge is inside, or, where it leads up, no longer.
void Coverage::addEdge(RenderTarget::Point from, RenderTarget::Point to) {
    if (from.y == to.y) return;
    const double sign = from.y < to.y ? 1 : -1;
    if (sign < 0) std::swap(from, to);
    const double slope = (to.x - from.x) / (to.y - from.y);
    const double top = std::max(from.y, double(area.top));
    const double bottom = std::min(to.y, double(area.bottom));
    const auto at = [&](double y) {
        return std::clamp(from.x + (y - from.y) * slope - area.left, 0.0, double(area.width()));
    };
    for (double y = top; y < bottom;) {
        const double next = std::min(std::floor(y) + 1, bottom);
        addRow(int(std::floor(y)) - area.top, at(y), at(next), sign * (next - y));
        y = next;
    }
}

/// Of one row, of which the edge crosses `part`: each pixel that it crosses changes by the share of
/// `part` that lies over it, and the pixel behind it by the rest.
void Coverage::addRow(int y, double from, double to, double part) {
    if (from > to) std::swap(from, to);
    const int first = int(from), last = int(to);
    float* cells = changes.data() + ptrdiff_t(y) * (area.width() + 2);
    Extent& extent = extents[size_t(y)];
    extent = {std::min(extent.first, first), std::max(extent.end, last + 2)};
    if (first == last) {
        const double right = 1 - ((from + to) / 2 - first);
        cells[first] += float(part * right);
        cells[first + 1] += float(part * (1 - right));
        return;
    }
    const double perPixel = part / (to - from);
    for (int x = first; x <= last; x++) {
        const double start = std::max(from, double(x)), end = std::min(to, double(x + 1));
        const double here = perPixel * (end - start), right = 1 - ((start + end) / 2 - x);
        cells[x] += float(here * right);
        cells[x + 1] += float(here * (1 - right));
    }
}

Coverage::Row Coverage::row(int y, bool evenOdd) {
    const Extent& extent = extents[size_t(y - area.top)];
    const int first = extent.first, end = std::min(extent.end, area.width());
    const float* cells = changes.data() + ptrdiff_t(y - area.top) * (area.width() + 2);
    float sum = 0;
    for (int x = first; x < end; x++) {
        sum += cells[x];
        const float whole = std::abs(sum);
        const float odd = whole - 2 * std::floor(whole / 2);
        shares[size_t(x - first)] = evenOdd ? std::min(odd, 2 - odd) : std::min(whole, 1.0f);
    }
    return {area.left + first, {shares.data(), size_t(std::max(end - first, 0))}};
}
