#include "gui/CGraphic.h"

#include "base/Numbers.h"
#include "gui/CBitmap.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>

#include <cstdint>
#include <cstring>

namespace {

CRect sorted(CRect r) {
    sort(r.left, r.right);
    sort(r.top, r.bottom);
    return r;
}

/// The end of a line that leaves out its last point.
int pulledIn(int from, int to) {
    if (to > from) return to - 1;
    return to < from ? to + 1 : to;
}

} // namespace

CGraphic::CGraphic(unsigned long target) : drawable(target), font(&xConnection().font) {
    Display* display = liveDisplay();
    if (!display) return;
    XGCValues values{};
    values.function = GXcopy;
    values.foreground = ~0UL;
    values.graphics_exposures = False; // else each copy would answer with an event
    gc = XCreateGC(display, drawable, GCFunction | GCForeground | GCGraphicsExposures, &values);
    if (font->id) XSetFont(display, gc, font->id);
}

CGraphic::~CGraphic() {
    if (!gc) return;
    if (Display* display = liveDisplay())
        XFreeGC(display, gc);
    else
        XFree(gc); // the server has forgotten its part
}

bool CGraphic::ready(int color) {
    Display* display = liveDisplay();
    if (!display || !gc) return false;
    XSetForeground(display, gc, static_cast<unsigned>(color));
    return true;
}

void CGraphic::fillRect(int color, CRect rect) {
    const CRect r = sizeRect(sorted(rect), originX, originY, originX, originY);
    const CRect in = intersect(r, asRect(clipLeft, clipTop, clipRight, clipBottom));
    if (in.empty() || !ready(color)) return;
    XFillRectangle(liveDisplay(), drawable, gc, in.left, in.top, unsigned(in.width()),
                   unsigned(in.height()));
}

void CGraphic::fillRect(CRect rect) {
    fillRect(fillCol, rect);
}

void CGraphic::frameRect(int color, CRect rect) {
    const CRect r = sorted(rect);
    if (r.empty()) return;
    fillRect(color, asRect(r.left, r.top, r.right, r.top + 1));
    fillRect(color, asRect(r.right - 1, r.top, r.right, r.bottom));
    fillRect(color, asRect(r.left, r.bottom - 1, r.right, r.bottom));
    fillRect(color, asRect(r.left, r.top, r.left + 1, r.bottom));
}

void CGraphic::frameRect(CRect rect) {
    frameRect(lineCol, rect);
}

void CGraphic::drawLine(int x1, int y1, int x2, int y2) {
    if (!ready(lineCol)) return;
    XDrawLine(liveDisplay(), drawable, gc, x1 + originX, y1 + originY, pulledIn(x1, x2) + originX,
              pulledIn(y1, y2) + originY);
}

void CGraphic::drawPoly(const CPoint* points, int n) {
    constexpr int most = 16;
    if (n < 1 || n > most || !ready(fillCol)) return;
    XPoint corners[most];
    for (int i = 0; i < n; i++) {
        corners[i].x = short(points[i].x + originX);
        corners[i].y = short(points[i].y + originY);
    }
    XFillPolygon(liveDisplay(), drawable, gc, corners, n, Convex, CoordModeOrigin);
}

void CGraphic::drawText(int color, const CStr& text, CRect rect, int where, int) {
    const int length = text.length();
    if (length == 0 || !ready(color)) return;
    const CRect box = sizeRect(rect, originX, originY, originX, originY);
    const int ascent = font->ascent, descent = font->descent;
    const int wide = textWidth(text);
    int y = box.top + ascent / 2 + (box.bottom - box.top) / 2;
    if (where & textTop)
        y = box.top + ascent;
    else if (where & textBottom)
        y = box.bottom - descent;
    int x = box.left + (box.width() - wide) / 2;
    if (where & textLeft)
        x = box.left;
    else if (where & textRight)
        x = box.right - wide;

    Display* display = liveDisplay();
    if (where & textUnclipped) {
        XDrawString(display, drawable, gc, x, y, text.asChar(), length);
        return;
    }
    const CRect in = intersect(box, asRect(clipLeft, clipTop, clipRight, clipBottom));
    if (in.empty()) return;
    const bool fits =
        x >= in.left && x + wide <= in.right && y - ascent >= in.top && y + descent <= in.bottom;
    const CRect former = fits ? CRect() : setClip(in);
    XDrawString(display, drawable, gc, x, y, text.asChar(), length);
    if (!fits) setClip(former);
}

void CGraphic::drawText(const CStr& text, CRect rect, int where, int unused) {
    drawText(lineCol, text, rect, where, unused);
}

int CGraphic::textWidth(const CStr& text) const {
    return font->textWidth(text.asChar(), text.length());
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
    Display* display = liveDisplay();
    if (!display || !gc) return former;
    if (rect == CRect()) {
        XSetClipMask(display, gc, None);
        return former;
    }
    XRectangle box{};
    box.x = short(rect.left);
    box.y = short(rect.top);
    box.width = static_cast<unsigned short>(asMax(0, rect.width()));
    box.height = static_cast<unsigned short>(asMax(0, rect.height()));
    XSetClipRectangles(display, gc, 0, 0, &box, 1, Unsorted);
    return former;
}

CRect CGraphic::addClip(CRect rect) {
    const CRect former = asRect(clipLeft, clipTop, clipRight, clipBottom);
    clipLeft = asMax(0, asMax(clipLeft, rect.left));
    clipTop = asMax(0, asMax(clipTop, rect.top));
    clipRight = asMin(clipRight, rect.right);
    clipBottom = asMin(clipBottom, rect.bottom);
    return former;
}

CRect CGraphic::intersectClip(CRect rect) const {
    const CRect clip = asRect(clipLeft, clipTop, clipRight, clipBottom);
    return intersect(rect, sizeRect(clip, -originX, -originY, -originX, -originY));
}

void CGraphic::restoreClip(CRect former) {
    clipLeft = former.left;
    clipTop = former.top;
    clipRight = former.right;
    clipBottom = former.bottom;
}

int CGraphic::getPixel(int x, int y) const {
    if (depth != 32 || !pixels) return 0;
    uint32_t pixel;
    const ptrdiff_t row = ptrdiff_t(y + originY) * stride;
    std::memcpy(&pixel, pixels + row + ptrdiff_t(x + originX) * 4, 4);
    const XConnection& server = xConnection();
    return int(pixel & (server.redMask | server.greenMask | server.blueMask));
}

void CGraphic::setPixel(int x, int y, int color) {
    if (depth != 32 || !pixels) return;
    const auto pixel = static_cast<uint32_t>(color);
    std::memcpy(pixels + ptrdiff_t(y) * stride + ptrdiff_t(x) * 4, &pixel, 4);
}

void CGraphic::render(const CBitmap* bitmap, int x, int y, int srcX, int srcY, int w, int h) {
    Display* display = liveDisplay();
    if (!display || !gc || w <= 0 || h <= 0) return;
    XCopyArea(display, bitmap->pixmap, drawable, gc, srcX, srcY, unsigned(w), unsigned(h),
              x + originX, y + originY);
}

void CGraphic::drawTiled(const CBitmap* bitmap, CRect rect) {
    if (bitmap->width < 1 || bitmap->height < 1) return;
    for (int y = rect.top; y < rect.bottom; y += bitmap->height)
        for (int x = rect.left; x < rect.right; x += bitmap->width)
            render(bitmap, x, y, 0, 0, asMin(bitmap->width, rect.right - x),
                   asMin(bitmap->height, rect.bottom - y));
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
