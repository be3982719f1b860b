#pragma once

#include "base/CStr.h"
#include "base/Geometry.h"

class CGraphic;

/// Large figures out of seven strokes each, for what is read at arm's length. Digits, "-", "/", "."
/// and ":" are known, anything else is a gap.

constexpr int digitHeight = 20;

/// Draws the text with its left edge and middle at those of the rectangle.
void drawDigits(CGraphic* g, CRect rect, const CStr& text, int color);
int digitsWidth(const CStr& text);
