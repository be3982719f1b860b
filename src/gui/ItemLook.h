#pragma once

#include "gui/GuiItem.h"
#include "gui/Palette.h"

using PaletteColour = int CPalette::*;

/// A row in a table of items: how the item is entered, and how it takes its colours from a palette.
/// Where `onFill` is set, text and symbol are white or near-black, whichever reads on the fill.
struct ItemLook {
    const char* key;
    CGuiItem2* item;
    int caps, width, height;                 ///< as `CGui::addItem`
    PaletteColour fill, frame, text, symbol; ///< null leaves the fill or frame out
    bool onFill = false;
    CGuiItem2* link = nullptr; ///< the item that it looks like instead
    double tint = 0.0;         ///< share of the accent colour in the fill
};

/// Gives the item its colours, unless it is linked.
void applyLook(const ItemLook& look, const CPalette& colours);

/// The items of the toolkit.
const ItemLook* toolkitItems(int& count);
