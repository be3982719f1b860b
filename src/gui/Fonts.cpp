#include "gui/Fonts.h"

#include "base/Numbers.h"
#include "gui/Scale.h"
#include "gui/ServerText.h"
#include "gui/SmoothText.h"
#include "gui/Utf8.h"
#include "gui/XConnection.h"

TextSettings textSettings;

namespace {

constexpr double smallShare = 0.8, largeShare = 1.5; // of the normal size

/// The size to ask for, 0 for the normal one where none is set.
int wantedSize(TextSize size) {
    if (size == TextSize::normal) return textSettings.size;
    const int normal = xConnection().font->size;
    return asRound(normal * (size == TextSize::small ? smallShare : largeShare));
}

} // namespace

void TextPen::drawRuns(int color, std::span<const TextRun> runs, const CRect& clip) {
    for (const TextRun& run : runs) draw(color, run.start.x, run.start.y, run.text.asChar(), clip);
}

int TextFace::textWidth(const CStr& text) const {
    return toLogicalSize(deviceWidth(text.asChar()));
}

int TextFace::deviceWidth(std::string_view text) const {
    constexpr int guessedWidth = 6;
    return toDevice(int(text.size()) * guessedWidth);
}

CStr TextFace::shortened(const CStr& text, int width) const {
    if (textWidth(text) <= width) return text;
    const std::string_view rest = "...";
    const std::string_view all = text.asChar();
    std::string start(fitting(all, asMax(0, toDevice(width) - deviceWidth(rest))));
    while (!start.empty() && start.back() == ' ') start.pop_back();
    return (start + std::string(rest)).c_str();
}

std::string_view TextFace::fitting(std::string_view text, int width) const {
    if (deviceWidth(text) <= width) return text;
    size_t end = 0;
    for (size_t at = 0; at < text.size(); end = at) {
        nextCharacter(text, at);
        if (deviceWidth(text.substr(0, at)) > width) break;
    }
    return text.substr(0, end);
}

int TextFace::centredBase(int top, int bottom) const {
    return top + deviceAscent / 2 + (bottom - top) / 2;
}

std::unique_ptr<TextPen> TextFace::makePen(unsigned long) const {
    return nullptr;
}

void TextFace::setHeights(int above, int below) {
    deviceAscent = above;
    deviceDescent = below;
    ascent = toLogicalSize(above);
    descent = toLogicalSize(below);
}

std::unique_ptr<TextFace> openFace(const TextLook& look) {
    std::unique_ptr<TextFace> face;
    if (liveDisplay() && textSettings.smooth)
        face = openSmoothFace(textSettings.family, wantedSize(look.size), look);
    if (liveDisplay() && !face) face = openServerFace(look);
    return face ? std::move(face) : std::make_unique<TextFace>();
}

const TextFace* textFace(const TextLook& look) {
    XConnection& x = xConnection();
    if (look.size == TextSize::normal && !look.bold && !look.turned) return x.font.get();
    auto& face = x.looks[int(look.size) * 4 + (look.bold ? 2 : 0) + (look.turned ? 1 : 0)];
    if (!face) face = openFace(look);
    return face.get();
}
