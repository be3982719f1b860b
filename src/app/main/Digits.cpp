#include "app/main/Digits.h"

#include "gui/CGraphic.h"

#include <cstring>

namespace {

constexpr int digitWidth = 11;
constexpr int dotWidth = 3;
constexpr int gap = 3;
constexpr int stroke = 2;

/// Strokes of a figure: top, middle, bottom, then upper left and right, lower left and right.
enum Stroke : unsigned { top = 1, middle = 2, bottom = 4, ul = 8, ur = 16, ll = 32, lr = 64 };

constexpr unsigned figures[10] = {
    top | bottom | ul | ur | ll | lr,
    ur | lr,
    top | middle | bottom | ur | ll,
    top | middle | bottom | ur | lr,
    middle | ul | ur | lr,
    top | middle | bottom | ul | lr,
    top | middle | bottom | ul | ll | lr,
    top | ur | lr,
    top | middle | bottom | ul | ur | ll | lr,
    top | middle | bottom | ul | ur | lr,
};

bool isPoint(char c) {
    return c == '.' || c == ':';
}

unsigned strokesOf(char c) {
    if (c >= '0' && c <= '9') return figures[c - '0'];
    return c == '-' ? unsigned(middle) : 0u;
}

void drawFigure(CGraphic* g, int x, int y, unsigned strokes) {
    constexpr int centre = (digitHeight - stroke) / 2;
    const int right = x + digitWidth - stroke;
    const struct {
        unsigned bit;
        CRect rect;
    } parts[] = {
        {top, asRect(x + 1, y, x + digitWidth - 1, y + stroke)},
        {middle, asRect(x + 1, y + centre, x + digitWidth - 1, y + centre + stroke)},
        {bottom, asRect(x + 1, y + digitHeight - stroke, x + digitWidth - 1, y + digitHeight)},
        {ul, asRect(x, y + 1, x + stroke, y + centre + 1)},
        {ur, asRect(right, y + 1, right + stroke, y + centre + 1)},
        {ll, asRect(x, y + centre + 1, x + stroke, y + digitHeight - 1)},
        {lr, asRect(right, y + centre + 1, right + stroke, y + digitHeight - 1)},
    };
    for (const auto& part : parts)
        if (strokes & part.bit) g->fillRect(part.rect);
}

void drawPoint(CGraphic* g, int x, int y, char c) {
    const int foot = y + digitHeight - dotWidth;
    if (c == '.') g->fillRect(asRect(x, foot, x + dotWidth, foot + dotWidth));
    if (c != ':') return;
    g->fillRect(asRect(x, y + 5, x + dotWidth, y + 5 + dotWidth));
    g->fillRect(asRect(x, y + 12, x + dotWidth, y + 12 + dotWidth));
}

void drawSlash(CGraphic* g, int x, int y) {
    for (int row = 0; row < digitHeight; row++) {
        const int at = x + (digitHeight - 1 - row) * (digitWidth - stroke) / (digitHeight - 1);
        g->fillRect(asRect(at, y + row, at + stroke, y + row + 1));
    }
}

int widthOf(char c) {
    return isPoint(c) ? dotWidth : digitWidth;
}

} // namespace

void drawDigits(CGraphic* g, CRect rect, const CStr& text, int color) {
    int x = rect.left;
    const int y = (rect.top + rect.bottom - digitHeight) / 2;
    g->setFillCol(color);
    for (const char* c = text.asChar(); *c; c++) {
        if (isPoint(*c))
            drawPoint(g, x, y, *c);
        else if (*c == '/')
            drawSlash(g, x, y);
        else
            drawFigure(g, x, y, strokesOf(*c));
        x += widthOf(*c) + gap;
    }
}

int digitsWidth(const CStr& text) {
    int width = 0;
    for (const char* c = text.asChar(); *c; c++) width += widthOf(*c) + gap;
    return width > 0 ? width - gap : 0;
}
