#pragma once

#include "base/CStr.h"
#include "base/Geometry.h"

#include <memory>
#include <string_view>

/// How text is drawn: set before `CApp::open`.
struct TextSettings {
    bool smooth = true; ///< outlined and anti-aliased, where the system has the means
    CStr family;        ///< of the outlined font; empty is the system's sans
    int size = 0;       ///< of the outlined font in logical pixels; 0 is one that fits the controls
};
extern TextSettings textSettings;

/// Draws the text of a face on one drawable, from the start of the base line. All in device pixels.
class TextPen {
public:
    virtual ~TextPen() = default;
    /// Cuts the text to `clip`; all 0 is no clip.
    virtual void draw(int color, int x, int y, std::string_view text, const CRect& clip) = 0;
};

/// The one face and size in which all text is drawn. This one, without a display, only guesses
/// sizes; `openFace` gives the real ones. Interface thread.
class TextFace {
public:
    int ascent = 11, descent = 2; ///< above and below the base line, logical pixels

    TextFace() = default;
    virtual ~TextFace() = default;
    TextFace(const TextFace&) = delete;
    TextFace& operator=(const TextFace&) = delete;

    int textWidth(const CStr& text) const; ///< logical pixels

    /// The same in device pixels.
    int deviceAscent = 11, deviceDescent = 2;
    virtual int deviceWidth(std::string_view text) const;
    /// The base line of a text that stands in the middle of a box.
    virtual int centredBase(int top, int bottom) const;
    virtual std::unique_ptr<TextPen> makePen(unsigned long drawable) const;

protected:
    void setHeights(int above, int below); ///< device pixels
};

/// The face that the settings and the connection's display allow: an outlined one, else one of the
/// server, else one that draws nothing.
std::unique_ptr<TextFace> openFace();
