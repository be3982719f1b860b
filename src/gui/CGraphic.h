#pragma once

#include "base/CObject.h"
#include "base/Geometry.h"

#include <memory>
#include <span>
#include <vector>

struct _XGC;
class CBitmap;
class RenderTarget;
class TextFace;
class TextPen;
struct TextLook;

/// Where a text stands in its box: one of each row. Without a flag it is centred.
enum TextFlag : int {
    textLeft = 2,
    textRight = 8,
    textTop = 4,
    textBottom = 16,
    textUnclipped = 0x4000,
};

/// The surface that every `paint` is given: a window or a pixmap with one graphics context.
/// Coordinates are logical pixels (gui/Scale.h) and count from the origin; right and bottom lie
/// outside. All that is drawn is cut to the logical clip, which is that of the control and of all
/// groups around it. Interface thread.
class CGraphic : public CObject {
public:
    int originX = 0, originY = 0;
    /// Logical clip, in pixels of the surface.
    int clipLeft = 0, clipTop = 0, clipRight = 0, clipBottom = 0;
    int hwLeft = 0, hwTop = 0, hwRight = 0, hwBottom = 0; ///< the server's clip; all 0 is none
    int width = 0, height = 0;                            ///< of a bitmap
    int alpha = 255;
    int depth = 0;                   ///< bits of one of `pixels`
    CBitmap* canvas = nullptr;       ///< the bitmap that is drawn on; null for a window
    unsigned char* pixels = nullptr; ///< device pixels of a bitmap, whose they are; else null
    int stride = 0;                  ///< bytes of a row of device pixels
    int byteOrder = 0;
    bool fullPaint = false; ///< the whole window is being painted
    unsigned long drawable = 0;
    _XGC* gc = nullptr;   ///< owned
    const TextFace* font; ///< of the texts that follow; see `TextScope`

    /// On a window or pixmap of the screen's depth, whose clip starts out empty.
    explicit CGraphic(unsigned long drawable);
    ~CGraphic() override;

    /// Sorted first; nothing outside the clip.
    void fillRect(int color, CRect rect);
    void fillRect(CRect rect); ///< in the colour of `setFillCol`
    /// One pixel wide, inside the rectangle.
    void frameRect(int color, CRect rect);
    void frameRect(CRect rect); ///< in the colour of `setLineCol`
    /// The same two with the four corner pixels left out.
    void fillRound(int color, CRect rect);
    void frameRound(int color, CRect rect);
    /// A line given as a rectangle one pixel wide or high. Unlike that rectangle it is equally
    /// thick in every place; it stays inside the clip.
    void fillLine(int color, CRect rect);
    /// Without its end point, but for a line of no length, which is a pixel.
    void drawLine(int x1, int y1, int x2, int y2);
    /// Fills a convex polygon of up to 16 points in the fill colour; of more it draws nothing.
    void drawPoly(const CPoint* points, int n);
    /// Text in UTF-8 at the place that `where` (`TextFlag`) tells, cut to the box; `unused` is
    /// free. The server's font shows each byte as a character of Latin-1. Of a text that is turned
    /// left is the bottom of the box, and top its left side.
    void drawText(int color, const CStr& text, CRect rect, int where, int unused = 0);
    void drawText(const CStr& text, CRect rect, int where, int unused = 0); ///< in the line colour
    int textWidth(const CStr& text) const;
    /// Where the base line of a text begins that is so wide, in a box, both in device pixels.
    CPoint textStart(int wide, const CRect& box, int where) const;
    TextPen* textPen(); ///< of the font; null without a display
    /// For shapes that are blended (gui/Shapes.h), cut to the clip; null where the server cannot.
    RenderTarget* blender();

    void setLineCol(int color) { lineCol = color; }
    void setFillCol(int color) { fillCol = color; }
    void setRaster(int mode); ///< 0 copies, 1 inverts with what is there, else a code of the server
    /// Sets the server's clip, in pixels of the surface; all 0 takes it away. Returns the former.
    CRect setClip(CRect rect);
    /// Narrows the logical clip, in pixels of the surface. Returns the former.
    CRect addClip(CRect rect);
    /// What of a rectangle, from the origin, lies in the logical clip.
    CRect intersectClip(CRect rect) const;
    void restoreClip(CRect former); ///< what `addClip` returned
    /// What has to be painted, from the origin: who has much to paint leaves out the rest.
    CRect asked() const;
    /// Whether any of a rectangle, from the origin, has to be painted: of `asked`, which lies
    /// around all areas that have changed, not all need be.
    bool wants(CRect rect) const;
    /// What has to be painted of the surface, in its pixels; empty for all that the clip tells.
    void setAreas(std::span<const CRect> changed);

    /// Of the bitmap behind the surface, 32 bits deep; 0 and nothing elsewhere. Coordinates have to
    /// lie inside. Only `getPixel` counts from the origin. Of a logical pixel that is made of
    /// several ones, all are set and the first one is read.
    int getPixel(int x, int y) const;
    void setPixel(int x, int y, int color);
    /// The same for device pixels, from the corner of the bitmap.
    int getDevicePixel(int x, int y) const;
    void setDevicePixel(int x, int y, int color);

    /// Copies a part of a bitmap to (x, y).
    void render(const CBitmap* bitmap, int x, int y, int srcX, int srcY, int w, int h);
    void drawTiled(const CBitmap* bitmap, CRect rect);
    /// Moves what an area of the surface shows, inside it, by a whole number of device pixels. On a
    /// window the server answers with events, once per call, that tell what it could not copy.
    void moveContent(CRect area, int dx, int dy);

private:
    friend class ServerCut;

    struct FacePen {
        const TextFace* face;
        std::unique_ptr<TextPen> pen;
    };

    bool ready(int color);
    CRect clip() const;
    void clipServer();
    void fillDevice(const CRect& area);
    void fillDeviceParts(int color, const CRect* parts, int count);
    void drawFrame(int color, CRect rect, int corner);
    void drawSlanted(CPoint from, CPoint to);

    std::vector<FacePen> pens; ///< made with the first text of each font
    std::unique_ptr<RenderTarget> blends;
    bool blendsAsked = false;
    int lineCol = 0, fillCol = 0;
    std::vector<CRect> areas; ///< device pixels; empty for one area, which the clip tells
};

/// Narrows a surface to a rectangle of itself and moves the origin there, until the end of the
/// scope.
class ClipScope {
public:
    ClipScope(CGraphic* g, CRect rect); ///< from the present origin
    ~ClipScope();
    ClipScope(const ClipScope&) = delete;
    ClipScope& operator=(const ClipScope&) = delete;

private:
    CGraphic* graphic;
    int originX, originY;
    CRect clip;
};

/// Until the end of the scope texts are drawn in another look.
class TextScope {
public:
    TextScope(CGraphic* g, const TextLook& look);
    ~TextScope() { graphic->font = former; }
    TextScope(const TextScope&) = delete;
    TextScope& operator=(const TextScope&) = delete;

private:
    CGraphic* graphic;
    const TextFace* former;
};

/// Until the end of the scope a surface counts in device pixels: for shapes that are to be as fine
/// as the screen. Its origin and clip are where they were.
class DeviceScope {
public:
    explicit DeviceScope(CGraphic* g);
    ~DeviceScope();
    DeviceScope(const DeviceScope&) = delete;
    DeviceScope& operator=(const DeviceScope&) = delete;

    CRect deviceRect(CRect rect) const; ///< of a logical rectangle, both from the origin
    int deviceLength(int length) const; ///< of a logical length

private:
    CGraphic* graphic;
    int percent; ///< of the scale outside
    CPoint origin;
    CRect clip;
};
