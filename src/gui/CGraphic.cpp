#include "gui/CGraphic.h"

#include "base/Numbers.h"
#include "gui/CBitmap.h"
#include "gui/Fonts.h"
#include "gui/RenderTarget.h"
#include "gui/Scale.h"
#include "gui/ServerCut.h"
#include "gui/ServerRects.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

CRect sorted(CRect r) {
    sort(r.left, r.right);
    sort(r.top, r.bottom);
    return r;
}

/// The last point of a line that leaves out its end.
CPoint lastPoint(CPoint from, CPoint to) {
    const auto pulledIn = [](int start, int end) {
        if (end > start) return end - 1;
        return end < start ? end + 1 : end;
    };
    return asPoint(pulledIn(from.x, to.x), pulledIn(from.y, to.y));
}

/// Cuts or widens one side of a line to the thickness that all lines have, inside [lo, hi).
void makeThick(int& from, int& to, int lo, int hi) {
    from = asMax(lo, asMin(from, hi - lineThickness()));
    to = asMin(hi, from + lineThickness());
}

/// Cuts the line from `a` to `b` where it leaves the coordinates that the protocol can tell. False
/// when nothing is left.
bool cutToProtocol(CPoint& a, CPoint& b) {
    constexpr double most = farthest / 2;
    const double x = a.x, y = a.y, dx = double(b.x) - x, dy = double(b.y) - y;
    double first = 0, last = 1;
    const auto cut = [&](double start, double step) { // to -most <= start + t step <= most
        if (step == 0) return std::abs(start) <= most;
        const double one = (-most - start) / step, other = (most - start) / step;
        first = std::max(first, std::min(one, other));
        last = std::min(last, std::max(one, other));
        return first <= last;
    };
    if (!cut(x, dx) || !cut(y, dy)) return false;
    a = asPoint(asRound(x + first * dx), asRound(y + first * dy));
    b = asPoint(asRound(x + last * dx), asRound(y + last * dy));
    return true;
}

} // namespace

CGraphic::CGraphic(unsigned long target) : drawable(target), font(xConnection().font.get()) {
    Display* display = liveDisplay();
    if (!display) return;
    XGCValues values{};
    values.function = GXcopy;
    values.foreground = ~0UL;
    values.graphics_exposures = False; // else each copy would answer with an event
    values.line_width = lineThickness() > 1 ? lineThickness() : 0;
    values.cap_style = CapProjecting;
    gc = XCreateGC(display, drawable,
                   GCFunction | GCForeground | GCGraphicsExposures | GCLineWidth | GCCapStyle,
                   &values);
}

CGraphic::~CGraphic() {
    pens.clear();
    blends.reset();
    if (!gc) return;
    if (Display* display = liveDisplay())
        XFreeGC(display, gc);
    else
        XFree(gc); // the server has forgotten its part
}

ServerCut::ServerCut(CGraphic* g, const CRect& drawn) : graphic(g) {
    const CRect limits = toDevice(g->clip()), in = intersect(drawn, limits);
    const CRect own = asRect(g->hwLeft, g->hwTop, g->hwRight, g->hwBottom);
    const CRect both = own == CRect() ? limits : intersect(limits, toDevice(own));
    leavesAny = !in.empty() && !both.empty();
    cuts = leavesAny && in != drawn;
    if (cuts) setServerClip(liveDisplay(), g->gc, both);
}

ServerCut::~ServerCut() {
    if (cuts) graphic->clipServer();
}

bool CGraphic::ready(int color) {
    Display* display = liveDisplay();
    if (!display || !gc) return false;
    XSetForeground(display, gc, static_cast<unsigned>(color));
    return true;
}

CRect CGraphic::clip() const {
    return asRect(clipLeft, clipTop, clipRight, clipBottom);
}

/// Of device pixels, in the colour that is set.
void CGraphic::fillDevice(const CRect& area) {
    const XRectangle box = serverRect(area);
    XFillRectangle(liveDisplay(), drawable, gc, box.x, box.y, box.width, box.height);
}

void CGraphic::fillRect(int color, CRect rect) {
    const CRect r = sizeRect(sorted(rect), originX, originY, originX, originY);
    const CRect in = intersect(r, clip());
    if (!in.empty() && ready(color)) fillDevice(toDevice(in));
}

void CGraphic::fillRect(CRect rect) {
    fillRect(fillCol, rect);
}

void CGraphic::fillLine(int color, CRect rect) {
    const CRect r = sizeRect(sorted(rect), originX, originY, originX, originY);
    const CRect in = intersect(r, clip());
    if (in.empty() || !ready(color)) return;
    CRect line = toDevice(in);
    const CRect limits = toDevice(clip());
    if (r.height() == 1)
        makeThick(line.top, line.bottom, limits.top, limits.bottom);
    else if (r.width() == 1)
        makeThick(line.left, line.right, limits.left, limits.right);
    fillDevice(line);
}

/// Fills what of each part, in device pixels, lies in the clip.
void CGraphic::fillDeviceParts(int color, const CRect* parts, int count) {
    const CRect limits = toDevice(clip());
    if (limits.empty() || !ready(color)) return;
    for (int i = 0; i < count; i++) {
        const CRect in = intersect(parts[i], limits);
        if (!in.empty()) fillDevice(in);
    }
}

/// The corners are left out in a square of that many device pixels.
void CGraphic::drawFrame(int color, CRect rect, int corner) {
    const CRect r = sizeRect(sorted(rect), originX, originY, originX, originY);
    if (r.empty() || intersect(r, clip()).empty()) return;
    const CRect outer = toDevice(r);
    const int thick = asMin(lineThickness(), asMin(outer.width(), outer.height()));
    const CRect inner = sizeRect(outer, thick, thick, -thick, -thick);
    const int middle = asMax(inner.bottom, inner.top); // of a frame that is nothing but edges
    const CRect edges[] = {asRect(outer.left + corner, outer.top, outer.right - corner, inner.top),
                           asRect(outer.left + corner, middle, outer.right - corner, outer.bottom),
                           asRect(outer.left, inner.top, inner.left, middle),
                           asRect(asMax(inner.right, inner.left), inner.top, outer.right, middle)};
    fillDeviceParts(color, edges, 4);
}

void CGraphic::frameRect(int color, CRect rect) {
    drawFrame(color, rect, 0);
}

void CGraphic::frameRound(int color, CRect rect) {
    drawFrame(color, rect, lineThickness());
}

void CGraphic::fillRound(int color, CRect rect) {
    const CRect r = toDevice(sizeRect(sorted(rect), originX, originY, originX, originY));
    const int cut = lineThickness();
    const CRect parts[] = {asRect(r.left + cut, r.top, r.right - cut, r.top + cut),
                           asRect(r.left, r.top + cut, r.right, r.bottom - cut),
                           asRect(r.left + cut, r.bottom - cut, r.right - cut, r.bottom)};
    fillDeviceParts(color, parts, 3);
}

void CGraphic::frameRect(CRect rect) {
    frameRect(lineCol, rect);
}

void CGraphic::drawLine(int x1, int y1, int x2, int y2) {
    if (!ready(lineCol)) return;
    const CPoint from = asPoint(x1 + originX, y1 + originY);
    const CPoint to = lastPoint(from, asPoint(x2 + originX, y2 + originY));
    if (from.x != to.x && from.y != to.y) {
        drawSlanted(from, to);
        return;
    }
    CRect line = toDevice(asRect(asMin(from.x, to.x), asMin(from.y, to.y), asMax(from.x, to.x) + 1,
                                 asMax(from.y, to.y) + 1));
    if (from.y == to.y) line.bottom = line.top + lineThickness();
    if (from.x == to.x) line.right = line.left + lineThickness();
    const CRect in = intersect(line, toDevice(clip()));
    if (!in.empty()) fillDevice(in);
}

void CGraphic::drawSlanted(CPoint from, CPoint to) {
    const int middle = lineThickness() / 2;
    CPoint a = addPos(toDevice(from), asPoint(middle, middle));
    CPoint b = addPos(toDevice(to), asPoint(middle, middle));
    if (!cutToProtocol(a, b)) return;
    const int reach = lineThickness() + 1;
    const CRect around = asRect(asMin(a.x, b.x) - reach, asMin(a.y, b.y) - reach,
                                asMax(a.x, b.x) + reach, asMax(a.y, b.y) + reach);
    const ServerCut cut(this, around);
    if (cut.leavesAny) XDrawLine(liveDisplay(), drawable, gc, a.x, a.y, b.x, b.y);
}

void CGraphic::drawPoly(const CPoint* points, int n) {
    constexpr int most = 16;
    if (n < 1 || n > most || !ready(fillCol)) return;
    XPoint corners[most];
    CRect around;
    for (int i = 0; i < n; i++) {
        const int x = asMinMax(toDevice(points[i].x + originX), -farthest, farthest);
        const int y = asMinMax(toDevice(points[i].y + originY), -farthest, farthest);
        corners[i].x = short(x);
        corners[i].y = short(y);
        around = unite(around, asRect(x, y, x + 1, y + 1));
    }
    const ServerCut cut(this, around);
    if (cut.leavesAny)
        XFillPolygon(liveDisplay(), drawable, gc, corners, n, Convex, CoordModeOrigin);
}

CPoint CGraphic::textStart(int wide, const CRect& box, int where) const {
    // A text that is turned stands in a box that is turned with it.
    const CRect flat = font->turned ? asRect(-box.bottom, box.left, -box.top, box.right) : box;
    CPoint start = asPoint(flat.left, font->centredBase(flat.top, flat.bottom));
    if (where & textTop)
        start.y = flat.top + font->deviceAscent;
    else if (where & textBottom)
        start.y = flat.bottom - font->deviceDescent;
    const int room = flat.width() - wide;
    if (!(where & textLeft)) start.x += where & textRight ? room : room / 2;
    return font->turned ? asPoint(start.y, -start.x) : start;
}

TextPen* CGraphic::textPen() {
    for (FacePen& known : pens)
        if (known.face == font) return known.pen.get();
    pens.push_back({font, font->makePen(drawable)});
    return pens.back().pen.get();
}

RenderTarget* CGraphic::blender() {
    if (!liveDisplay() || !gc) return nullptr;
    if (!blendsAsked) blends = openRenderTarget(drawable);
    blendsAsked = true;
    const CRect own = asRect(hwLeft, hwTop, hwRight, hwBottom);
    if (blends) blends->setClip(toDevice(own == CRect() ? clip() : intersect(clip(), own)));
    return blends.get();
}

void CGraphic::drawText(int color, const CStr& text, CRect rect, int where, int) {
    const std::string_view chars = text.asChar();
    if (chars.empty() || !ready(color)) return;
    const CRect logical = sizeRect(rect, originX, originY, originX, originY);
    const CRect in = toDevice(intersect(logical, clip()));
    const bool cut = !(where & textUnclipped);
    if (cut && in.empty()) return;
    TextPen* pen = textPen();
    if (!pen) return;
    const int wide = font->deviceWidth(chars);
    const CPoint at = textStart(wide, toDevice(logical), where);
    const CRect taken =
        font->turned
            ? asRect(at.x - font->deviceAscent, at.y - wide, at.x + font->deviceDescent, at.y)
            : asRect(at.x, at.y - font->deviceAscent, at.x + wide, at.y + font->deviceDescent);
    const bool fits = !cut || intersect(taken, in) == taken;
    pen->draw(color, at.x, at.y, chars,
              fits ? toDevice(asRect(hwLeft, hwTop, hwRight, hwBottom)) : in);
}

void CGraphic::drawText(const CStr& text, CRect rect, int where, int unused) {
    drawText(lineCol, text, rect, where, unused);
}

int CGraphic::textWidth(const CStr& text) const {
    return font->textWidth(text);
}

void CGraphic::setRaster(int mode) {
    Display* display = liveDisplay();
    if (!display || !gc) return;
    if (mode == 0)
        mode = GXcopy;
    else if (mode == 1)
        mode = GXxor;
    XSetFunction(display, gc, mode);
}

CRect CGraphic::setClip(CRect rect) {
    const CRect former = asRect(hwLeft, hwTop, hwRight, hwBottom);
    hwLeft = rect.left;
    hwTop = rect.top;
    hwRight = rect.right;
    hwBottom = rect.bottom;
    clipServer();
    return former;
}

/// By `setClip`, else by the areas that are to be painted.
void CGraphic::clipServer() {
    Display* display = liveDisplay();
    if (!display || !gc) return;
    const CRect own = asRect(hwLeft, hwTop, hwRight, hwBottom);
    if (own != CRect() || areas.empty()) return setServerClip(display, gc, toDevice(own));
    std::vector<XRectangle> boxes;
    for (const CRect& area : areas) boxes.push_back(serverRect(area));
    XSetClipRectangles(display, gc, 0, 0, boxes.data(), int(boxes.size()), Unsorted);
}

CRect CGraphic::asked() const {
    return sizeRect(clip(), -originX, -originY, -originX, -originY);
}

bool CGraphic::wants(CRect rect) const {
    const CRect r = sizeRect(rect, originX, originY, originX, originY);
    const CRect in = toDevice(intersect(r, clip()));
    if (in.empty() || areas.empty()) return !in.empty();
    return std::ranges::any_of(areas, [&](const CRect& a) { return !intersect(a, in).empty(); });
}

void CGraphic::setAreas(std::span<const CRect> changed) {
    const bool had = !areas.empty();
    areas.clear();
    if (changed.size() > 1)
        for (const CRect& area : changed) areas.push_back(toDevice(area));
    if (had || !areas.empty()) clipServer();
}

CRect CGraphic::addClip(CRect rect) {
    const CRect former = clip();
    clipLeft = asMax(0, asMax(clipLeft, rect.left));
    clipTop = asMax(0, asMax(clipTop, rect.top));
    clipRight = asMin(clipRight, rect.right);
    clipBottom = asMin(clipBottom, rect.bottom);
    return former;
}

CRect CGraphic::intersectClip(CRect rect) const {
    return intersect(rect, sizeRect(clip(), -originX, -originY, -originX, -originY));
}

void CGraphic::restoreClip(CRect former) {
    clipLeft = former.left;
    clipTop = former.top;
    clipRight = former.right;
    clipBottom = former.bottom;
}

int CGraphic::getPixel(int x, int y) const {
    return getDevicePixel(toDevice(x + originX), toDevice(y + originY));
}

void CGraphic::setPixel(int x, int y, int color) {
    const int right = toDevice(x + 1), bottom = toDevice(y + 1);
    for (int row = toDevice(y); row < bottom; row++)
        for (int column = toDevice(x); column < right; column++) setDevicePixel(column, row, color);
}

int CGraphic::getDevicePixel(int x, int y) const {
    if (depth != 32 || !pixels) return 0;
    uint32_t pixel;
    std::memcpy(&pixel, pixels + ptrdiff_t(y) * stride + ptrdiff_t(x) * 4, 4);
    const XConnection& server = xConnection();
    return int(pixel & (server.redMask | server.greenMask | server.blueMask));
}

void CGraphic::setDevicePixel(int x, int y, int color) {
    if (depth != 32 || !pixels) return;
    const auto pixel = static_cast<uint32_t>(color);
    std::memcpy(pixels + ptrdiff_t(y) * stride + ptrdiff_t(x) * 4, &pixel, 4);
}

void CGraphic::render(const CBitmap* bitmap, int x, int y, int srcX, int srcY, int w, int h) {
    Display* display = liveDisplay();
    if (!display || !gc || w <= 0 || h <= 0) return;
    const CRect from = toDevice(asRect(srcX, srcY, srcX + w, srcY + h));
    const CRect to = toDevice(asRect(x + originX, y + originY, x + originX + w, y + originY + h));
    const int wide = asMin(from.width(), to.width()), high = asMin(from.height(), to.height());
    const CRect limits = toDevice(clip());
    // In another place the same length may have a device pixel more: the last one is repeated.
    for (int dy = to.height() - high; dy >= 0; dy--)
        for (int dx = to.width() - wide; dx >= 0; dx--) {
            const CPoint at = asPoint(to.left + dx, to.top + dy);
            const CRect in = intersect(asRect(at.x, at.y, at.x + wide, at.y + high), limits);
            if (!in.empty())
                XCopyArea(display, bitmap->pixmap, drawable, gc, from.left + in.left - at.x,
                          from.top + in.top - at.y, unsigned(in.width()), unsigned(in.height()),
                          in.left, in.top);
        }
}

void CGraphic::drawTiled(const CBitmap* bitmap, CRect rect) {
    Display* display = liveDisplay();
    const CRect area = toDevice(sizeRect(rect, originX, originY, originX, originY));
    const CRect in = intersect(area, toDevice(clip()));
    if (!display || !gc || !bitmap->pixmap || in.empty()) return;
    XSetTile(display, gc, bitmap->pixmap);
    XSetTSOrigin(display, gc, area.left, area.top);
    XSetFillStyle(display, gc, FillTiled);
    fillDevice(in);
    XSetFillStyle(display, gc, FillSolid);
}

void CGraphic::moveContent(CRect area, int dx, int dy) {
    Display* display = liveDisplay();
    if (!display || !gc) return;
    const CRect all = toDevice(area);
    const CPoint by = toDevice(asPoint(dx, dy));
    const CRect to = intersect(all, sizeRect(all, by.x, by.y, by.x, by.y));
    if (to.empty()) return;
    XSetGraphicsExposures(display, gc, True);
    XCopyArea(display, drawable, drawable, gc, to.left - by.x, to.top - by.y, unsigned(to.width()),
              unsigned(to.height()), to.left, to.top);
    XSetGraphicsExposures(display, gc, False);
}

ClipScope::ClipScope(CGraphic* g, CRect rect)
    : graphic(g), originX(g->originX), originY(g->originY) {
    clip = g->addClip(sizeRect(rect, originX, originY, originX, originY));
    g->originX += rect.left;
    g->originY += rect.top;
}

ClipScope::~ClipScope() {
    graphic->originX = originX;
    graphic->originY = originY;
    graphic->restoreClip(clip);
}

TextScope::TextScope(CGraphic* g, const TextLook& look) : graphic(g), former(g->font) {
    g->font = textFace(look);
}

DeviceScope::DeviceScope(CGraphic* g)
    : graphic(g), percent(scalePercent), origin(asPoint(g->originX, g->originY)),
      clip(asRect(g->clipLeft, g->clipTop, g->clipRight, g->clipBottom)) {
    g->restoreClip(toDevice(clip));
    g->originX = toDevice(origin.x);
    g->originY = toDevice(origin.y);
    scalePercent = lowestScale;
}

DeviceScope::~DeviceScope() {
    scalePercent = percent;
    graphic->originX = origin.x;
    graphic->originY = origin.y;
    graphic->restoreClip(clip);
}

CRect DeviceScope::deviceRect(CRect rect) const {
    const auto edge = [&](int start, int length) { return toDevice(start + length, percent); };
    const int left = edge(origin.x, 0), top = edge(origin.y, 0);
    return asRect(edge(origin.x, rect.left) - left, edge(origin.y, rect.top) - top,
                  edge(origin.x, rect.right) - left, edge(origin.y, rect.bottom) - top);
}

int DeviceScope::deviceLength(int length) const {
    return toDevice(length, percent);
}
