#include "gui/Images.h"

#include "base/Paths.h"
#include "gui/CGraphic.h"
#include "gui/Scale.h"

void CImageChunk::reset() {
    image.reset();
    cache.reset();
}

void CImageChunk::open(const CStr& path) {
    reset();
    mode = imageNone;
    data.clear();
    id = changeFileExt(extractFileName(path), "");
    data.loadFromFile(path);
    if (extractFileExt(path).lowerCase() != ".png") return;
    mode = imagePng;
    if (decode()) {
        width = image->width;
        height = image->height;
    }
    image.reset();
}

bool CImageChunk::decode() {
    if (mode != imagePng) return false;
    if (!image) {
        data.setPos(0);
        image = std::make_unique<CPNG>(&data);
    }
    return image->valid != 0;
}

void CImageChunk::draw(CGraphic* g, CRect) {
    if (!decode()) return;
    image->width = width;
    image->height = height;
    image->draw(g);
}

std::unique_ptr<CBitmap> CImageChunk::makeBitmap() const {
    if (!RgbaPicture::fits(width, height)) return nullptr;
    const int64_t devicePixels = int64_t(toDevice(width)) * toDevice(height);
    if (devicePixels * RgbaPicture::bytesPerPixel > RgbaPicture::largestBytes) return nullptr;
    auto made = std::make_unique<CBitmap>(width, height);
    made->graphic->fillRect(0, made->getRect());
    return made;
}

void CImageChunk::cacheImage() {
    cache = makeBitmap();
    if (cache) draw(cache->graphic.get(), cache->getRect());
}

void CImage2::reset() {
    CImageChunk::reset();
    bitmap.reset();
}

bool CImage2::render() {
    if (bitmap) return true;
    if (!decode()) return false;
    bitmap = makeBitmap(); // before the other is asked, whose background may be this one
    if (!bitmap) return false;
    CGraphic* g = bitmap->graphic.get();
    if (backImage && backImage->render()) g->drawTiled(backImage->bitmap.get(), bitmap->getRect());
    CImageChunk::draw(g, bitmap->getRect());
    return true;
}

void CImage2::draw(CGraphic* g, CRect rect) {
    const CRect in = g->intersectClip(rect);
    if (in.empty() || !render()) return;
    const CRect former = g->addClip(sizeRect(in, g->originX, g->originY, g->originX, g->originY));
    if (tiled)
        g->drawTiled(bitmap.get(), rect);
    else
        g->render(bitmap.get(), rect.left, rect.top, 0, 0, bitmap->width, bitmap->height);
    g->restoreClip(former);
}
