#include "gui/Shapes.h"

#include "base/Numbers.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/Outlines.h"
#include "gui/RenderTarget.h"
#include "gui/Scale.h"
#include "gui/ServerCut.h"
#include "gui/ServerRects.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>

namespace {

using Point = CPath::Point;
using Points = OutlinePoints;

constexpr int fewestPieces = 4, mostPieces = 96; // of a curve
constexpr double halfClear = 0.75;               // below it the plain form leaves out pixels

double deviceScale() {
    return double(scalePercent) / lowestScale;
}

double distance(const Point& a, const Point& b) {
    return std::hypot(b.x - a.x, b.y - a.y);
}

/// So many that the pieces of a curve cannot be told from it.
int piecesFor(double length) {
    return asMinMax(int(std::sqrt(length * deviceScale())) + fewestPieces, fewestPieces,
                    mostPieces);
}

CRect clipOf(const CGraphic& g) {
    return toDevice(asRect(g.clipLeft, g.clipTop, g.clipRight, g.clipBottom));
}

/// Opaque strips go in short pieces, each with a mask of its own that is as large as its bounds.
void drawStrip(RenderTarget& target, const Points& sides, bool opaque) {
    constexpr size_t piece = 16, overlap = 4;
    if (!opaque) return target.fillStrip(sides);
    const std::span<const RenderTarget::Point> all(sides);
    for (size_t from = 0; from + overlap <= all.size(); from += piece - overlap) {
        target.fillStrip(all.subspan(from, std::min(piece, all.size() - from)));
        if (from + piece >= all.size()) break;
    }
}

/// The surface's own context for a shape, until the end of the scope.
class PlainInk {
public:
    PlainInk(CGraphic* g, int color, double alpha, int lineWidth) : gc(g->gc) {
        constexpr char everySecond[] = {1, 2};
        Display* display = liveDisplay();
        XSetForeground(display, gc, static_cast<unsigned>(color));
        XSetLineAttributes(display, gc, unsigned(lineWidth), LineSolid, CapButt, JoinMiter);
        if (alpha >= halfClear) return;
        grid = XCreateBitmapFromData(display, g->drawable, everySecond, 2, 2);
        XSetStipple(display, gc, grid);
        XSetFillStyle(display, gc, FillStippled);
    }
    ~PlainInk() {
        Display* display = liveDisplay();
        if (!display) return;
        const int own = lineThickness() > 1 ? lineThickness() : 0;
        XSetLineAttributes(display, gc, unsigned(own), LineSolid, CapProjecting, JoinMiter);
        if (!grid) return;
        XSetFillStyle(display, gc, FillSolid);
        XFreePixmap(display, grid);
    }
    PlainInk(const PlainInk&) = delete;
    PlainInk& operator=(const PlainInk&) = delete;

private:
    GC gc;
    Pixmap grid = None;
};

std::vector<XPoint> plainPoints(const Points& points) {
    std::vector<XPoint> made;
    for (const auto& p : points) {
        const auto edge = [](double at) {
            return short(asMinMax(asRound(at - 0.5), -farthest, farthest));
        };
        made.push_back({edge(p.x), edge(p.y)});
    }
    return made;
}

/// Each pixel is the one that lies nearest: first the columns are copied to their places, then the
/// rows of that.
void drawNearest(const CGraphic& g, const CBitmap& bitmap, const CRect& from, const CRect& to,
                 const CRect& area) {
    Display* display = liveDisplay();
    const auto nearest = [](int at, int length, int others) {
        return int((int64_t(at) * 2 + 1) * others / (2 * int64_t(length)));
    };
    const Pixmap wide = XCreatePixmap(display, g.drawable, unsigned(area.width()),
                                      unsigned(from.height()), unsigned(xlibColorDepth));
    GC gc = XCreateGC(display, wide, 0, nullptr);
    XSetGraphicsExposures(display, gc, False);
    for (int x = area.left; x < area.right; x++)
        XCopyArea(display, bitmap.pixmap, wide, gc,
                  from.left + nearest(x - to.left, to.width(), from.width()), from.top, 1,
                  unsigned(from.height()), x - area.left, 0);
    for (int y = area.top; y < area.bottom; y++)
        XCopyArea(display, wide, g.drawable, g.gc, 0,
                  nearest(y - to.top, to.height(), from.height()), unsigned(area.width()), 1,
                  area.left, y);
    XFreeGC(display, gc);
    XFreePixmap(display, wide);
}

} // namespace

void CPath::moveTo(double x, double y) {
    parts.push_back({{{x, y}}, false});
}

void CPath::lineTo(double x, double y) {
    if (parts.empty() || parts.back().closed) return moveTo(x, y);
    parts.back().points.push_back({x, y});
}

void CPath::curveTo(double x1, double y1, double x2, double y2, double x, double y) {
    if (parts.empty() || parts.back().closed) moveTo(x1, y1);
    const Point a = parts.back().points.back(), b{x1, y1}, c{x2, y2}, d{x, y};
    const int pieces = piecesFor(distance(a, b) + distance(b, c) + distance(c, d));
    for (int i = 1; i <= pieces; i++) {
        const double t = double(i) / pieces, s = 1 - t;
        const double wa = s * s * s, wb = 3 * s * s * t, wc = 3 * s * t * t, wd = t * t * t;
        lineTo(wa * a.x + wb * b.x + wc * c.x + wd * d.x,
               wa * a.y + wb * b.y + wc * c.y + wd * d.y);
    }
}

void CPath::arc(double x, double y, double radius, double from, double to) {
    constexpr double whole = 2.0 * std::numbers::pi;
    const double way = std::clamp(to - from, -whole, whole);
    const int pieces = 2 * piecesFor(std::abs(way) * radius);
    for (int i = 0; i <= pieces; i++) {
        const double angle = from + way * i / pieces;
        lineTo(x + radius * std::cos(angle), y + radius * std::sin(angle));
    }
}

void CPath::close() {
    if (!parts.empty()) parts.back().closed = true;
}

void fillPath(CGraphic* g, const CPath& path, int color, double alpha) {
    RenderTarget* target = g->blender();
    for (const CPath::Part& part : path.parts) {
        const Points points = outlineOf(*g, part);
        if (points.size() < 3) continue;
        const CRect around = outlineBounds(points, 1);
        if (intersect(around, clipOf(*g)).empty() || !g->gc) continue;
        if (target) {
            target->setColor(color, alpha);
            target->fillPolygon(points);
            continue;
        }
        const ServerCut cut(g, around);
        const PlainInk ink(g, color, alpha, 0);
        std::vector<XPoint> corners = plainPoints(points);
        if (cut.leavesAny)
            XFillPolygon(liveDisplay(), g->drawable, g->gc, corners.data(), int(corners.size()),
                         Complex, CoordModeOrigin);
    }
}

void strokePath(CGraphic* g, const CPath& path, double width, int color, double alpha) {
    RenderTarget* target = g->blender();
    const double wide = std::max(width * deviceScale(), 1.0);
    for (const CPath::Part& part : path.parts) {
        const Points points = outlineOf(*g, part);
        if (points.size() < 2) continue;
        const CRect around = outlineBounds(points, wide);
        if (intersect(around, clipOf(*g)).empty() || !g->gc) continue;
        if (target) {
            target->setColor(color, alpha);
            drawStrip(*target, strokeSides(points, wide), alpha >= 1);
            continue;
        }
        const ServerCut cut(g, around);
        const PlainInk ink(g, color, alpha, asRound(wide));
        std::vector<XPoint> corners = plainPoints(points);
        if (cut.leavesAny)
            XDrawLines(liveDisplay(), g->drawable, g->gc, corners.data(), int(corners.size()),
                       CoordModeOrigin);
    }
}

void fillAlpha(CGraphic* g, CRect rect, int color, double alpha) {
    const CRect area = intersect(
        toDevice(sizeRect(rect, g->originX, g->originY, g->originX, g->originY)), clipOf(*g));
    RenderTarget* target = g->blender();
    if (area.empty() || !g->gc || !liveDisplay()) return;
    if (target) {
        target->setColor(color, alpha);
        return target->fill(area);
    }
    const PlainInk ink(g, color, alpha, 0);
    const XRectangle box = serverRect(area);
    XFillRectangle(liveDisplay(), g->drawable, g->gc, box.x, box.y, box.width, box.height);
}

void drawScaled(CGraphic* g, const CBitmap& bitmap, CRect from, CRect to) {
    const CRect source = toDevice(from);
    const CRect place = toDevice(sizeRect(to, g->originX, g->originY, g->originX, g->originY));
    const CRect area = intersect(place, clipOf(*g));
    if (area.empty() || source.empty() || !g->gc || !liveDisplay()) return;
    if (RenderTarget* target = g->blender()) return target->drawScaled(bitmap, source, place);
    drawNearest(*g, bitmap, source, place, area);
}
