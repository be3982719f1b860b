#include "gui/SmoothText.h"

#include "base/Numbers.h"
#include "gui/Colours.h"
#include "gui/Scale.h"
#include "gui/ServerRects.h"
#include "gui/Utf8.h"
#include "gui/XConnection.h"

#include <X11/Xft/Xft.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

constexpr int smallest = 6, largest = 48;     // of the size, logical pixels
constexpr int roomySize = 12, tightSize = 11; // tried for a size of 0
constexpr uint32_t firstPrintable = 32, latinEnd = 256;

/// The calls of the library, which stays loaded once it was found.
struct XftCalls {
    decltype(&XftFontOpen) fontOpen = nullptr;
    decltype(&XftFontClose) fontClose = nullptr;
    decltype(&XftCharIndex) charIndex = nullptr;
    decltype(&XftGlyphExtents) glyphExtents = nullptr;
    decltype(&XftDrawCreate) drawCreate = nullptr;
    decltype(&XftDrawDestroy) drawDestroy = nullptr;
    decltype(&XftDrawSetClip) setClip = nullptr;
    decltype(&XftDrawSetClipRectangles) setClipRectangles = nullptr;
    decltype(&XftDrawGlyphs) drawGlyphs = nullptr;
    bool complete = false;

    XftCalls() {
        void* library = dlopen("libXft.so.2", RTLD_NOW | RTLD_LOCAL);
        if (!library) return;
        complete = find(library, "XftFontOpen", fontOpen) &&
                   find(library, "XftFontClose", fontClose) &&
                   find(library, "XftCharIndex", charIndex) &&
                   find(library, "XftGlyphExtents", glyphExtents) &&
                   find(library, "XftDrawCreate", drawCreate) &&
                   find(library, "XftDrawDestroy", drawDestroy) &&
                   find(library, "XftDrawSetClip", setClip) &&
                   find(library, "XftDrawSetClipRectangles", setClipRectangles) &&
                   find(library, "XftDrawGlyphs", drawGlyphs);
    }

private:
    template <class Call>
    static bool find(void* library, const char* name, Call& call) {
        call = reinterpret_cast<Call>(dlsym(library, name));
        return call != nullptr;
    }
};

const XftCalls& xft() {
    static const XftCalls calls;
    return calls;
}

/// Without the extension the library would ask the server for what lies behind each text.
bool canDrawSmooth(Display* display) {
    constexpr int plainDepth = 16;
    int code, event, error;
    return xlibColorDepth >= plainDepth && xft().complete &&
           XQueryExtension(display, "RENDER", &code, &event, &error);
}

class SmoothFace : public TextFace {
public:
    explicit SmoothFace(XftFont* opened); ///< owned
    ~SmoothFace() override;
    int deviceWidth(std::string_view text) const override;
    int centredBase(int top, int bottom) const override;
    std::unique_ptr<TextPen> makePen(unsigned long drawable) const override;

    /// What a text is drawn with: no more than can lie on a surface.
    const std::vector<FT_UInt>& glyphsOf(std::string_view text) const;

    XftFont* const font;

private:
    struct Glyph {
        FT_UInt index = 0;
        int advance = -1; ///< below 0 while it has not been asked for
    };
    Glyph glyphOf(uint32_t c) const;
    static Glyph askGlyph(XftFont* font, uint32_t c);

    int capHeight;
    mutable Glyph latin[latinEnd]; ///< those that nearly all text is made of
    mutable std::vector<FT_UInt> glyphs;
};

class SmoothPen : public TextPen {
public:
    SmoothPen(const SmoothFace* smoothFace, unsigned long drawable);
    ~SmoothPen() override;
    void draw(int color, int x, int y, std::string_view text, const CRect& clip) override;

private:
    void setClip(const CRect& clip);

    const SmoothFace* face;
    XftDraw* target;
    CRect clipNow;
};

SmoothFace::SmoothFace(XftFont* opened) : font(opened) {
    setHeights(font->ascent, font->descent);
    const FT_UInt capital = xft().charIndex(liveDisplay(), font, 'H');
    XGlyphInfo ink{};
    xft().glyphExtents(liveDisplay(), font, &capital, 1, &ink);
    capHeight = ink.y;
}

SmoothFace::~SmoothFace() {
    // After the loss of the server the record stays in the library's own list.
    if (Display* display = liveDisplay()) xft().fontClose(display, font);
}

SmoothFace::Glyph SmoothFace::askGlyph(XftFont* font, uint32_t c) {
    Glyph glyph;
    XGlyphInfo ink{};
    glyph.index = xft().charIndex(liveDisplay(), font, std::max(c, firstPrintable));
    xft().glyphExtents(liveDisplay(), font, &glyph.index, 1, &ink);
    glyph.advance = ink.xOff;
    return glyph;
}

SmoothFace::Glyph SmoothFace::glyphOf(uint32_t c) const {
    if (!liveDisplay()) return {0, 0};
    if (c >= latinEnd) return askGlyph(font, c);
    Glyph& glyph = latin[c];
    if (glyph.advance < 0) glyph = askGlyph(font, c);
    return glyph;
}

int SmoothFace::deviceWidth(std::string_view text) const {
    int64_t width = 0;
    for (size_t at = 0; at < text.size();) width += glyphOf(nextCharacter(text, at)).advance;
    return saturate(width);
}

const std::vector<FT_UInt>& SmoothFace::glyphsOf(std::string_view text) const {
    glyphs.clear();
    int width = 0;
    for (size_t at = 0; at < text.size() && width < farthest;) {
        const Glyph glyph = glyphOf(nextCharacter(text, at));
        glyphs.push_back(glyph.index);
        width += glyph.advance;
    }
    return glyphs;
}

/// Capitals stand in the middle: what rises above and hangs below them is alike.
int SmoothFace::centredBase(int top, int bottom) const {
    return top + (bottom - top + capHeight) / 2;
}

std::unique_ptr<TextPen> SmoothFace::makePen(unsigned long drawable) const {
    return std::make_unique<SmoothPen>(this, drawable);
}

SmoothPen::SmoothPen(const SmoothFace* smoothFace, unsigned long drawable) : face(smoothFace) {
    const XConnection& x = xConnection();
    target = xft().drawCreate(x.display, drawable, DefaultVisual(x.display, x.screen), x.colormap);
}

SmoothPen::~SmoothPen() {
    static std::vector<XftDraw*> orphans; // the library cannot free them without the server
    if (liveDisplay())
        xft().drawDestroy(target);
    else
        orphans.push_back(target);
}

void SmoothPen::setClip(const CRect& clip) {
    if (clip == clipNow) return;
    clipNow = clip;
    const XRectangle box = serverRect(clip);
    if (clip == CRect())
        xft().setClip(target, nullptr);
    else
        xft().setClipRectangles(target, 0, 0, &box, 1);
}

void SmoothPen::draw(int color, int x, int y, std::string_view text, const CRect& clip) {
    constexpr int to16Bits = 257;
    const std::vector<FT_UInt>& glyphs = face->glyphsOf(text);
    int r = 0, g = 0, b = 0;
    asRGB(color, &r, &g, &b);
    XftColor ink{};
    ink.pixel = static_cast<unsigned>(color);
    ink.color.red = static_cast<unsigned short>(r * to16Bits);
    ink.color.green = static_cast<unsigned short>(g * to16Bits);
    ink.color.blue = static_cast<unsigned short>(b * to16Bits);
    ink.color.alpha = 0xffff;
    setClip(clip);
    xft().drawGlyphs(target, &ink, face->font, x, y, glyphs.data(), int(glyphs.size()));
}

XftFont* openFont(Display* display, const char* family, int size) {
    const double deviceSize = size * scalePercent / 100.0;
    return xft().fontOpen(display, xConnection().screen, XFT_FAMILY, XftTypeString, family,
                          XFT_PIXEL_SIZE, XftTypeDouble, deviceSize, nullptr);
}

/// Whether a usual text takes no more room than in the face of the server, for which the controls
/// were measured.
bool isRoomy(const TextFace& face) {
    constexpr std::string_view usual = "Insert bars, Quantize selected parts, Program 12";
    constexpr int serverWidth = 6;
    return toLogicalSize(face.deviceWidth(usual)) <= int(usual.size()) * serverWidth;
}

} // namespace

std::unique_ptr<TextFace> openSmoothFace(const CStr& family, int size) {
    Display* display = liveDisplay();
    if (!canDrawSmooth(display)) return nullptr;
    const char* name = family.empty() ? "sans-serif" : family.asChar();
    const auto open = [&](int pixels) {
        XftFont* font = openFont(display, name, pixels);
        return font ? std::make_unique<SmoothFace>(font) : nullptr;
    };
    if (size > 0) return open(asMinMax(size, smallest, largest));
    auto face = open(roomySize);
    if (!face || isRoomy(*face)) return face;
    face.reset();
    return open(tightSize);
}
