#pragma once

#include "base/Geometry.h"

class CGraphic;

/// Symbols of the transport, drawn in the middle of a rectangle. Odd sizes stay sharp.
enum class Glyph { rewind, stop, play, record, loop, click, recent, render };

void drawGlyph(CGraphic* g, Glyph glyph, CRect rect, int color);
