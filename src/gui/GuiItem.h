#pragma once

#include "base/CStr.h"
#include "base/Geometry.h"
#include "gui/CBitmap.h"

#include <cstdint>
#include <memory>

class CGraphic;
class CImageChunk;

/// What of its look an item uses; bits of `CGuiItem2::caps`.
enum GuiCaps : int {
    capShape = 1,
    capFrame = 2,
    capFill = 4,
    capText = 32,
    capSymbol = 64,
    capSep = 128,
    capImageOnly = 256, ///< of the fills, only an image
};

enum GuiFill : int { fillNone = 0, fillSolid = 1, fillShaded = 2, fillImage = 3 };
enum GuiTexture : int { textureGlossy = 0, textureGradient = 1 };

/// All of an item that a link takes over. Colours are pixel values.
struct CGuiLook {
    int shape = 0; ///< 0 square, 1 rounded
    int frame = 0; ///< 1 a one-pixel frame
    int frameCol = 0;
    int fill = fillSolid; ///< GuiFill
    int fillTex = textureGlossy;
    int fillCol = 0, fillCol2 = 0;
    int fillAlign = 2;       ///< direction of a gradient, as `drawGradient`
    float fillEffect = 0.5f; ///< strength of the gloss, as `drawGlossy`
    int textCol = 0;
    int symbolCol = 0; ///< of glyphs drawn on the item
    int sep = 0, sepCol = 0;
    int sepSize = 6;
    CImageChunk* image = nullptr; ///< for `fillImage`; one of the theme's, null paints nothing
};

/// The look of one kind of thing, in the table of `CGui`. Interface thread.
struct CGuiItem2 : CGuiLook {
    CStr id;      ///< key in files
    int caps = 0; ///< GuiCaps
    int mode = 0;
    int width = 0, height = 0;       ///< of the bitmap; 0 is free
    std::unique_ptr<CBitmap> bitmap; ///< a gloss of fixed height, or the image, ready to be tiled
    CGuiItem2* linkTo = nullptr;     ///< its look is to be taken over; cleared when that is done
};

constexpr int guiNoFill = -2;

// Each of these ends a link. Those that need the bitmap render it.
void setGuiFill(CGuiItem2& item, int color); ///< `guiNoFill` lets the parent show through
void setGuiFrame(CGuiItem2& item, int style, int color);
void setGuiShape(CGuiItem2& item, int shape);
void setGuiText(CGuiItem2& item, int color);
void setGuiSymbol(CGuiItem2& item, int color);
void setGuiSep(CGuiItem2& item, int style, int color, int size);
void setGuiGradient(CGuiItem2& item, int from, int to, int direction);
void setGuiGlossy(CGuiItem2& item, int color, float effect);
void setGuiImage(CGuiItem2& item, CImageChunk* image); ///< not owned; null paints nothing

/// Makes `bitmap` anew as the look asks for it. `room` are the bytes that it may take; more leaves
/// it null, and the item then paints an image not at all, and a gloss step by step.
void renderGuiItem(CGuiItem2& item, int64_t room);
int64_t guiBitmapBytes(const CGuiItem2& item); ///< of the pixels, 0 without a bitmap

enum DrawItemFlag : int { drawWhole = 0, drawBackground = 2, drawFrame = 4 };

/// Paints the fill (unless `flags` has `drawFrame`) and the frame (unless `drawBackground`).
void drawGuiItem(CGraphic* g, CRect rect, const CGuiItem2* item, int flags = drawWhole);
