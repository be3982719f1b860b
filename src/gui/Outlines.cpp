#include "gui/Outlines.h"

#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/Scale.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double sharpest = 0.5; // of a joint: cosine of half its turn

/// Both sides of a line as one strip of triangles.
class Strip {
public:
    Strip(const OutlinePoints& line, double width) : points(line), half(width / 2) {
        closed = points.size() > 2 && points.front().x == points.back().x &&
                 points.front().y == points.back().y;
        for (size_t i = 0; i < points.size(); i++) addJoint(i);
    }
    OutlinePoints sides; ///< left and right of each joint, by turns

private:
    struct Way {
        double x, y; ///< of length 1
    };
    Way way(size_t from, size_t to) const {
        const double dx = points[to].x - points[from].x, dy = points[to].y - points[from].y;
        const double length = std::hypot(dx, dy);
        return {dx / length, dy / length};
    }
    void addSides(size_t i, double x, double y) {
        sides.push_back({points[i].x + x, points[i].y + y});
        sides.push_back({points[i].x - x, points[i].y - y});
    }
    void addJoint(size_t i) {
        const size_t last = points.size() - 1;
        const Way in = i > 0 ? way(i - 1, i) : closed ? way(last - 1, last) : way(0, 1);
        const Way out = i < last ? way(i, i + 1) : closed ? way(0, 1) : in;
        const double x = -(in.y + out.y) / 2, y = (in.x + out.x) / 2;
        const double cosine = std::hypot(x, y);
        if (cosine > sharpest)
            return addSides(i, x * half / cosine / cosine, y * half / cosine / cosine);
        addSides(i, -in.y * half, in.x * half);
        addSides(i, -out.y * half, out.x * half);
    }

    const OutlinePoints& points;
    double half;
    bool closed;
};

} // namespace

OutlinePoints outlineOf(const CGraphic& g, const CPath::Part& part) {
    const double scale = double(scalePercent) / lowestScale, left = toDevice(g.originX),
                 top = toDevice(g.originY);
    OutlinePoints made;
    for (const CPath::Point& p : part.points) {
        const RenderTarget::Point at{left + p.x * scale, top + p.y * scale};
        if (made.empty() || made.back().x != at.x || made.back().y != at.y) made.push_back(at);
    }
    if (part.closed && made.size() > 1) made.push_back(made.front());
    return made;
}

CRect outlineBounds(const OutlinePoints& points, double reach) {
    double left = points[0].x, top = points[0].y, right = left, bottom = top;
    for (const auto& p : points) {
        left = std::min(left, p.x);
        right = std::max(right, p.x);
        top = std::min(top, p.y);
        bottom = std::max(bottom, p.y);
    }
    return asRect(
        saturate(int64_t(std::floor(left - reach))), saturate(int64_t(std::floor(top - reach))),
        saturate(int64_t(std::ceil(right + reach))), saturate(int64_t(std::ceil(bottom + reach))));
}

OutlinePoints strokeSides(const OutlinePoints& line, double width) {
    return Strip(line, width).sides;
}
