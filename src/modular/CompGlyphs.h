#pragma once

#include "base/Geometry.h"

class CGraphic;

/// Draws the glyph of a type of component (CompType), in lines, into a square of the canvas.
void drawCompGlyph(CGraphic* g, int type, CRect square, int color);
/// What a component of a type is called, such as "synthesizer".
const char* compKindName(int type);
