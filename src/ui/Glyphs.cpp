#include "ui/Glyphs.h"

namespace {

constexpr int side = 18; ///< of the box of a symbol

SignPart box(double left, double top, double right, double bottom) {
    return {0, {{left, top}, {right, top}, {right, bottom}, {left, bottom}}};
}

/// By `Glyph`.
const std::vector<Sign>& drawings() {
    constexpr double middle = side / 2.0, disc = 6.5, line = 0.9;
    static const std::vector<Sign> all = {
        {box(2, 3, 4, 15), {0, {{15, 3}, {15, 15}, {5, 9}}}},
        {box(3, 3, 15, 15)},
        {{0, {{4, 2}, {4, 16}, {16, 9}}}},
        {{disc, {{middle, middle}}}},
        // Two arrows that follow each other.
        {box(2, 4, 12, 6),
         box(2, 4, 4, 9),
         box(6, 12, 16, 14),
         box(14, 9, 16, 14),
         {0, {{11, 1}, {11, 9}, {16, 5}}},
         {0, {{7, 9}, {7, 17}, {2, 13}}}},
        // A metronome with its hand.
        {{line, {{6.5, 2}, {11.5, 2}, {15, 16}, {3, 16}, {6.5, 2}}},
         {0, {{4, 13}, {14, 13}, {15, 16}, {3, 16}}},
         {line, {{8.5, 13}, {15.5, 4}}}},
        // A folder.
        {box(1, 3, 8, 5), box(1, 5, 17, 7), box(1, 8, 17, 15)},
        // An arrow that comes down into a tray.
        {box(8, 2, 10, 7),
         {0, {{4, 7}, {14, 7}, {9, 12}}},
         box(2, 14, 16, 16),
         box(2, 10, 4, 16),
         box(14, 10, 16, 16)},
    };
    return all;
}

} // namespace

Glyphs::Glyphs() : set(drawings(), side, side) {
}

void Glyphs::draw(CGraphic* g, Glyph glyph, CRect rect, int color, int ground) {
    const CPoint at =
        asPoint(rect.left + (rect.width() - side) / 2, rect.top + (rect.height() - side) / 2);
    set.draw(g, int(glyph), at, color, ground);
}
