#pragma once

/// Pixels; right and bottom lie outside.
struct CRect {
    int left = 0, top = 0, right = 0, bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool empty() const { return right <= left || bottom <= top; }
    bool contains(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
    bool operator==(const CRect&) const = default;
};

struct CPoint {
    int x = 0, y = 0;

    bool operator==(const CPoint&) const = default;
};

inline CRect asRect(int left, int top, int right, int bottom) {
    return {left, top, right, bottom};
}
inline CPoint asPoint(int x, int y) {
    return {x, y};
}

/// Moves each side by its own offset.
inline CRect sizeRect(const CRect& r, int left, int top, int right, int bottom) {
    return {r.left + left, r.top + top, r.right + right, r.bottom + bottom};
}
inline CPoint addPos(const CPoint& a, const CPoint& b) {
    return {a.x + b.x, a.y + b.y};
}

/// What lies in both; empty when they do not meet.
CRect intersect(const CRect& a, const CRect& b);
/// The smallest rectangle around both; an empty one does not count.
CRect unite(const CRect& a, const CRect& b);
