#include "gui/GuiItem.h"

#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/CGui.h"
#include "gui/Drawing.h"
#include "gui/Images.h"
#include "gui/Scale.h"

namespace {

constexpr int freeSide = 256, longestSide = 4096; // of a bitmap, logical pixels

int64_t bytesOf(int width, int height) {
    return int64_t(toDevice(width)) * toDevice(height) * RgbaPicture::bytesPerPixel;
}

int sideOf(int fixed, int otherwise) {
    return asMinMax(fixed > 0 ? fixed : otherwise, 1, longestSide);
}

/// An empty bitmap of the item's size, of `width` and `height` where that is free; null beyond
/// `room`.
std::unique_ptr<CBitmap> bitmapFor(const CGuiItem2& item, int width, int height, int64_t room) {
    const int w = sideOf(item.width, width), h = sideOf(item.height, height);
    if (bytesOf(w, h) > room) return nullptr;
    return std::make_unique<CBitmap>(w, h);
}

void renderGloss(CGuiItem2& item, int64_t room) {
    item.bitmap = bitmapFor(item, freeSide, freeSide, room);
    if (!item.bitmap) return;
    drawGlossy(item.bitmap->graphic.get(), item.bitmap->getRect(), item.fillCol, item.fillEffect,
               0);
}

void renderImage(CGuiItem2& item, int64_t room) {
    CImageChunk& picture = *item.image;
    if (picture.width < 1 || picture.height < 1) return;
    auto made = bitmapFor(item, picture.width, picture.height, room);
    if (!made) return;
    made->graphic->fillRect(clWinBkgnd.fillCol, made->getRect());
    picture.draw(made->graphic.get(), made->getRect());
    if (picture.image && picture.image->valid) item.bitmap = std::move(made);
}

void drawOutline(CGraphic* g, CRect rect, int shape, int color) {
    if (shape == 1)
        roundFrame(g, color, rect);
    else
        g->frameRect(color, rect);
}

/// The ends are lines that are a pixel shorter on both sides.
void drawRoundedGradient(CGraphic* g, CRect r, const CGuiItem2& item) {
    const bool across = item.fillAlign == gradientAcross || item.fillAlign == gradientAcrossTo;
    const bool back = item.fillAlign == gradientDownUp || item.fillAlign == gradientAcrossTo;
    const int last = back ? item.fillCol : item.fillCol2;
    if (across) {
        g->fillRect(item.fillCol, asRect(r.left, r.top + 1, r.left + 1, r.bottom - 1));
        g->fillRect(last, asRect(r.right - 1, r.top + 1, r.right, r.bottom - 1));
        r = sizeRect(r, 1, 0, -1, 0);
    } else {
        g->fillRect(item.fillCol, asRect(r.left + 1, r.top, r.right - 1, r.top + 1));
        g->fillRect(last, asRect(r.left + 1, r.bottom - 1, r.right - 1, r.bottom));
        r = sizeRect(r, 0, 1, 0, -1);
    }
    drawGradient(g, r, item.fillCol, item.fillCol2, item.fillAlign);
}

void drawShaded(CGraphic* g, CRect rect, const CGuiItem2& item) {
    if (item.fillTex == textureGradient) {
        if (item.shape == 1)
            drawRoundedGradient(g, rect, item);
        else
            drawGradient(g, rect, item.fillCol, item.fillCol2, item.fillAlign);
        return;
    }
    const CRect inner = sizeRect(rect, 1, 0, -1, 0);
    if (item.bitmap && item.bitmap->height == rect.height())
        g->drawTiled(item.bitmap.get(), inner);
    else
        drawGlossy(g, inner, item.fillCol, item.fillEffect, 0);
    drawOutline(g, rect, item.shape, item.fillCol);
}

void drawFill(CGraphic* g, CRect rect, const CGuiItem2& item, int flags) {
    if (item.fill == fillSolid) {
        if (item.shape == 1)
            roundRect(g, item.fillCol, rect);
        else
            g->fillRect(item.fillCol, rect);
    } else if (item.fill == fillShaded) {
        drawShaded(g, rect, item);
    } else if (item.fill == fillImage && item.bitmap) {
        const bool inset = item.frame == 1 && !(flags & drawBackground) && item.shape == 1;
        g->drawTiled(item.bitmap.get(), inset ? sizeRect(rect, 1, 0, -1, 0) : rect);
    }
}

} // namespace

void setGuiFill(CGuiItem2& item, int color) {
    item.linkTo = nullptr;
    item.fill = color == guiNoFill ? fillNone : fillSolid;
    if (item.fill == fillSolid) item.fillCol = color;
    item.bitmap.reset();
}

void setGuiFrame(CGuiItem2& item, int style, int color) {
    item.linkTo = nullptr;
    item.frame = style;
    item.frameCol = color;
}

void setGuiShape(CGuiItem2& item, int shape) {
    item.linkTo = nullptr;
    item.shape = shape;
}

void setGuiText(CGuiItem2& item, int color) {
    item.linkTo = nullptr;
    item.textCol = color;
}

void setGuiSymbol(CGuiItem2& item, int color) {
    item.linkTo = nullptr;
    item.symbolCol = color;
}

void setGuiSep(CGuiItem2& item, int style, int color, int size) {
    item.linkTo = nullptr;
    item.sep = style;
    item.sepCol = color;
    item.sepSize = size;
}

void setGuiGradient(CGuiItem2& item, int from, int to, int direction) {
    item.linkTo = nullptr;
    item.fill = fillShaded;
    item.fillTex = textureGradient;
    item.fillCol = from;
    item.fillCol2 = to;
    item.fillAlign = direction;
    item.bitmap.reset();
}

void setGuiGlossy(CGuiItem2& item, int color, float effect) {
    item.linkTo = nullptr;
    item.fill = fillShaded;
    item.fillTex = textureGlossy;
    item.fillCol = color;
    item.fillEffect = effect;
    renderGuiItem(item, RgbaPicture::largestBytes);
}

void setGuiImage(CGuiItem2& item, CImageChunk* image) {
    item.linkTo = nullptr;
    item.fill = fillImage;
    item.image = image;
    renderGuiItem(item, RgbaPicture::largestBytes);
}

void renderGuiItem(CGuiItem2& item, int64_t room) {
    item.bitmap.reset();
    if (item.fill == fillImage && item.image)
        renderImage(item, room);
    else if (item.fill == fillShaded && item.fillTex == textureGlossy && item.height > 0)
        renderGloss(item, room);
}

int64_t guiBitmapBytes(const CGuiItem2& item) {
    return item.bitmap ? bytesOf(item.bitmap->width, item.bitmap->height) : 0;
}

void drawGuiItem(CGraphic* g, CRect rect, const CGuiItem2* item, int flags) {
    if (!(flags & drawFrame)) drawFill(g, rect, *item, flags);
    if (item->frame == 1 && !(flags & drawBackground))
        drawOutline(g, rect, item->shape, item->frameCol);
}
