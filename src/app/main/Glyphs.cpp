#include "app/main/Glyphs.h"

#include "gui/CGraphic.h"

namespace {

constexpr int half = 6; ///< half the height of a symbol

void triangle(CGraphic* g, int x, int y, int direction) {
    for (int column = 0; column <= 2 * half; column++) {
        const int reach = half - column / 2;
        const int at = direction > 0 ? x + column : x - column;
        g->fillRect(asRect(at, y - reach, at + 1, y + reach + 1));
    }
}

void loopArrow(CGraphic* g, int x, int y) {
    constexpr int wide = 7, high = 4;
    g->fillRect(asRect(x - wide, y - high, x + wide - 3, y - high + 2));
    g->fillRect(asRect(x - wide, y - high, x - wide + 2, y + 1));
    g->fillRect(asRect(x - wide + 4, y + high - 1, x + wide + 1, y + high + 1));
    g->fillRect(asRect(x + wide - 1, y, x + wide + 1, y + high + 1));
    for (int i = 0; i < 4; i++) {
        g->fillRect(asRect(x + wide - 3 + i, y - high - 3 + i, x + wide - 2 + i, y - high + 5 - i));
        g->fillRect(asRect(x - wide + 3 - i, y + high - 4 + i, x - wide + 4 - i, y + high + 4 - i));
    }
}

void metronome(CGraphic* g, int x, int y) {
    constexpr int foot = 6;
    for (int row = -half; row <= half; row++) {
        const int reach = 2 + (row + half) * (foot - 2) / (2 * half);
        const bool solid = row >= half - 2 || row == -half;
        g->fillRect(asRect(x - reach, y + row, solid ? x + reach + 1 : x - reach + 1, y + row + 1));
        g->fillRect(asRect(x + reach, y + row, x + reach + 1, y + row + 1));
    }
    for (int i = 0; i < 9; i++) g->fillRect(asRect(x + i - 1, y + 3 - i, x + i + 1, y + 4 - i));
}

void disc(CGraphic* g, int x, int y) {
    for (int row = -half; row <= half; row++) {
        int reach = half;
        while (reach * reach + row * row > half * half + half) reach--;
        g->fillRect(asRect(x - reach, y + row, x + reach + 1, y + row + 1));
    }
}

/// A folder.
void folder(CGraphic* g, int x, int y) {
    constexpr int wide = 8;
    g->fillRect(asRect(x - wide, y - half, x - 1, y - half + 2));
    g->fillRect(asRect(x - wide, y - half + 2, x + wide, y - half + 4));
    g->fillRect(asRect(x - wide, y - half + 5, x + wide, y + half));
}

/// An arrow that comes down into a tray.
void tray(CGraphic* g, int x, int y) {
    constexpr int wide = 7, shaft = 2, head = 5;
    g->fillRect(asRect(x - shaft / 2, y - half - 1, x + shaft / 2 + 1, y - 2));
    for (int row = 0; row < head; row++)
        g->fillRect(asRect(x - head + 1 + row, y - 2 + row, x + head - row, y - 1 + row));
    g->fillRect(asRect(x - wide, y + half - 1, x + wide + 1, y + half + 1));
    g->fillRect(asRect(x - wide, y + 1, x - wide + 2, y + half));
    g->fillRect(asRect(x + wide - 1, y + 1, x + wide + 1, y + half));
}

} // namespace

void drawGlyph(CGraphic* g, Glyph glyph, CRect rect, int color) {
    const int x = (rect.left + rect.right) / 2, y = (rect.top + rect.bottom) / 2;
    g->setFillCol(color);
    switch (glyph) {
    case Glyph::rewind:
        g->fillRect(asRect(x - half - 1, y - half, x - half + 1, y + half + 1));
        triangle(g, x + half, y, -1);
        break;
    case Glyph::stop:
        g->fillRect(asRect(x - half, y - half, x + half + 1, y + half + 1));
        break;
    case Glyph::play:
        triangle(g, x - half + 1, y, 1);
        break;
    case Glyph::record:
        disc(g, x, y);
        break;
    case Glyph::recent:
        folder(g, x, y);
        break;
    case Glyph::loop:
        loopArrow(g, x, y);
        break;
    case Glyph::render:
        tray(g, x, y);
        break;
    case Glyph::click:
        metronome(g, x, y);
        break;
    }
}
