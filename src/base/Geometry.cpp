#include "base/Geometry.h"

#include <algorithm>

CRect intersect(const CRect& a, const CRect& b) {
    const CRect common = {std::max(a.left, b.left), std::max(a.top, b.top),
                          std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
    return common.empty() ? CRect() : common;
}

CRect unite(const CRect& a, const CRect& b) {
    if (a.empty()) return b;
    if (b.empty()) return a;
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}
