#include "gui/SmoothText.h"

#include "base/LibraryCall.h"
#include "base/Numbers.h"
#include "gui/Colours.h"
#include "gui/FontChoice.h"
#include "gui/Scale.h"
#include "gui/ServerRects.h"
#include "gui/Utf8.h"
#include "gui/XConnection.h"

#include <X11/Xft/Xft.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

namespace {

constexpr int smallest = 6, largest = 48;     // of the size, logical pixels
constexpr int roomySize = 12, tightSize = 11; // tried for a size of 0
constexpr uint32_t firstPrintable = 32, latinEnd = 256;

/// The calls of the library, which stays loaded once it was found.
struct XftCalls {
    decltype(&XftFontOpenPattern) fontOpenPattern = nullptr;
    decltype(&XftFontClose) fontClose = nullptr;
    decltype(&XftCharExists) charExists = nullptr;
    decltype(&XftCharIndex) charIndex = nullptr;
    decltype(&XftGlyphExtents) glyphExtents = nullptr;
    decltype(&XftDrawCreate) drawCreate = nullptr;
    decltype(&XftDrawDestroy) drawDestroy = nullptr;
    decltype(&XftDrawSetClip) setClip = nullptr;
    decltype(&XftDrawSetClipRectangles) setClipRectangles = nullptr;
    decltype(&XftDrawGlyphFontSpec) drawGlyphs = nullptr;
    bool complete = false;

    XftCalls() {
        void* library = dlopen("libXft.so.2", RTLD_NOW | RTLD_LOCAL);
        complete = findCall(library, "XftFontOpenPattern", fontOpenPattern) &&
                   findCall(library, "XftFontClose", fontClose) &&
                   findCall(library, "XftCharExists", charExists) &&
                   findCall(library, "XftCharIndex", charIndex) &&
                   findCall(library, "XftGlyphExtents", glyphExtents) &&
                   findCall(library, "XftDrawCreate", drawCreate) &&
                   findCall(library, "XftDrawDestroy", drawDestroy) &&
                   findCall(library, "XftDrawSetClip", setClip) &&
                   findCall(library, "XftDrawSetClipRectangles", setClipRectangles) &&
                   findCall(library, "XftDrawGlyphFontSpec", drawGlyphs);
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
    return xlibColorDepth >= plainDepth && xft().complete && FontChoice::possible() &&
           XQueryExtension(display, "RENDER", &code, &event, &error);
}

using Glyphs = std::vector<XftGlyphFontSpec>;

class SmoothFace : public TextFace {
public:
    SmoothFace(const FontChoice::Wish& wish, int logicalSize);
    ~SmoothFace() override;
    bool opened() const { return font != nullptr; }
    /// The library tells none of a font that is turned.
    void takeHeights(const TextFace& upright) {
        setHeights(upright.deviceAscent, upright.deviceDescent);
    }
    int deviceWidth(std::string_view text) const override;
    int centredBase(int top, int bottom) const override;
    std::unique_ptr<TextPen> makePen(unsigned long drawable) const override;

    /// Adds what a text is drawn with from a place on: no more than can lie on a surface.
    void addGlyphs(Glyphs& glyphs, std::string_view text, CPoint start) const;

private:
    struct Glyph {
        XftFont* font = nullptr; ///< null while it has not been asked for
        FT_UInt index = 0;
        int advance = 0;
    };
    Glyph glyphOf(uint32_t c) const;
    Glyph askGlyph(uint32_t c) const;
    XftFont* fontFor(uint32_t c) const;
    int along(const XGlyphInfo& ink) const { return turned ? -ink.yOff : ink.xOff; }
    template <class Visit>
    void eachGlyph(std::string_view text, Visit visit) const;

    mutable FontChoice choice;
    XftFont* font; ///< owned; null when none could be opened
    int capHeight = 0;
    mutable Glyph latin[latinEnd]; ///< those that nearly all text is made of
    mutable std::unordered_map<uint32_t, Glyph> others;
    mutable std::map<int, XftFont*> helpers; ///< owned; have what the font lacks, by their number
};

class SmoothPen : public TextPen {
public:
    SmoothPen(const SmoothFace* smoothFace, unsigned long drawable);
    ~SmoothPen() override;
    void draw(int color, int x, int y, std::string_view text, const CRect& clip) override;
    void drawRuns(int color, std::span<const TextRun> runs, const CRect& clip) override;

private:
    void setClip(const CRect& clip);
    void drawGlyphs(int color, const CRect& clip);

    const SmoothFace* face;
    XftDraw* target;
    CRect clipNow;
    Glyphs glyphs;
};

SmoothFace::SmoothFace(const FontChoice::Wish& wish, int logicalSize) : choice(wish) {
    FcPattern* pattern = choice.best();
    font = pattern ? xft().fontOpenPattern(liveDisplay(), pattern) : nullptr;
    if (!font) return;
    size = logicalSize;
    turned = wish.turned;
    setHeights(font->ascent, font->descent);
    const FT_UInt capital = xft().charIndex(liveDisplay(), font, 'H');
    XGlyphInfo ink{};
    xft().glyphExtents(liveDisplay(), font, &capital, 1, &ink);
    capHeight = turned ? ink.x : ink.y;
}

SmoothFace::~SmoothFace() {
    // After the loss of the server the records stay in the library's own list.
    Display* display = liveDisplay();
    if (!display) return;
    if (font) xft().fontClose(display, font);
    for (const auto& [number, helper] : helpers)
        if (helper) xft().fontClose(display, helper);
}

/// The font itself, or the best that has the character where it has not.
XftFont* SmoothFace::fontFor(uint32_t c) const {
    if (xft().charExists(liveDisplay(), font, c)) return font;
    const int number = choice.numberFor(c);
    if (number < 0) return font;
    const auto known = helpers.find(number);
    if (known != helpers.end()) return known->second ? known->second : font;
    FcPattern* pattern = choice.numbered(number);
    XftFont* helper = pattern ? xft().fontOpenPattern(liveDisplay(), pattern) : nullptr;
    helpers[number] = helper;
    return helper ? helper : font;
}

SmoothFace::Glyph SmoothFace::askGlyph(uint32_t c) const {
    c = std::max(c, firstPrintable);
    Glyph glyph;
    XGlyphInfo ink{};
    glyph.font = fontFor(c);
    glyph.index = xft().charIndex(liveDisplay(), glyph.font, c);
    xft().glyphExtents(liveDisplay(), glyph.font, &glyph.index, 1, &ink);
    glyph.advance = along(ink);
    return glyph;
}

SmoothFace::Glyph SmoothFace::glyphOf(uint32_t c) const {
    constexpr size_t mostKept = 4096;
    if (!liveDisplay()) return {font, 0, 0};
    if (c >= latinEnd && others.size() >= mostKept) others.clear();
    Glyph& glyph = c < latinEnd ? latin[c] : others[c];
    if (!glyph.font) glyph = askGlyph(c);
    return glyph;
}

template <class Visit>
void SmoothFace::eachGlyph(std::string_view text, Visit visit) const {
    constexpr auto mayTurn = [](char c) { return static_cast<unsigned char>(c) >= 0xd6; };
    if (std::ranges::any_of(text, mayTurn)) { // a byte of Hebrew or of what comes after it
        for (const uint32_t c : shownCharacters(text))
            if (!visit(glyphOf(c))) return;
        return;
    }
    for (size_t at = 0; at < text.size();)
        if (!visit(glyphOf(nextCharacter(text, at)))) return;
}

int SmoothFace::deviceWidth(std::string_view text) const {
    int64_t width = 0;
    eachGlyph(text, [&](const Glyph& glyph) {
        width += glyph.advance;
        return true;
    });
    return saturate(width);
}

void SmoothFace::addGlyphs(Glyphs& glyphs, std::string_view text, CPoint start) const {
    int width = 0;
    const auto edge = [](int at) { return short(asMinMax(at, -farthest, farthest)); };
    eachGlyph(text, [&](const Glyph& glyph) {
        const int x = turned ? start.x : start.x + width, y = turned ? start.y - width : start.y;
        glyphs.push_back({glyph.font, glyph.index, edge(x), edge(y)});
        width += glyph.advance;
        return width < farthest;
    });
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
    glyphs.clear();
    face->addGlyphs(glyphs, text, asPoint(x, y));
    drawGlyphs(color, clip);
}

void SmoothPen::drawRuns(int color, std::span<const TextRun> runs, const CRect& clip) {
    glyphs.clear();
    for (const TextRun& run : runs) face->addGlyphs(glyphs, run.text.asChar(), run.start);
    drawGlyphs(color, clip);
}

void SmoothPen::drawGlyphs(int color, const CRect& clip) {
    constexpr int to16Bits = 257;
    int r = 0, g = 0, b = 0;
    asRGB(color, &r, &g, &b);
    XftColor ink{};
    ink.pixel = static_cast<unsigned>(color);
    ink.color.red = static_cast<unsigned short>(r * to16Bits);
    ink.color.green = static_cast<unsigned short>(g * to16Bits);
    ink.color.blue = static_cast<unsigned short>(b * to16Bits);
    ink.color.alpha = 0xffff;
    setClip(clip);
    if (!glyphs.empty()) xft().drawGlyphs(target, &ink, glyphs.data(), int(glyphs.size()));
}

/// Whether a usual text takes no more room than in the face of the server, for which the controls
/// were measured.
bool isRoomy(const TextFace& face) {
    constexpr std::string_view usual = "Insert bars, Quantize selected parts, Program 12";
    constexpr int serverWidth = 6;
    return toLogicalSize(face.deviceWidth(usual)) <= int(usual.size()) * serverWidth;
}

} // namespace

std::unique_ptr<TextFace> openSmoothFace(const CStr& family, int size, const TextLook& look) {
    if (!canDrawSmooth(liveDisplay())) return nullptr;
    FontChoice::Wish wish{family.empty() ? "sans-serif" : family.asChar(), 0, look.bold,
                          look.turned};
    const auto open = [&](int pixels) {
        wish.deviceSize = pixels * scalePercent / 100.0;
        auto face = std::make_unique<SmoothFace>(wish, pixels);
        if (!face->opened()) return std::unique_ptr<SmoothFace>();
        if (look.turned) face->takeHeights(*textFace({look.size, look.bold, false}));
        return face;
    };
    if (size > 0) return open(asMinMax(size, smallest, largest));
    auto face = open(roomySize);
    if (!face || isRoomy(*face)) return face;
    face.reset();
    return open(tightSize);
}
