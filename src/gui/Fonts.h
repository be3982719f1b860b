#pragma once

#include "base/CStr.h"
#include "base/Geometry.h"

#include <memory>
#include <span>
#include <string_view>

/// How text is drawn: set before `CApp::open`.
struct TextSettings {
    bool smooth = true; ///< outlined and anti-aliased, where the system has the means
    CStr family;        ///< of the outlined font; empty is the system's sans
    int size = 0;       ///< of the outlined font in logical pixels; 0 is one that fits the controls
};
extern TextSettings textSettings;

enum class TextSize : int { normal, small, large };

/// One of the faces in which text can be drawn.
struct TextLook {
    TextSize size = TextSize::normal;
    bool bold = false;
    bool turned = false; ///< reads from the bottom to the top
};

struct TextRun {
    CPoint start; ///< of the base line, device pixels
    CStr text;
};

/// Draws the text of a face on one drawable, from the start of the base line. All in device pixels.
class TextPen {
public:
    virtual ~TextPen() = default;
    /// Cuts the text to `clip`; all 0 is no clip.
    virtual void draw(int color, int x, int y, std::string_view text, const CRect& clip) = 0;
    virtual void drawRuns(int color, std::span<const TextRun> runs, const CRect& clip); ///< at once
};

/// A face in one size. This one, without a display, only guesses sizes; `openFace` gives the real
/// ones. Interface thread.
class TextFace {
public:
    int ascent = 11, descent = 2; ///< above and below the base line, logical pixels
    int size = 0;                 ///< of outlined letters, logical pixels
    bool turned = false;          ///< widths go up, and what is above the base line lies left

    TextFace() = default;
    virtual ~TextFace() = default;
    TextFace(const TextFace&) = delete;
    TextFace& operator=(const TextFace&) = delete;

    int textWidth(const CStr& text) const; ///< logical pixels
    /// The text, or where a width has no room for it its start and "...".
    CStr shortened(const CStr& text, int width) const;

    /// The same in device pixels.
    int deviceAscent = 11, deviceDescent = 2;
    virtual int deviceWidth(std::string_view text) const;
    /// As much of the start of a text as has room in a width.
    std::string_view fitting(std::string_view text, int width) const;
    /// The base line of a text that stands in the middle of a box.
    virtual int centredBase(int top, int bottom) const;
    virtual std::unique_ptr<TextPen> makePen(unsigned long drawable) const;

protected:
    void setHeights(int above, int below); ///< device pixels
};

/// The face that the settings and the connection's display allow: an outlined one, else one of the
/// server, else one that draws nothing.
std::unique_ptr<TextFace> openFace(const TextLook& look = {});
/// The face of a look on the present connection, which keeps it.
const TextFace* textFace(const TextLook& look);
