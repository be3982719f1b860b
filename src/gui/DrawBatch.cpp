#include "gui/DrawBatch.h"

#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/Fonts.h"
#include "gui/Scale.h"
#include "gui/ServerCut.h"
#include "gui/ServerRects.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>

#include <utility>

namespace {

CRect onSurface(const CGraphic& g, const CRect& r) {
    return sizeRect(r, g.originX, g.originY, g.originX, g.originY);
}

CRect clipOf(const CGraphic& g) {
    return toDevice(asRect(g.clipLeft, g.clipTop, g.clipRight, g.clipBottom));
}

CRect serverClipOf(const CGraphic& g) {
    return toDevice(asRect(g.hwLeft, g.hwTop, g.hwRight, g.hwBottom));
}

} // namespace

template <class Item>
std::vector<Item>& DrawBatch::ByColor<Item>::of(int color) {
    if (lists.empty() || color != latest) {
        const auto [place, isNew] = places.try_emplace(color, lists.size());
        if (isNew) lists.push_back({color, {}});
        latest = color;
        latestPlace = place->second;
    }
    return lists[latestPlace].second;
}

template <class Item>
void DrawBatch::ByColor<Item>::clear() {
    lists.clear();
    places.clear();
}

DrawBatch::DrawBatch(CGraphic* g) : graphic(g) {
}

DrawBatch::~DrawBatch() {
    draw();
}

void DrawBatch::addRect(ByColor<CRect>& rects, int color, const CRect& device) {
    const CRect in = intersect(device, clipOf(*graphic));
    if (!in.empty()) rects.of(color).push_back(in);
}

void DrawBatch::fill(int color, CRect rect) {
    addRect(fills, color, toDevice(onSurface(*graphic, rect)));
}

void DrawBatch::frame(int color, CRect rect) {
    const CRect r = toDevice(onSurface(*graphic, rect));
    if (intersect(r, clipOf(*graphic)).empty()) return;
    const int thick = asMin(lineThickness(), asMin(r.width(), r.height()));
    const int top = r.top + thick, bottom = asMax(r.bottom - thick, top);
    addRect(lines, color, asRect(r.left, r.top, r.right, top));
    addRect(lines, color, asRect(r.left, bottom, r.right, r.bottom));
    addRect(lines, color, asRect(r.left, top, r.left + thick, bottom));
    addRect(lines, color, asRect(asMax(r.right - thick, r.left + thick), top, r.right, bottom));
}

void DrawBatch::line(int color, CRect rect) {
    CRect r = toDevice(onSurface(*graphic, rect));
    if (rect.height() == 1) r.bottom = r.top + lineThickness();
    if (rect.width() == 1) r.right = r.left + lineThickness();
    addRect(lines, color, r);
}

void DrawBatch::segment(int color, CPoint from, CPoint to) {
    const auto place = [&](CPoint p) {
        const CPoint at = toDevice(addPos(p, asPoint(graphic->originX, graphic->originY)));
        const int middle = lineThickness() / 2;
        return addPos(at, asPoint(middle, middle));
    };
    segments.of(color).push_back({place(from), place(to)});
}

void DrawBatch::text(int color, const CStr& text, CRect rect, int where) {
    const TextFace& face = *graphic->font;
    const CRect box = toDevice(onSurface(*graphic, rect)), clip = clipOf(*graphic);
    if (text.empty() || intersect(box, clip).empty()) return;
    const int room = face.turned ? box.height() : box.width();
    const std::string_view shown = face.fitting(text.asChar(), room);
    const CStr cut(shown.data(), shown.size());
    if (shown.empty()) return;
    // What the clip cuts is drawn by itself, as all others need none.
    if (intersect(box, clip) != box) return graphic->drawText(color, cut, rect, where);
    const int wide = face.deviceWidth(shown);
    texts.of(color).push_back({graphic->textStart(wide, box, where), cut});
}

void DrawBatch::draw() {
    if (liveDisplay() && graphic->gc) {
        drawRects(fills);
        drawRects(lines);
        drawSegments();
        drawTexts();
    }
    fills.clear();
    lines.clear();
    segments.clear();
    texts.clear();
}

void DrawBatch::drawRects(ByColor<CRect>& rects) {
    std::vector<XRectangle> boxes;
    for (const auto& [color, list] : rects.lists) {
        boxes.clear();
        for (const CRect& r : list) boxes.push_back(serverRect(r));
        XSetForeground(liveDisplay(), graphic->gc, static_cast<unsigned>(color));
        XFillRectangles(liveDisplay(), graphic->drawable, graphic->gc, boxes.data(),
                        int(boxes.size()));
    }
}

void DrawBatch::drawSegments() {
    if (segments.lists.empty()) return;
    const ServerCut cut(graphic, asRect(-farthest, -farthest, farthest, farthest));
    if (!cut.leavesAny) return;
    std::vector<XSegment> lineList;
    const auto edge = [](int at) { return short(asMinMax(at, -farthest, farthest)); };
    for (const auto& [color, list] : segments.lists) {
        lineList.clear();
        for (const Segment& s : list)
            lineList.push_back({edge(s.from.x), edge(s.from.y), edge(s.to.x), edge(s.to.y)});
        XSetForeground(liveDisplay(), graphic->gc, static_cast<unsigned>(color));
        XDrawSegments(liveDisplay(), graphic->drawable, graphic->gc, lineList.data(),
                      int(lineList.size()));
    }
}

void DrawBatch::drawTexts() {
    TextPen* pen = texts.lists.empty() ? nullptr : graphic->textPen();
    if (!pen) return;
    for (const auto& [color, list] : texts.lists)
        pen->drawRuns(color, list, serverClipOf(*graphic));
}
