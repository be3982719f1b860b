#pragma once

#include "gui/GuiItem.h"

// How a control that changes under the pointer paints its item. Interface thread.

/// Paints the item with another colour in place of its fill, and what is shaded towards it. One
/// without a fill gets that colour, and an image stays as it is.
void drawGuiItemIn(CGraphic* g, CRect rect, const CGuiItem2& item, int color,
                   int flags = drawWhole);
/// A frame in a colour along the item's edge, as its shape has it.
void drawGuiItemEdge(CGraphic* g, CRect rect, const CGuiItem2& item, int color);
