#pragma once

#include "gui/CCtrl.h"
#include "gui/CDrag.h"

/// A scroll bar whose thumb is the part of the content that is seen: dragged in its middle it pans,
/// at an end it zooms, and Escape gives a drag back. A press beside it goes on by a page. The wheel
/// pans, with Control it zooms at the pointer. With the focus arrows and Page keys pan, Home and
/// End go to the ends, plus and minus zoom, and Delete shows all. `onChange` tells of each change.
class CRangebar : public CCtrl, private DragHandler {
public:
    static constexpr int grip = 6;        ///< pixels of an end of the thumb
    static constexpr int leastThumb = 20; ///< pixels; a thumb is painted no shorter

    bool vertical = false;

    CRangebar(CWin* win, const CStr& name, int left, int top, int width, int height);

    double from() const { return start; } ///< what is seen of 0 to `total`
    double span() const { return size; }
    double total() const { return whole; }
    /// The content, and the least of it that can be seen; above 0. What was seen is kept within.
    void setContent(double total, double leastSpan);
    /// What is seen, kept within the content; does not report.
    void setRange(double from, double span);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool touch(int x, int y, int btn, const TouchStep& step) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;
    bool enterNumber(int part, double to) override;

protected:
    CRect thumbRect() const;

private:
    enum class Part { before, first, middle, last, behind };

    int length() const { return vertical ? height : width; }
    int along(CPoint at) const { return vertical ? at.y : at.x; }
    double perPixel() const { return whole / (length() > 1 ? length() : 1); }
    Part partAt(int place) const;
    void change(double newFrom, double newSpan);
    void zoom(double factor, double around);
    void dragBegin(const DragPoint& point) override;
    void dragMove(const DragPoint& point) override;
    void dragCancel() override;

    double whole = 1, least = 1, start = 0, size = 1;
    Part held = Part::middle;               ///< by the drag
    double startBefore = 0, sizeBefore = 1; ///< the drag
};
