#include "ui/Signs.h"

#include "base/Numbers.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Scale.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr size_t mostSheets = 64; ///< of sixteen colours, each lit or faint, on two grounds

double squaredDistance(SignPoint p, SignPoint a, SignPoint b) {
    const double dx = b.x - a.x, dy = b.y - a.y, length = dx * dx + dy * dy;
    const double along = length > 0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / length : 0;
    const double at = std::clamp(along, 0.0, 1.0);
    const double x = a.x + at * dx - p.x, y = a.y + at * dy - p.y;
    return x * x + y * y;
}

/// Whether a line from the point to the right crosses this edge.
bool crosses(SignPoint p, SignPoint a, SignPoint b) {
    return (a.y > p.y) != (b.y > p.y) && p.x < a.x + (p.y - a.y) / (b.y - a.y) * (b.x - a.x);
}

/// Of a point from the edge of a part, below 0 inside.
double edgeDistance(const SignPart& part, SignPoint p) {
    const std::vector<SignPoint>& points = part.points;
    const bool filled = part.radius <= 0;
    double nearest = squaredDistance(p, points.back(), filled ? points.front() : points.back());
    bool inside = filled && crosses(p, points.back(), points.front());
    for (size_t i = 1; i < points.size(); i++) {
        nearest = std::min(nearest, squaredDistance(p, points[i - 1], points[i]));
        inside = inside != (filled && crosses(p, points[i - 1], points[i]));
    }
    const double distance = std::sqrt(nearest);
    return (inside ? -distance : distance) - part.radius;
}

/// The sign in device pixels, those of its polygons whole.
Sign scaled(const Sign& sign, double scale) {
    Sign made = sign;
    for (SignPart& part : made) {
        const bool filled = part.radius <= 0;
        part.radius *= scale;
        for (SignPoint& p : part.points) {
            p = {p.x * scale, p.y * scale};
            if (filled) p = {std::round(p.x), std::round(p.y)};
        }
    }
    return made;
}

/// How much of a pixel the sign covers, 0 to 1, as if an edge crossed it straight.
double coverage(const Sign& sign, int x, int y) {
    double nearest = 1;
    for (const SignPart& part : sign)
        nearest = std::min(nearest, edgeDistance(part, {x + 0.5, y + 0.5}));
    return std::clamp(0.5 - nearest, 0.0, 1.0);
}

/// Draws in device pixels, in runs of one colour.
void drawSign(CGraphic* g, const Sign& sign, const CRect& box, int color, int ground) {
    for (int y = 0; y < box.height(); y++) {
        int start = 0, colour = ground;
        for (int x = 0; x <= box.width(); x++) {
            const int next =
                x < box.width() ? fadeCol(ground, color, coverage(sign, x, y)) : ground;
            if (next == colour) continue;
            const int row = box.top + y;
            if (colour != ground)
                g->fillRect(colour, asRect(box.left + start, row, box.left + x, row + 1));
            start = x;
            colour = next;
        }
    }
}

} // namespace

SignSet::SignSet(const std::vector<Sign>& drawn, int w, int h) : signs(drawn), width(w), height(h) {
}

SignSet::~SignSet() = default;

const SignSet::Sheet& SignSet::sheetOf(int color, int ground) {
    for (const Sheet& sheet : sheets)
        if (sheet.color == color && sheet.ground == ground) return sheet;
    if (sheets.size() >= mostSheets) sheets.clear();
    auto picture = std::make_unique<CBitmap>(width * int(signs.size()), height);
    CGraphic* g = picture->graphic.get();
    g->fillRect(ground, picture->getRect());
    const double scale = double(scalePercent) / lowestScale;
    const DeviceScope device(g);
    for (size_t i = 0; i < signs.size(); i++) {
        const int left = width * int(i);
        const CRect box = device.deviceRect(asRect(left, 0, left + width, height));
        drawSign(g, scaled(signs[i], scale), box, color, ground);
    }
    sheets.push_back({color, ground, std::move(picture)});
    return sheets.back();
}

void SignSet::draw(CGraphic* g, int index, CPoint at, int color, int ground) {
    const Sheet& sheet = sheetOf(color, ground);
    g->render(sheet.picture.get(), at.x, at.y, width * index, 0, width, height);
}
