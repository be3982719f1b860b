#pragma once

#include "base/CObject.h"
#include "gui/RgbaPicture.h"

class CBitmap;
class CGraphic;
class CRLE;
class CStream;

/// A decoded PNG file. Interface thread.
class CPNG : public CObject {
public:
    int valid = 0; ///< 1 when the file could be decoded
    /// What is drawn. At first the size of the picture; a wider one repeats the last column.
    int width = 0, height = 0;

    explicit CPNG(const CStr& path);
    explicit CPNG(CStream* stream); ///< from its position on

    /// Puts the picture over the top left of the bitmap; nothing happens on screens without pixels
    /// of 32 bits.
    void draw(CBitmap* target) const;
    void draw(CGraphic* target) const; ///< on the bitmap behind it; nothing happens on a window
    void rle(CRLE* target) const;      ///< encodes it in place of what is there

private:
    void decode(CStream* stream);

    RgbaPicture picture;
};
