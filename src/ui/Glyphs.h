#pragma once

#include "ui/Signs.h"

/// Symbols of the transport.
enum class Glyph { rewind, stop, play, record, loop, click, recent, render };

/// Draws the symbols in the middle of a rectangle. Interface thread.
class Glyphs {
public:
    Glyphs();
    void draw(CGraphic* g, Glyph glyph, CRect rect, int color, int ground);

private:
    SignSet set;
};
