#include "gui/PixelPaper.h"

#include "base/Numbers.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/Scale.h"
#include "gui/Shapes.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <cstddef>
#include <memory>

namespace {

/// The memory of all papers: it grows to the largest.
std::unique_ptr<CBitmap> sheet;

/// Ready to be written; null where there is no memory that the server shares.
CBitmap* sheetFor(const CRect& part) {
    const int wide = toLogicalSize(part.width()), high = toLogicalSize(part.height());
    if (!sheet || sheet->width < wide || sheet->height < high) {
        const int w = asMax(wide, sheet ? sheet->width : 1);
        const int h = asMax(high, sheet ? sheet->height : 1);
        sheet.reset(); // before the new one is made: only one has to fit
        sheet = std::make_unique<CBitmap>(w, h);
    }
    const bool fits =
        sheet->deviceWidth() >= part.width() && sheet->deviceHeight() >= part.height();
    // Locking waits until the server has read what was drawn before.
    return fits && sheet->shared && sheet->lockPixels() ? sheet.get() : nullptr;
}

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
    if (part.empty() || !liveDisplay() || !g->gc) return;
    const CBitmap* shared = sheetFor(part);
    if (!shared) return;
    pixels = reinterpret_cast<uint32_t*>(shared->graphic->pixels);
    perRow = shared->graphic->stride / int(sizeof(uint32_t));
}

PixelPaper::~PixelPaper() {
    if (pixels && liveDisplay())
        XCopyArea(liveDisplay(), sheet->pixmap, graphic->drawable, graphic->gc, 0, 0,
                  unsigned(part.width()), unsigned(part.height()), part.left, part.top);
}

uint32_t* PixelPaper::row(int y) const {
    return pixels + ptrdiff_t(y - part.top) * perRow;
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
    for (int y = in.top; y < in.bottom; y++)
        std::fill_n(row(y) + (in.left - part.left), in.width(), static_cast<uint32_t>(color));
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
        uint32_t* at = row(y) + (in.left - part.left);
        for (int x = in.left; x < in.right; x++, at++)
            *at = mixed(*at, static_cast<uint32_t>(color), share);
    }
}

void releasePaper() {
    sheet.reset();
}
