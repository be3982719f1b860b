#pragma once

#include "base/CStr.h"
#include "base/Geometry.h"
#include "gui/Fonts.h"

#include <map>
#include <utility>
#include <vector>

class CGraphic;

/// Many small marks of a view, told to the server in few requests: when the batch ends, or by
/// `draw`. First the fills, then the frames and lines, then the texts, and within each the colours
/// in the order of their first use; where marks of one kind overlap in other orders, draw between
/// them. All texts are in one look. Coordinates are those of the surface at the call, of which
/// everything is cut to the clip.
class DrawBatch {
public:
    explicit DrawBatch(CGraphic* g); ///< which outlives it
    ~DrawBatch();
    DrawBatch(const DrawBatch&) = delete;
    DrawBatch& operator=(const DrawBatch&) = delete;

    void fill(int color, CRect rect);
    void frame(int color, CRect rect);               ///< one pixel wide, inside the rectangle
    void line(int color, CRect rect);                ///< as `CGraphic::fillLine`
    void segment(int color, CPoint from, CPoint to); ///< aslant, one pixel wide, both ends included
    /// As `CGraphic::drawText`, but what has no room in the box loses its last letters whole.
    void text(int color, const CStr& text, CRect rect, int where);
    void draw();

private:
    struct Segment {
        CPoint from, to; ///< device pixels
    };
    /// Lists by colour, in the order of first use.
    template <class Item>
    class ByColor {
    public:
        std::vector<Item>& of(int color);
        void clear();
        std::vector<std::pair<int, std::vector<Item>>> lists;

    private:
        std::map<int, size_t> places;
        int latest = 0; ///< colour of the latest use
        size_t latestPlace = size_t(-1);
    };

    void addRect(ByColor<CRect>& rects, int color, const CRect& device);
    void drawRects(ByColor<CRect>& rects);
    void drawSegments();
    void drawTexts();

    CGraphic* graphic;
    ByColor<CRect> fills, lines;
    ByColor<Segment> segments;
    ByColor<TextRun> texts;
};
