#include "gui/PixelPaper.h"

#include "base/Numbers.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/Coverage.h"
#include "gui/Outlines.h"
#include "gui/Scale.h"
#include "gui/Shapes.h"

#include <algorithm>
#include <cstddef>

namespace {

/// Of each of the four channels, `share` of 256 from one pixel to the other.
uint32_t mixed(uint32_t from, uint32_t to, unsigned share) {
    constexpr uint32_t even = 0x00ff00ff;
    const auto mix = [&](uint32_t a, uint32_t b) {
        return (a * (256 - share) + b * share) >> 8 & even;
    };
    return mix(from & even, to & even) | mix(from >> 8 & even, to >> 8 & even) << 8;
}

} // namespace

PixelPaper::PixelPaper(CGraphic* g, CRect rect) : graphic(g) {
    part = toDevice(intersect(sizeRect(rect, g->originX, g->originY, g->originX, g->originY),
                              asRect(g->clipLeft, g->clipTop, g->clipRight, g->clipBottom)));
    CBitmap* shown = g->canvas;
    // Locking waits until the server has drawn what was told before.
    if (part.empty() || !shown || !shown->shared || !shown->lockPixels()) return;
    part = intersect(part, asRect(0, 0, shown->deviceWidth(), shown->deviceHeight()));
    pixels = reinterpret_cast<uint32_t*>(g->pixels);
    perRow = g->stride / int(sizeof(uint32_t));
}

uint32_t* PixelPaper::row(int y) const {
    return pixels + ptrdiff_t(y) * perRow;
}

CRect PixelPaper::deviceRect(CRect rect) const {
    return toDevice(
        sizeRect(rect, graphic->originX, graphic->originY, graphic->originX, graphic->originY));
}

void PixelPaper::fillDevice(int color, CRect device) {
    const CRect in = intersect(device, part);
    if (in.empty()) return;
    if (!pixels) {
        const DeviceScope scope(graphic);
        return graphic->fillRect(color, sizeRect(in, -graphic->originX, -graphic->originY,
                                                 -graphic->originX, -graphic->originY));
    }
    const auto value = static_cast<uint32_t>(color);
    if (in.width() == 1) { // a column of a wave
        uint32_t* at = row(in.top) + in.left;
        for (int y = in.top; y < in.bottom; y++, at += perRow) *at = value;
        return;
    }
    for (int y = in.top; y < in.bottom; y++) std::fill_n(row(y) + in.left, in.width(), value);
}

void PixelPaper::fill(int color, CRect rect) {
    fillDevice(color, deviceRect(rect));
}

void PixelPaper::frame(int color, CRect rect) {
    const CRect r = deviceRect(rect);
    const int thick = asMin(lineThickness(), asMin(r.width(), r.height()));
    const int top = r.top + thick, bottom = asMax(r.bottom - thick, top);
    fillDevice(color, asRect(r.left, r.top, r.right, top));
    fillDevice(color, asRect(r.left, bottom, r.right, r.bottom));
    fillDevice(color, asRect(r.left, top, r.left + thick, bottom));
    fillDevice(color, asRect(asMax(r.right - thick, r.left + thick), top, r.right, bottom));
}

void PixelPaper::blend(int color, double alpha, CRect rect) {
    if (!pixels) return fillAlpha(graphic, rect, color, alpha);
    const CRect in = intersect(deviceRect(rect), part);
    const auto share = unsigned(asMinMax(asRound(alpha * 256), 0, 256));
    for (int y = in.top; y < in.bottom; y++) {
        uint32_t* at = row(y) + in.left;
        for (int x = in.left; x < in.right; x++, at++)
            *at = mixed(*at, static_cast<uint32_t>(color), share);
    }
}

void PixelPaper::fill(int color, const CPath& path, double alpha) {
    if (!pixels) return fillPath(graphic, path, color, alpha);
    for (const CPath::Part& outline : path.parts) {
        const OutlinePoints points = outlineOf(*graphic, outline);
        if (points.size() < 3) continue;
        const CRect area = intersect(outlineBounds(points, 1), part);
        if (area.empty()) continue;
        Coverage coverage(area);
        coverage.addOutline(points);
        blendCovered(color, alpha, coverage, area, true);
    }
}

void PixelPaper::stroke(int color, const CPath& path, double width, double alpha) {
    if (!pixels) return strokePath(graphic, path, width, color, alpha);
    const double wide = std::max(width * scalePercent / lowestScale, 1.0);
    for (const CPath::Part& line : path.parts) {
        const OutlinePoints points = outlineOf(*graphic, line);
        if (points.size() < 2) continue;
        const CRect area = intersect(outlineBounds(points, wide), part);
        if (area.empty()) continue;
        const OutlinePoints sides = strokeSides(points, wide);
        OutlinePoints around;
        for (size_t i = 0; i < sides.size(); i += 2) around.push_back(sides[i]);
        for (size_t i = sides.size(); i > 0; i -= 2) around.push_back(sides[i - 1]);
        Coverage coverage(area);
        coverage.addOutline(around);
        blendCovered(color, alpha, coverage, area, false);
    }
}

void PixelPaper::blendCovered(int color, double alpha, Coverage& coverage, const CRect& area,
                              bool evenOdd) {
    const auto most = float(alpha * 256);
    for (int y = area.top; y < area.bottom; y++) {
        const Coverage::Row covered = coverage.row(y, evenOdd);
        uint32_t* at = row(y) + covered.left;
        for (const float share : covered.shares) {
            const auto weight = unsigned(share * most + 0.5f);
            if (weight) *at = mixed(*at, static_cast<uint32_t>(color), weight);
            at++;
        }
    }
}
