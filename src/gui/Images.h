#pragma once

#include "base/CStream.h"
#include "gui/CBitmap.h"
#include "gui/CPNG.h"

class CGraphic;

enum ImageMode : int { imageNone = 0, imagePng = 1 };

/// A file with a picture, as themes and control surfaces keep it, and what was decoded from it. The
/// name is that of the file. Interface thread.
class CImageChunk : public CObject {
public:
    int mode = imageNone;           ///< ImageMode
    int width = 0, height = 0;      ///< as drawn, logical pixels; a file may tell any
    CMemoryStream data;             ///< the whole file
    std::unique_ptr<CPNG> image;    ///< decoded when it is first needed
    std::unique_ptr<CBitmap> cache; ///< made by `cacheImage`; null for a picture beyond the limits

    int getSize() const { return int(data.size); } ///< bytes of the file
    int getMode() const { return mode; }
    void setMode(int m) { mode = m; }
    CMemoryStream* getChunk() { return &data; }
    const unsigned char* getData() const { return data.data; }
    int getWidth() const { return width; }
    void setWidth(int w) { width = w; }
    int getHeight() const { return height; }
    void setHeight(int h) { height = h; }
    CBitmap* getCache() const { return cache.get(); }

    virtual void reset(); ///< forgets all that was made from the file
    /// Takes a file over; one that is not named as a PNG keeps the mode 0.
    virtual void open(const CStr& path);
    /// Puts the picture over the top left of the bitmap behind the surface.
    virtual void draw(CGraphic* g, CRect rect);
    void cacheImage(); ///< a new bitmap of the picture's size with the picture in it

protected:
    bool decode(); ///< makes `image`; false when there is no picture
    std::unique_ptr<CBitmap> makeBitmap() const;
};

/// A picture that is composited once and then copied by the server.
class CImage2 : public CImageChunk {
public:
    std::unique_ptr<CBitmap> bitmap; ///< composited when it is first drawn
    bool tiled = false;              ///< repeated over the rectangle instead of drawn once
    CImage2* backImage = nullptr;    ///< lies behind, tiled; not owned

    void reset() override;
    void draw(CGraphic* g, CRect rect) override; ///< cut to the rectangle

private:
    bool render();
};
