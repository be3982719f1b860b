#include "gui/ServerText.h"

#include "gui/Scale.h"
#include "gui/ServerRects.h"
#include "gui/XConnection.h"

#include <X11/Xutil.h>

#include <vector>

namespace {

constexpr int characters = 256;

/// What a pen on the server needs whatever it draws.
class ServerPen : public TextPen {
public:
    ServerPen(unsigned long target, Font font);
    ~ServerPen() override;
    void draw(int color, int x, int y, std::string_view text, const CRect& clip) override;

protected:
    void prepare(int color, const CRect& clip);

    unsigned long drawable;
    GC gc;

private:
    CRect clipNow;
};

class ServerFace : public TextFace {
public:
    /// Owns `record`; `id` is 0 when every graphics context has the font from the start.
    ServerFace(XFontStruct* record, Font id);
    ~ServerFace() override;
    int deviceWidth(std::string_view text) const override;
    std::unique_ptr<TextPen> makePen(unsigned long drawable) const override;

protected:
    XFontStruct* font;
    Font fontId;
};

/// The same font with each pixel made as large as the scale and the look tell.
class EnlargedFace : public ServerFace {
public:
    EnlargedFace(XFontStruct* record, Font id, const TextLook& look);
    int deviceWidth(std::string_view text) const override;
    std::unique_ptr<TextPen> makePen(unsigned long drawable) const override;

    /// Adds the rectangles that a text is made of, from the start of its base line.
    void addRuns(std::vector<XRectangle>& made, int x, int y, std::string_view text) const;

private:
    void readRow(XImage* sheet, int y, int cell);
    int scaled(int edge) const { return toDevice(edge, percent); }

    int percent; ///< of the pixels of the font
    bool bold;
    std::vector<CRect> runs[characters]; ///< rows of ink from the start of the base line, unscaled
};

class EnlargedPen : public ServerPen {
public:
    EnlargedPen(const EnlargedFace* enlarged, unsigned long target)
        : ServerPen(target, None), face(enlarged) {}
    void draw(int color, int x, int y, std::string_view text, const CRect& clip) override;

private:
    const EnlargedFace* face;
    std::vector<XRectangle> boxes;
};

ServerPen::ServerPen(unsigned long target, Font font) : drawable(target) {
    XGCValues values{};
    values.font = font;
    gc = XCreateGC(liveDisplay(), drawable, font ? GCFont : 0, &values);
}

ServerPen::~ServerPen() {
    if (Display* display = liveDisplay())
        XFreeGC(display, gc);
    else
        XFree(gc); // the server has forgotten its part
}

void ServerPen::prepare(int color, const CRect& clip) {
    if (clip != clipNow) setServerClip(liveDisplay(), gc, clip);
    clipNow = clip;
    XSetForeground(liveDisplay(), gc, static_cast<unsigned>(color));
}

void ServerPen::draw(int color, int x, int y, std::string_view text, const CRect& clip) {
    prepare(color, clip);
    XDrawString(liveDisplay(), drawable, gc, x, y, text.data(), int(text.size()));
}

ServerFace::ServerFace(XFontStruct* record, Font id) : font(record), fontId(id) {
    setHeights(font->ascent, font->descent);
}

ServerFace::~ServerFace() {
    Display* display = liveDisplay();
    if (display && fontId) XUnloadFont(display, fontId);
    XFreeFontInfo(nullptr, font, 1);
}

int ServerFace::deviceWidth(std::string_view text) const {
    return XTextWidth(font, text.data(), int(text.size()));
}

std::unique_ptr<TextPen> ServerFace::makePen(unsigned long drawable) const {
    return std::make_unique<ServerPen>(drawable, fontId);
}

/// All characters are drawn once beside each other, each in a cell of its own, and read back.
EnlargedFace::EnlargedFace(XFontStruct* record, Font id, const TextLook& look)
    : ServerFace(record, id),
      percent(look.size == TextSize::large ? 2 * scalePercent : scalePercent), bold(look.bold) {
    turned = look.turned;
    Display* display = liveDisplay();
    const int cell = font->max_bounds.width, height = font->ascent + font->descent;
    const int sheetWidth = cell * characters;
    setHeights(scaled(font->ascent), scaled(font->descent));
    if (cell < 1 || height < 1 || sheetWidth > farthest) return;
    const Pixmap sheet =
        XCreatePixmap(display, xConnection().root, unsigned(sheetWidth), unsigned(height), 1);
    XGCValues values{};
    values.font = fontId;
    GC gc = XCreateGC(display, sheet, fontId ? GCFont : 0, &values);
    XFillRectangle(display, sheet, gc, 0, 0, unsigned(sheetWidth), unsigned(height));
    XSetForeground(display, gc, 1);
    for (int c = 0; c < characters; c++) {
        const char text = char(c);
        XDrawString(display, sheet, gc, c * cell, font->ascent, &text, 1);
    }
    if (XImage* image =
            XGetImage(display, sheet, 0, 0, unsigned(sheetWidth), unsigned(height), 1, XYPixmap)) {
        for (int y = 0; y < height; y++) readRow(image, y, cell);
        XDestroyImage(image);
    }
    XFreeGC(display, gc);
    XFreePixmap(display, sheet);
}

void EnlargedFace::readRow(XImage* sheet, int y, int cell) {
    const int line = y - font->ascent;
    for (int x = 0; x < cell * characters; x++) {
        if (!XGetPixel(sheet, x, y)) continue;
        std::vector<CRect>& glyph = runs[x / cell];
        const int at = x % cell;
        if (!glyph.empty() && glyph.back().right == at && glyph.back().top == line)
            glyph.back().right++;
        else
            glyph.push_back(asRect(at, line, at + 1, line + 1));
    }
}

int EnlargedFace::deviceWidth(std::string_view text) const {
    return scaled(ServerFace::deviceWidth(text));
}

std::unique_ptr<TextPen> EnlargedFace::makePen(unsigned long drawable) const {
    return std::make_unique<EnlargedPen>(this, drawable);
}

void EnlargedFace::addRuns(std::vector<XRectangle>& made, int x, int y,
                           std::string_view text) const {
    int at = 0;
    for (size_t i = 0; i < text.size() && scaled(at) < farthest; i++) {
        for (const CRect& run : runs[static_cast<unsigned char>(text[i])]) {
            CRect r = asRect(scaled(run.left + at), scaled(run.top),
                             scaled(run.right + at + (bold ? 1 : 0)), scaled(run.bottom));
            if (turned) r = asRect(r.top, -r.right, r.bottom, -r.left);
            made.push_back(serverRect(sizeRect(r, x, y, x, y)));
        }
        at += XTextWidth(font, &text[i], 1);
    }
}

void EnlargedPen::draw(int color, int x, int y, std::string_view text, const CRect& clip) {
    prepare(color, clip);
    boxes.clear();
    face->addRuns(boxes, x, y, text);
    XFillRectangles(liveDisplay(), drawable, gc, boxes.data(), int(boxes.size()));
}

} // namespace

std::unique_ptr<TextFace> openServerFace(const TextLook& look) {
    Display* display = liveDisplay();
    XFontStruct* font =
        XQueryFont(display, XGContextFromGC(DefaultGC(display, xConnection().screen)));
    Font loaded = None;
    for (const char* name : {"fixed", "*"}) {
        if (font) break;
        font = XLoadQueryFont(display, name);
        if (font) loaded = font->fid;
    }
    if (!font) return nullptr;
    const bool asItIs = look.size != TextSize::large && !look.bold && !look.turned;
    if (asItIs && scalePercent == lowestScale) return std::make_unique<ServerFace>(font, loaded);
    return std::make_unique<EnlargedFace>(font, loaded, look);
}
